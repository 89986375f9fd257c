#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orvo::demo {

/// What an image is to look like, in pixels.
struct ImageSize {
  int width;
  int height;
};

struct Transformation {
  ImageSize size;
  bool png = false;
};

/// Reads the instructions of an image's address, such as `c_fill,w_600,h_400,f_jpg,q_65`. A missing
/// side follows from the other one and the shape of the rendition, by its name; sides over 2048 are
/// cut down; unknown instructions are ignored.
[[nodiscard]] Transformation parseTransformation(std::string_view text,
                                                 std::string_view rendition = "");

/// A picture of a landscape that the name chooses, as a PNG or JPEG file.
[[nodiscard]] std::string imageFile(std::string_view name, const Transformation& transformation);

}  // namespace orvo::demo
