#pragma once

#include <OrvoAPI/Context/FetchOptions.h>
#include <OrvoAPI/Model/PagingMeta.h>
#include <tool/Tool.h>
#include <CLI/CLI.hpp>

#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

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
    if (all) return {.page = PageRequest{.offset = 0, .limit = kWholeListLimit}};
    if (!limit && !offset) return {};
    return {.page =
                PageRequest{.offset = offset.value_or(0), .limit = limit.value_or(kDefaultLimit)}};
  }
};

/// Adds `--limit` and `--offset`.
inline std::pair<CLI::Option*, CLI::Option*> addPartOptions(CLI::App& command,
                                                            WrittenPaging& paging) {
  constexpr std::int64_t kMost = 1'000'000'000'000'000;
  return {command.add_option("--limit", paging.limit, "How many items at most")
              ->check(CLI::Range(std::int64_t{1}, kMost))
              ->type_name("N"),
          command.add_option("--offset", paging.offset, "How many items to leave out before")
              ->check(CLI::Range(std::int64_t{0}, kMost))
              ->type_name("N")};
}

/// Adds `--limit`, `--offset` and `--all`.
inline void addPagingOptions(CLI::App& command, WrittenPaging& paging) {
  const auto [limit, offset] = addPartOptions(command, paging);
  command.add_flag("--all", paging.all, "Fetch the whole list, part by part")
      ->excludes(limit)
      ->excludes(offset);
}

/// Whether the library can be asked for the part that follows: it stops the process when offset and
/// limit add up beyond their range, and a part without extent would follow itself.
[[nodiscard]] inline bool hasPosition(const PagingMeta& meta) {
  return meta.limit > 0 && meta.offset <= std::numeric_limits<std::int64_t>::max() - meta.limit;
}

/// The list with all the parts that follow its first, as one part; `next(part)` is the capability
/// for the following one, if there is one. A list whose offset does not grow has ended.
template <class List, class Next>
[[nodiscard]] Result<Shared<List>> withFollowingParts(Tool& tool, const Shared<List>& first,
                                                      const std::string& label, Next next) {
  Progress progress(label);
  List whole = *first;
  Shared<List> part = first;
  while (hasPosition(part->meta)) {
    const auto fetch = next(*part);
    if (!fetch) break;
    progress.set(whole.items.size(), static_cast<std::size_t>(part->meta.total));
    const auto result = tool.wait((*fetch)(), progress);
    if (const AnyError* error = result.error()) return Failure{*error};
    const Shared<List> following = *result.value();
    if (following->meta.offset <= part->meta.offset) break;
    whole.items.insert(whole.items.end(), following->items.begin(), following->items.end());
    part = following;
  }
  whole.meta.total = part->meta.total;
  whole.meta.limit = static_cast<std::int64_t>(whole.items.size());
  return std::make_shared<const List>(std::move(whole));
}

/// Fetches a list, whole if that is wanted, and answers with it. Returns the exit status.
template <class Fetch, class Next, class Draw>
int fetchListAndAnswer(Tool& tool, const std::string& label, bool whole, Fetch fetch, Next next,
                       Draw draw) {
  const auto context = tool.context();
  if (const AnyError* error = context.error()) return tool.fail(*error);
  auto result = tool.wait(fetch(**context.value()), label);
  if (whole && !result.failed()) {
    const auto follow = [&](const auto& part) { return next(**context.value(), part); };
    result = withFollowingParts(tool, *result.value(), label, follow);
  }
  if (const AnyError* error = result.error()) return tool.fail(*error);
  const auto& list = **result.value();
  return tool.answer(toJson(list), [&](Screen& screen) { draw(screen, list); });
}

}  // namespace orvo::tool
