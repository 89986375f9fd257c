#pragma once

#include <cstddef>
#include <string>

/// For servers that speak HTTP/2 as no library would.

namespace orvo::test {

/// A frame on a client's stream (its first request has 1, its second 3), or on that of the
/// connection.
inline std::string frame(int type, int flags, int stream, const std::string& payload) {
  std::string bytes;
  for (const std::size_t part : {payload.size() >> 16, payload.size() >> 8, payload.size()}) {
    bytes += static_cast<char>(part);
  }
  bytes += static_cast<char>(type);
  bytes += static_cast<char>(flags);
  for (const int shift : {24, 16, 8, 0}) bytes += static_cast<char>(stream >> shift);
  return bytes + payload;
}

}  // namespace orvo::test
