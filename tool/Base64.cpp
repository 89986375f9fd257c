#include <tool/Base64.h>

namespace orvo::tool {

std::string inBase64(std::string_view bytes) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const auto part = bytes.substr(at, 3);
    unsigned group = 0;
    for (std::size_t i = 0; i < 3; ++i) {
      group = group << 8 | (i < part.size() ? static_cast<unsigned char>(part[i]) : 0U);
    }
    for (std::size_t i = 0; i < 4; ++i) {
      out += i <= part.size() ? kDigits[group >> (18 - 6 * i) & 63] : '=';
    }
  }
  return out;
}

}  // namespace orvo::tool
