#pragma once

#include <OrvoAPI/HTTP/URL.h>

namespace orvo {

/// What the builders of image, icon and preview URLs need to know; a `Context` supplies it.
struct ResourceHost {
  /// The resource host's address; it ends with "/".
  URL baseURL;
  /// Pixels per point of the display.
  double displayScale = 1;
};

/// The size of an image in display points. Zero or less leaves that side to the server.
struct ImageSize {
  double width = 0;
  double height = 0;
};

}  // namespace orvo
