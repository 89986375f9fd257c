#pragma once

#include <tool/CommandTable.h>

#include <string>

namespace orvo::tool {

/// What `orvo help` says, or, about a command, `orvo help COMMAND`.
[[nodiscard]] std::string helpText(const CommandTable& table, const Command* command);

/// `Usage: orvo video [OPTIONS] ID`
[[nodiscard]] std::string usageLine(const Command* command);

/// A parameter as it stands on a command line: `ID`, `--limit N`.
[[nodiscard]] std::string written(const Parameter& parameter);

/// What it is, and what else there is to say: `How many items at most (1 or more; not with --all)`.
[[nodiscard]] std::string described(const Parameter& parameter);

/// A sentence as it goes on behind a colon.
[[nodiscard]] std::string beginningInLowerCase(std::string sentence);

/// `orvo 1.2.3`
[[nodiscard]] std::string versionText();

}  // namespace orvo::tool
