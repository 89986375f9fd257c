#include <OrvoAPI/HTTP/BodyFieldsInternal.h>

#include <algorithm>
#include <array>
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

/// Calls `visit` with each element of the comma-separated lists under this name, empty ones
/// included, until it returns false.
template <class Visit>
void forEachElement(const HTTPHeaders& headers, std::string_view name, Visit&& visit) {
  for (auto list : headers.values(name)) {
    for (bool isLast = false; !isLast;) {
      const auto comma = list.find(',');
      isLast = comma == std::string_view::npos;
      if (!visit(withoutBlanks(list.substr(0, comma)))) return;
      if (!isLast) list.remove_prefix(comma + 1);
    }
  }
}

std::optional<URLError> faultOfLength(std::string_view text, std::optional<std::uint64_t>& known) {
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

bool isCoding(std::string_view name) {
  constexpr std::array<std::string_view, 4> kNone{"", "chunked", "identity", "none"};
  return std::none_of(kNone.begin(), kNone.end(), [name](std::string_view none) {
    return std::equal(name.begin(), name.end(), none.begin(), none.end(),
                      [](char a, char b) { return (a | 0x20) == b; });
  });
}

}  // namespace

std::optional<URLError> faultOfBodyFields(const HTTPHeaders& headers, unsigned& codings) {
  std::optional<std::uint64_t> known;
  std::optional<URLError> fault;
  forEachElement(headers, "Content-Length", [&](std::string_view length) {
    fault = faultOfLength(length, known);
    return !fault;
  });
  for (const auto* const name : {"Content-Encoding", "Transfer-Encoding"}) {
    forEachElement(headers, name, [&](std::string_view coding) {
      codings += isCoding(coding) ? 1 : 0;
      return true;
    });
  }
  if (fault || codings <= 1) return fault;
  return URLError{URLError::cannotDecodeRawData, "the body is coded more than once"};
}

}  // namespace orvo::detail
