#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orvo::tool {

/// The paths of members, such as `items[3].title`, whose object has had one of that name before,
/// of which readers know nothing: the first counts. `json` is a valid document; `most` are found.
[[nodiscard]] std::vector<std::string> repeatedKeys(std::string_view json, std::size_t most);

}  // namespace orvo::tool
