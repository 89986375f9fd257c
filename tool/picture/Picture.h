#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace orvo::picture {

/// What there is to draw on, and how.
struct Canvas {
  /// "kitty", "sixel", "blocks" (24-bit colours) or "blocks-256".
  std::string style;
  int columns = 80;
  int rows = 24;
  /// The pixels of a character.
  int cellWidth = 8;
  int cellHeight = 16;
};

/// Why there is no picture, for the user.
struct Unfit : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// An image of more pixels is refused before memory is taken for them.
inline constexpr int kMostPixels = 4096 * 4096;

/// The style that this process' environment speaks for, or "none". Nothing is asked of the
/// terminal.
[[nodiscard]] std::string detectedStyle();

/// What shows the image file, a PNG, JPEG, GIF or WebP, in the terminal, fitted into the canvas:
/// for "kitty" and "sixel" one control string, for blocks lines without an end. Throws `Unfit`.
[[nodiscard]] std::string drawn(std::string_view file, const Canvas& canvas);

}  // namespace orvo::picture
