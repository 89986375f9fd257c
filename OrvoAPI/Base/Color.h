#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvo {

/// An opaque 24-bit colour. A value; thread-safe. Black by default.
class Color {
 public:
  constexpr Color() = default;
  /// `0xRRGGBB`; higher bits are ignored.
  constexpr explicit Color(std::uint32_t hexValue) : rgb_(hexValue & 0xFFFFFFU) {}

  /// Reads hexadecimal digits in either case, ignoring "#" characters around them. Like a scanner,
  /// it skips white space and an optional "0x" and stops at the first character that is not a
  /// digit; a number beyond 32 bits counts as the greatest. `std::nullopt` if there is no digit.
  [[nodiscard]] static std::optional<Color> fromHexString(std::string_view hexString);

  /// The components, from 0 to 1.
  [[nodiscard]] constexpr double red() const { return red8() / 255.0; }
  [[nodiscard]] constexpr double green() const { return green8() / 255.0; }
  [[nodiscard]] constexpr double blue() const { return blue8() / 255.0; }
  [[nodiscard]] constexpr double alpha() const { return 1; }

  /// The components as stored, from 0 to 255.
  [[nodiscard]] constexpr std::uint8_t red8() const { return byte(16); }
  [[nodiscard]] constexpr std::uint8_t green8() const { return byte(8); }
  [[nodiscard]] constexpr std::uint8_t blue8() const { return byte(0); }

  /// "#%02x%02x%02x" of the components from 0 to 1, unscaled: 1.0 reads "01" and everything less
  /// "00". Kept for code that compares it; to display a colour, use the stored components.
  [[nodiscard]] std::string toHex() const;

  friend constexpr bool operator==(Color, Color) = default;

 private:
  [[nodiscard]] constexpr std::uint8_t byte(unsigned shift) const {
    return static_cast<std::uint8_t>((rgb_ >> shift) & 0xFFU);
  }

  std::uint32_t rgb_ = 0;
};

}  // namespace orvo
