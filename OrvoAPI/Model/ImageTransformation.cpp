#include <OrvoAPI/Base/FatalInternal.h>
#include <OrvoAPI/Model/ImageTransformationInternal.h>

#include <cstdint>

namespace orvo::detail {

void ImageTransformation::crop(std::optional<std::string_view> rawValue, bool jpg) {
  if (rawValue) {
    add("c_", *rawValue);
  } else if (jpg) {
    add("c_", "fill");
  }
}

void ImageTransformation::size(ImageSize points, double displayScale) {
  addPixels("w_", displayScale * points.width);
  addPixels("h_", displayScale * points.height);
}

void ImageTransformation::add(std::string_view prefix, std::string_view value) {
  if (!tokens_.empty()) tokens_ += ',';
  tokens_.append(prefix).append(value);
}

void ImageTransformation::addPixels(std::string_view prefix, double pixels) {
  constexpr double kLimit = 9223372036854775808.0;  // 2^63
  if (!(pixels >= -kLimit && pixels < kLimit)) fatal("an image size is no 64-bit number of pixels");
  const auto whole = static_cast<std::int64_t>(pixels);
  if (whole > 0) add(prefix, std::to_string(whole));
}

URL resourceURL(const ResourceHost& host, std::string_view path, std::string_view component) {
  const auto resource = URL::parsePath(path, host.baseURL);
  // A picture that cannot be addressed must not take a screen down with it: "/" loads nothing.
  return resource ? resource->appendingPathComponent(component) : *URL::parse("/");
}

}  // namespace orvo::detail
