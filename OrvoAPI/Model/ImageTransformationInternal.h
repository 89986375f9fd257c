#pragma once

#include <OrvoAPI/Base/RawValue.h>
#include <OrvoAPI/HTTP/URL.h>
#include <OrvoAPI/Model/ResourceHost.h>

#include <optional>
#include <string>
#include <string_view>

namespace orvo::detail {

/// What the image service is asked to do with an image, as the tokens of one path segment.
class ImageTransformation {
 public:
  /// Cuts off the image's empty border.
  void trim() { add("e_", "trim"); }
  /// A crop's raw value, or nothing: then a jpg fills its frame and a png stays whole.
  void crop(std::optional<std::string_view> rawValue, bool jpg);
  /// Terminates the process when a side in pixels is not a 64-bit integer.
  void size(ImageSize points, double displayScale);
  void format(std::string_view rawValue) { add("f_", rawValue); }
  /// A jpg's quality: a fixed 65 of 100, the service's agreed compromise between quality and size.
  void quality() { add("q_", "65"); }

  /// The tokens, joined by commas.
  [[nodiscard]] const std::string& tokens() const { return tokens_; }

 private:
  void add(std::string_view prefix, std::string_view value);
  void addPixels(std::string_view prefix, double pixels);

  std::string tokens_;
};

/// The tokens for an image: trim (for titles), crop, size, format and a jpg's quality, in the order
/// in which the service wants them. `Crop` and `Format` are enumerations with raw values.
template <RawValueEnum Crop, RawValueEnum Format>
[[nodiscard]] ImageTransformation imageTransformation(bool trim, std::optional<Crop> crop,
                                                      ImageSize size, double displayScale,
                                                      Format format) {
  const std::string_view formatText = rawValue(format);
  const bool jpg = formatText == "jpg";
  ImageTransformation transformation;
  if (trim) transformation.trim();
  transformation.crop(crop ? std::optional(rawValue(*crop)) : std::nullopt, jpg);
  transformation.size(size, displayScale);
  transformation.format(formatText);
  if (jpg) transformation.quality();
  return transformation;
}

/// The resource `path` on the host with a further component; "/" when the path makes no valid URL.
[[nodiscard]] URL resourceURL(const ResourceHost& host, std::string_view path,
                              std::string_view component);

}  // namespace orvo::detail
