#pragma once

#include <string_view>

namespace orvo::detail {

/// Terminates the process after one line on standard error: for programming errors, where
/// continuing would mean working with a value that cannot exist, and for the little else that
/// SECURITY.md lists.
[[noreturn]] void fatal(std::string_view message);

}  // namespace orvo::detail
