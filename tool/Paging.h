#pragma once

#include <OrvoAPI/Base/Shared.h>
#include <OrvoAPI/Context/FetchOptions.h>
#include <OrvoAPI/Context/ListWalk.h>
#include <tool/CommandTable.h>
#include <tool/ListOutput.h>
#include <tool/Tool.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvo::tool {

/// Which part of a list the command line asks for.
struct WrittenPaging {
  std::optional<std::int64_t> limit{};
  std::optional<std::int64_t> offset{};
  bool all = false;

  /// How many items to ask for at a time when all are wanted.
  static constexpr std::int64_t kWholeListLimit = 100;

  [[nodiscard]] ListFetchOptions read() const {
    constexpr std::int64_t kDefaultLimit = 20;
    if (all) return {.page = ListPartRequest{.offset = 0, .limit = kWholeListLimit}};
    if (!limit && !offset) return {};
    return {.page = ListPartRequest{.offset = offset.value_or(0),
                                    .limit = limit.value_or(kDefaultLimit)}};
  }
};

/// `--limit`, `--offset` and `--all`.
[[nodiscard]] inline std::vector<Parameter> pagingOptions(WrittenPaging& paging) {
  constexpr std::int64_t kMost = 1'000'000'000'000'000;
  return {{.name = "--limit",
           .description = "How many items at most",
           .values = number(1, kMost, "N"),
           .target = &paging.limit},
          {.name = "--offset",
           .description = "How many items to skip first",
           .values = number(0, kMost, "N"),
           .target = &paging.offset},
          {.name = "--all",
           .description = "Fetch the whole list, part by part",
           .target = &paging.all,
           .excludes = {"--limit", "--offset"}}};
}

/// The whole list as one part, and the progress meanwhile.
template <class List>
[[nodiscard]] Result<Shared<List>> wholeList(Tool& tool, const ListWalk<List>& walk,
                                             const std::string& label) {
  Progress progress(label);
  std::optional<List> whole;
  while (true) {
    const auto result = tool.wait(walk.next(), progress);
    if (const AnyError* error = result.error()) return Failure{*error};
    const Shared<List> part = *result.value();
    if (part == nullptr) break;
    if (!whole) {
      whole = *part;
    } else {
      whole->items.insert(whole->items.end(), part->items.begin(), part->items.end());
    }
    whole->meta.total = part->meta.total;
    progress.set(whole->items.size(), static_cast<std::size_t>(part->meta.total));
  }
  whole->meta.limit = static_cast<std::int64_t>(whole->items.size());
  return std::make_shared<const List>(std::move(*whole));
}

/// Prints the lines of each part as soon as it has come. Returns the exit status.
template <class List>
int printParts(Tool& tool, const ListOutput& output, const ListWalk<List>& walk,
               const std::string& label) {
  while (true) {
    const auto result = tool.wait(walk.next(), label);
    if (const AnyError* error = result.error()) return tool.fail(*error);
    const Shared<List> part = *result.value();
    if (part == nullptr) return 0;
    output.printLines(recordsOf(*part));
  }
}

/// Fetches the list whose first part `fetch(const Context&)` returns a future of, whole if that is
/// wanted, and prints it. Returns the exit status.
template <class Fetch, class Draw>
int fetchListAndAnswer(Tool& tool, const ListOutput& output, const std::string& label,
                       const WrittenPaging& paging, Fetch fetch, Draw draw) {
  const auto opened = tool.context();
  if (const AnyError* error = opened.error()) return tool.fail(*error);
  const auto& context = *opened.value();
  const ListWalk walk(context, [&] { return fetch(std::as_const(*context)); });
  if (paging.all && output.isOfLines()) return printParts(tool, output, walk, label);
  const auto result = paging.all ? wholeList(tool, walk, label) : tool.wait(walk.next(), label);
  if (const AnyError* error = result.error()) return tool.fail(*error);
  const auto& list = **result.value();
  if (!paging.limit && !paging.offset) output.tellCut(list.meta);
  return output.answer(list, [&](Screen& screen) { draw(screen, list); });
}

/// Fetches the list that `fetch(const Context&)` returns a future of, and prints it. Returns the
/// exit status.
template <class Fetch, class Draw>
int fetchRecordsAndAnswer(Tool& tool, const ListOutput& output, const std::string& label,
                          Fetch fetch, Draw draw) {
  const auto context = tool.context();
  if (const AnyError* error = context.error()) return tool.fail(*error);
  const auto result = tool.wait(fetch(**context.value()), label);
  if (const AnyError* error = result.error()) return tool.fail(*error);
  const auto& list = **result.value();
  return output.answer(list, [&](Screen& screen) { draw(screen, list); });
}

}  // namespace orvo::tool
