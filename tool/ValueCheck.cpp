#include <tool/Nearest.h>
#include <tool/ValueCheck.h>
#include <tool/Wording.h>

#include <algorithm>
#include <charconv>

namespace orvo::tool {

namespace {

std::string rangeText(const Range& range) {
  return "a whole number from " + countText(range.least) + " to " + countText(range.most);
}

}  // namespace

std::optional<std::int64_t> wholeNumber(const std::string& text) {
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::string didYouMean(const std::optional<std::string>& nearest) {
  return nearest ? "; did you mean " + *nearest + "?" : "";
}

std::string complaint(const Values& values, const std::string& text) {
  const auto isNot = [&](const std::string& wanted) { return "\"" + text + "\" is not " + wanted; };
  if (!values.choices.empty()) {
    if (std::ranges::find(values.choices, text) != values.choices.end()) return "";
    return isNot("one of " + joined(values.choices)) + didYouMean(nearest(text, values.choices));
  }
  if (const auto& range = values.range) {
    const auto value = wholeNumber(text);
    const bool isIn = value && range->least <= *value && *value <= range->most;
    return isIn ? "" : isNot(rangeText(*range));
  }
  return !values.accepts || values.accepts(text) ? "" : isNot(values.wanted);
}

}  // namespace orvo::tool
