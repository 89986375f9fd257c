#pragma once

namespace orvo::detail {

/// Whatever the locale.
constexpr bool isHexDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

}  // namespace orvo::detail
