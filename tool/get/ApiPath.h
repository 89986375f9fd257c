#pragma once

#include <OrvoAPI/HTTP/URL.h>

#include <string>

namespace orvo::tool {

/// The address of a path beneath the API's base, with its query. Throws `WrongUsage` for what is no
/// relative path, has a fragment, or could lead anywhere else: also where a server takes an
/// encoded text for what it stands for, as often as it may, or "\" for "/".
[[nodiscard]] URL apiAddress(const std::string& path, const URL& base);

}  // namespace orvo::tool
