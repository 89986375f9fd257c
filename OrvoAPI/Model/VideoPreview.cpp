#include <OrvoAPI/Model/ImageTransformationInternal.h>
#include <OrvoAPI/Model/VideoPreview.h>

namespace orvo {

URL VideoPreview::url(const ResourceHost& host) const {
  return detail::resourceURL(host, productID + '/' + std::string(rawValue(key)), "video.mp4");
}

VideoPreviews VideoPreviewsParser::parse(const JSONStrings& json, std::string_view productID) {
  KeySet<VideoPreviewKey> keys;
  for (const std::string_view name : json) {
    if (const auto key = fromRawValue<VideoPreviewKey>(name)) keys.insert(*key);
  }
  return {productID, keys};
}

}  // namespace orvo
