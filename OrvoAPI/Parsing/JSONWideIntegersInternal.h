#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace orvo::detail {

/// The body with ".0" after each integer, outside strings, that does not fit into 64 bits, so that
/// it reads as a double; all else stays as it is, right or wrong. `padding` zero bytes follow the
/// end, which the size does not count.
struct WideIntegersAsDoubles {
  WideIntegersAsDoubles(std::string_view body, std::size_t padding);

  [[nodiscard]] std::string_view view() const { return {padded.data(), size}; }
  /// Whether there was such an integer.
  bool found = false;

 private:
  std::string padded;
  std::size_t size = 0;
};

}  // namespace orvo::detail
