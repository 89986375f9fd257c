#pragma once

#include <string>

namespace orvo {

/// The linear TV stream to offer.
struct LinearStream {
  std::string id;
  std::string label;
  std::string description;
  std::string iconID;
};

}  // namespace orvo
