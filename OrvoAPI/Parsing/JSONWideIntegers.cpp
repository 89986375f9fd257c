#include <OrvoAPI/Parsing/JSONWideIntegersInternal.h>

#include <charconv>
#include <cstdint>
#include <system_error>

namespace orvo::detail {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool belongsToNumber(char c) {
  return isDigit(c) || c == '-' || c == '+' || c == '.' || c == 'e' || c == 'E';
}

/// The index after the string that begins at `begin`.
std::size_t afterString(std::string_view body, std::size_t begin) {
  std::size_t i = begin + 1;
  while (i < body.size() && body[i] != '"') i += body[i] == '\\' ? 2 : 1;
  return i + 1;
}

std::size_t afterNumber(std::string_view body, std::size_t begin) {
  std::size_t i = begin;
  while (i < body.size() && belongsToNumber(body[i])) ++i;
  return i;
}

template <class Integer>
bool isBeyond(std::string_view number) {
  Integer value{};
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
  return end == number.data() + number.size() && error == std::errc::result_out_of_range;
}

bool isWideInteger(std::string_view number) {
  const bool negative = number.front() == '-';
  // A leading zero is an error, which must stay one.
  if (const auto digits = number.substr(negative); digits.empty() || digits.front() == '0') {
    return false;
  }
  return negative ? isBeyond<std::int64_t>(number) : isBeyond<std::uint64_t>(number);
}

}  // namespace

WideIntegersAsDoubles::WideIntegersAsDoubles(std::string_view body, std::size_t padding) {
  padded.reserve(body.size() + body.size() / 8 + padding);
  std::size_t kept = 0;
  for (std::size_t i = 0; i < body.size();) {
    if (body[i] == '"') {
      i = afterString(body, i);
    } else if (belongsToNumber(body[i])) {
      const std::size_t begin = i;
      i = afterNumber(body, begin);
      if (!isWideInteger(body.substr(begin, i - begin))) continue;
      padded.append(body, kept, i - kept).append(".0");
      kept = i;
      found = true;
    } else {
      ++i;
    }
  }
  if (kept < body.size()) padded.append(body, kept);
  size = padded.size();
  padded.append(padding, '\0');
}

}  // namespace orvo::detail
