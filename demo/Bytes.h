#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace orvo::demo {

/// Appends the lowest bytes of the value, the most significant first, as the formats of images and
/// streams want them.
inline void appendBigEndian(std::string& out, std::uint64_t value, std::size_t bytes) {
  while (bytes-- > 0) out += static_cast<char>(value >> (8 * bytes) & 0xFF);
}

}  // namespace orvo::demo
