#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

/// What each target defines, and what calls it: the fuzzer, or the replay of a kept corpus. Returns
/// -1 for an input that is not worth keeping.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

namespace orvo::fuzz {

/// Stops at the input that broke one of the library's promises.
inline void require(bool holds, const char* promise) {
  if (holds) return;
  std::fprintf(stderr, "broken: %s\n", promise);
  std::abort();
}

inline std::string_view text(const std::uint8_t* bytes, std::size_t size) {
  return {reinterpret_cast<const char*>(bytes), size};
}

/// Takes what stands before the separator, or all that is left, off the front of `rest`.
inline std::string_view takePiece(std::string_view& rest, char separator = '\n') {
  const auto piece = rest.substr(0, rest.find(separator));
  rest.remove_prefix(piece.size() < rest.size() ? piece.size() + 1 : rest.size());
  return piece;
}

}  // namespace orvo::fuzz
