#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvo::tool {

/// The candidate that somebody may have meant: the one with the fewest letters wrong, if they are
/// few, or else the only one that begins so.
[[nodiscard]] std::optional<std::string> nearest(std::string_view written,
                                                 const std::vector<std::string>& candidates);

}  // namespace orvo::tool
