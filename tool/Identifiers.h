#pragma once

#include <tool/CommandTable.h>
#include <tool/Tool.h>

#include <vector>

namespace orvo::tool {

/// Identifiers that a walk from the system views comes across, each with its title, as far as it
/// gets in five seconds; none when there is no session. It says nothing.
[[nodiscard]] std::vector<Note> knownIdentifiers(Tool& tool, Listed listed);

}  // namespace orvo::tool
