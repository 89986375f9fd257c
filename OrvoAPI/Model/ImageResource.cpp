#include <OrvoAPI/Model/ImageResource.h>
#include <OrvoAPI/Model/ImageTransformationInternal.h>

namespace orvo {
namespace {

URL imageURL(const ImageResource& image, const detail::ImageTransformation& transformation,
             const ResourceHost& host) {
  return detail::resourceURL(host, image.productID + '/' + std::string(rawValue(image.key)),
                             "im:i:" + transformation.tokens());
}

}  // namespace

URL ImageResource::url(ImageSize size, const ImageURLOptions& options,
                       const ResourceHost& host) const {
  return imageURL(
      *this,
      detail::imageTransformation(false, options.crop, size, host.displayScale, options.format),
      host);
}

URL ImageResource::titleUrl(ImageSize size, const TitleURLOptions& options,
                            const ResourceHost& host) const {
  return imageURL(
      *this,
      detail::imageTransformation(true, options.crop, size, host.displayScale, options.format),
      host);
}

ImageResources ImageResourceParser::parse(const JSONStrings& json, std::string_view id) {
  KeySet<ImageResourceKey> keys;
  for (const std::string_view name : json) {
    if (const auto key = fromRawValue<ImageResourceKey>(name)) keys.insert(*key);
  }
  return {id, keys};
}

}  // namespace orvo
