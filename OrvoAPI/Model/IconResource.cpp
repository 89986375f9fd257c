#include <OrvoAPI/Model/IconResource.h>
#include <OrvoAPI/Model/ImageTransformationInternal.h>

namespace orvo {

URL IconResource::iconURL(const ResourceHost& host, const IconURLOptions& options) const {
  detail::ImageTransformation transformation;
  transformation.size(options.size, host.displayScale);
  transformation.format(rawValue(options.format));  // no quality, not even for a jpg
  return detail::resourceURL(host, "icon/" + productID, "im:i:" + transformation.tokens());
}

}  // namespace orvo
