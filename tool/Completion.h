#pragma once

#include <tool/CommandTable.h>

#include <functional>
#include <string>
#include <vector>

namespace orvo::tool {

/// What a shell can offer for the last of the words, which is still being typed: a candidate a
/// line, with a tab and a description behind it where there is one; `:files` stands for the names
/// of files. The first word is the tool's name. Global options are put where they go, so that
/// `identifiers` knows of the service to ask.
[[nodiscard]] std::string completions(const CommandTable& table,
                                      const std::vector<std::string>& words,
                                      const std::function<std::vector<Note>(Listed)>& identifiers);

/// What makes the shell ask for them.
[[nodiscard]] std::string completionScript(const std::string& shell);
[[nodiscard]] Values completionShells();

}  // namespace orvo::tool
