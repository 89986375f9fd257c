#pragma once

#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Parsing/JSONValue.h>

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <type_traits>
#include <utility>
#include <vector>

/// Records are read in two steps: a reader's construction finds what the record requires, and only
/// when nothing is missing is the record made. So an element that is left out of a list costs no
/// error, and one that is kept is made where it stays.
namespace orvo::detail {

/// What `make` returns, made by the constructor that it is given to: neither copied nor moved.
template <class F>
struct Made {
  F make;
  // NOLINTNEXTLINE(google-explicit-constructor): the conversion is what it is for
  operator std::invoke_result_t<const F&>() const { return make(); }
};
template <class F>
Made(F) -> Made<F>;

/// Appends what `make` returns, made where it stays.
template <class Item, class F>
void appendMade(std::vector<Item>& items, F make) {
  items.emplace_back(Made{std::move(make)});
}

/// Makes room for that many records, within reason: a body of tiny bad elements must not claim
/// gigabytes for records that will never be.
template <class Item>
void reserve(std::vector<Item>& items, std::size_t count) {
  constexpr std::size_t kMost = 1024;
  items.reserve(std::min(count, kMost));
}

/// What `Reader` makes of the object.
template <class Reader, class... Arguments>
[[nodiscard]] auto parsed(const JSONObject& json, const Arguments&... arguments)
    -> Result<decltype(Reader(json).record(arguments...))> {
  const Reader reader(json);
  if (reader.failed()) return reader.failure();
  return reader.record(arguments...);
}

/// What `Reader` makes of the elements; those that lack something are left out, and `leftOut` is
/// called with their reader.
template <class Reader, class LeftOut, class... Arguments>
requires std::invocable<LeftOut, const Reader&>
[[nodiscard]] auto parsedItems(const JSONObjects& elements, LeftOut&& leftOut,
                               const Arguments&... arguments) {
  using Item = decltype(Reader(*elements.begin()).record(arguments...));
  std::vector<Item> items;
  reserve(items, elements.size());
  for (const JSONObject& element : elements) {
    const Reader reader(element);
    if (reader.failed()) {
      reader.drop(element);
      leftOut(reader);
      continue;
    }
    appendMade(items, [&] { return reader.record(arguments...); });
  }
  return items;
}
template <class Reader, class... Arguments>
[[nodiscard]] auto parsedItems(const JSONObjects& elements, const Arguments&... arguments) {
  return parsedItems<Reader>(
      elements, [](const Reader&) {}, arguments...);
}

}  // namespace orvo::detail
