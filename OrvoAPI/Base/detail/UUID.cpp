#include <OrvoAPI/Base/detail/UUID.h>

#include <OrvoAPI/Base/FatalInternal.h>
#include <sys/random.h>

#include <array>
#include <cerrno>

namespace orvo::detail {

std::string makeUUID() {
  std::array<unsigned char, 16> bytes{};
  while (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
    if (errno != EINTR) fatal("The system gives no random numbers");
  }
  bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);  // version 4
  bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);  // the variant of RFC 4122

  std::string text;
  text.reserve(36);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += "0123456789ABCDEF"[bytes[i] >> 4];
    text += "0123456789ABCDEF"[bytes[i] & 0x0F];
  }
  return text;
}

}  // namespace orvo::detail
