#pragma once

#include <string>
#include <string_view>

namespace orvo::tool {

/// The bytes in base64, with "=" at the end where it takes that.
[[nodiscard]] std::string inBase64(std::string_view bytes);

}  // namespace orvo::tool
