#pragma once

#include <string>

namespace orvo::detail {

/// A new random UUID (version 4) in its canonical text form: 36 characters, upper case.
/// Thread-safe.
[[nodiscard]] std::string makeUUID();

}  // namespace orvo::detail
