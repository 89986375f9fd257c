#pragma once

#include <tool/CommandTable.h>

#include <string>

namespace orvo::tool {

/// What `orvo help` says, or, about a command, `orvo help COMMAND`.
[[nodiscard]] std::string helpText(const CommandTable& table, const Command* command);

/// `Usage: orvo video [OPTIONS] ID`
[[nodiscard]] std::string usageLine(const Command* command);

/// `orvo 1.2.3`
[[nodiscard]] std::string versionText();

}  // namespace orvo::tool
