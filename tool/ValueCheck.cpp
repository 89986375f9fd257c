#include <tool/Nearest.h>
#include <tool/ValueCheck.h>
#include <tool/Wording.h>

#include <algorithm>
#include <charconv>

namespace orvo::tool {

namespace {

template <class... Cases>
struct Overloaded : Cases... {
  using Cases::operator()...;
};
template <class... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

std::string rangeText(const Range& range) {
  if (range.isOpen()) return "a whole number of " + countText(range.least) + " or more";
  return "a whole number from " + countText(range.least) + " to " + countText(range.most);
}

}  // namespace

std::optional<std::int64_t> wholeNumber(const std::string& text) {
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

void store(const Target& target, const std::string& text) {
  std::visit(Overloaded{[](bool* flag) { *flag = true; },
                        [&](std::int64_t* value) { *value = wholeNumber(text).value(); },
                        [&](std::optional<std::int64_t>* value) { *value = wholeNumber(text); },
                        [&](std::string* value) { *value = text; },
                        [&](std::optional<std::string>* value) { *value = text; }},
             target);
}

std::string didYouMean(const std::optional<std::string>& nearest) {
  return nearest ? "; did you mean " + *nearest + "?" : "";
}

std::string complaint(const Values& values, const std::string& text) {
  const auto isNot = [&](const std::string& wanted) { return "\"" + text + "\" is not " + wanted; };
  if (values.ofSeveral) {
    Values one = values;
    one.ofSeveral = false;
    std::string wrong;
    for (std::size_t begin = 0; begin <= text.size() && wrong.empty();) {
      const std::size_t end = std::min(text.find(',', begin), text.size());
      wrong = complaint(one, text.substr(begin, end - begin));
      begin = end + 1;
    }
    return wrong;
  }
  if (!values.choices.empty()) {
    if (std::ranges::find(values.choices, text) != values.choices.end()) return "";
    const auto meant = nearest(text, values.choices);
    constexpr std::size_t kFew = 10;
    // Whoever wrote "vidoe" need not read thirty words.
    if (meant && values.choices.size() > kFew) return isNot("known") + didYouMean(meant);
    return isNot("one of " + joined(values.choices)) + didYouMean(meant);
  }
  if (const auto& range = values.range) {
    const auto value = wholeNumber(text);
    const bool isIn = value && range->least <= *value && *value <= range->most;
    return isIn ? "" : isNot(rangeText(*range));
  }
  return !values.accepts || values.accepts(text) ? "" : isNot(values.wanted);
}

}  // namespace orvo::tool
