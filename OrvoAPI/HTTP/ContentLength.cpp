#include <OrvoAPI/HTTP/ContentLengthInternal.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <string_view>
#include <system_error>

namespace orvo::detail {
namespace {

std::string_view withoutBlanks(std::string_view text) {
  constexpr std::string_view kBlanks = " \t";
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

std::optional<URLError> faultOf(std::string_view text, std::optional<std::uint64_t>& known) {
  std::uint64_t length = 0;
  const auto* const end = text.data() + text.size();
  const auto [last, error] = std::from_chars(text.data(), end, length);
  if (last != end || error == std::errc::invalid_argument) {
    return URLError{URLError::badServerResponse, "the length of the body is no number"};
  }
  if (error != std::errc() || length > std::numeric_limits<std::int64_t>::max()) {
    return URLError{URLError::dataLengthExceedsMaximum, "the body is too long"};
  }
  if (known.value_or(length) != length) {
    return URLError{URLError::badServerResponse, "the body has two lengths"};
  }
  known = length;
  return std::nullopt;
}

}  // namespace

std::optional<URLError> faultOfContentLength(const HTTPHeaders& headers) {
  std::optional<std::uint64_t> known;
  for (auto value : headers.values("Content-Length")) {
    for (auto comma = value.find(','); comma != std::string_view::npos; comma = value.find(',')) {
      if (auto fault = faultOf(withoutBlanks(value.substr(0, comma)), known)) return fault;
      value.remove_prefix(comma + 1);
    }
    if (auto fault = faultOf(withoutBlanks(value), known)) return fault;
  }
  return std::nullopt;
}

}  // namespace orvo::detail
