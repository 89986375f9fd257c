#pragma once

#include <tool/CommandTable.h>

#include <string>
#include <vector>

namespace orvo::tool {

/// What a shell can offer for the last of the words, which is still being typed: a candidate a
/// line, with a tab and a description behind it where there is one. The first word is the tool's
/// name.
[[nodiscard]] std::string completions(const CommandTable& table,
                                      const std::vector<std::string>& words);

/// What makes the shell ask for them.
[[nodiscard]] std::string completionScript(const std::string& shell);
[[nodiscard]] Values completionShells();

}  // namespace orvo::tool
