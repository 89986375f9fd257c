#pragma once

#include <tool/CommandTable.h>

#include <string>

namespace orvo::tool {

/// The manual page of the tool, or of a command, in the language of `man`: what `orvo help` says,
/// from the same tables.
[[nodiscard]] std::string manualPage(const CommandTable& table, const Command* command);

}  // namespace orvo::tool
