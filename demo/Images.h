#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orvo::demo {

/// What an image is to look like, in pixels.
struct ImageSize {
  int width = 640;
  int height = 360;
};

struct Transformation {
  ImageSize size;
  bool png = false;
};

/// Reads the instructions of an image's address, such as `c_fill,w_600,h_400,f_jpg,q_65`. A missing
/// side takes its default, sides over 2048 are cut down; unknown instructions are ignored.
[[nodiscard]] Transformation parseTransformation(std::string_view text);

/// A picture of two fields of colour that the name chooses, as a PNG or JPEG file.
[[nodiscard]] std::string imageFile(std::string_view name, const Transformation& transformation);

}  // namespace orvo::demo
