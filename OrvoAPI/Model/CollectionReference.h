#pragma once

#include <string>

namespace orvo {

/// A collection that a video belongs to or that a page shows.
struct CollectionReference {
  std::string id;
  std::string label;

  friend bool operator==(const CollectionReference&, const CollectionReference&) = default;
};

}  // namespace orvo
