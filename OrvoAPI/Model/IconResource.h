#pragma once

#include <OrvoAPI/Model/ImageResource.h>

#include <string>

namespace orvo {

/// 30 points is the side of an icon in the apps' navigation.
struct IconURLOptions {
  ImageSize size = {.width = 30, .height = 30};
  ImageResourceFormat format = ImageResourceFormat::PNG;
};

/// The icon of a product.
struct IconResource {
  std::string productID;

  /// The icon's address; the rules of `ImageResource::url` hold. Icons are never cropped.
  [[nodiscard]] URL iconURL(const ResourceHost& host, const IconURLOptions& options = {}) const;
};

}  // namespace orvo
