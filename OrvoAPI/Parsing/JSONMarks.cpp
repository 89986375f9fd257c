#include <OrvoAPI/Parsing/JSONMarksInternal.h>

#include <algorithm>
#include <cstring>

namespace orvo {

/// Sixteen bytes at a time: it is only asked about documents of megabytes.
std::size_t detail::countMarks(std::string_view document) {
  using Bytes [[gnu::vector_size(16)]] = unsigned char;
  constexpr std::ptrdiff_t kWidth = sizeof(Bytes);
  constexpr int kMostInByte = 255;
  std::size_t count = 0;
  const char* at = document.data();
  const char* const end = at + document.size();
  while (end - at >= kWidth) {
    Bytes counts{};
    for (int i = 0; i < kMostInByte && end - at >= kWidth; ++i, at += kWidth) {
      Bytes bytes;
      std::memcpy(&bytes, at, kWidth);
      // Where that is true all bits are set, which is -1; the two brackets differ in one bit.
      counts -= Bytes((bytes == ',') | (bytes == ':') | ((bytes | 0x20) == '{'));
    }
    for (int i = 0; i < kWidth; ++i) count += counts[i];
  }
  const auto isMark = [](char c) { return c == ',' || c == ':' || c == '[' || c == '{'; };
  return count + static_cast<std::size_t>(std::count_if(at, end, isMark));
}

}  // namespace orvo
