#include <OrvoAPI/Base/detail/UUID.h>

#include <sys/random.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <bit>
#include <cerrno>
#include <cstddef>
#include <cstdint>

namespace orvo::detail {

namespace {

/// For a system that gives no random numbers: unlike all others of this process, and most likely of
/// others.
std::array<unsigned char, 16> uniqueHere() {
  static std::atomic<std::size_t> count{0};
  timespec time{};
  clock_gettime(CLOCK_REALTIME, &time);
  const auto now = static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000 +
                   static_cast<std::uint64_t>(time.tv_nsec);
  const std::array<std::uint64_t, 2> halves{now,
                                            ++count ^ (static_cast<std::uint64_t>(getpid()) << 32)};
  return std::bit_cast<std::array<unsigned char, 16>>(halves);
}

}  // namespace

std::string makeUUID() {
  std::array<unsigned char, 16> bytes{};
  while (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
    if (errno == EINTR) continue;
    bytes = uniqueHere();
    break;
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
