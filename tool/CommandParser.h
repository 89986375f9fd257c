#pragma once

#include <tool/CommandTable.h>

#include <string>
#include <variant>

namespace orvo::tool {

inline constexpr int kWrongUsage = 2;
/// The status when the system refuses memory.
inline constexpr int kNoMemory = 3;

/// What is printed in place of a command: help, the version, or what is wrong.
struct Explanation {
  /// 0 for what was asked for; the text then goes to standard output, else to standard error.
  int exitStatus;
  std::string text;
};

/// Reads the arguments into the targets of the table's parameters. Returns the command that they
/// name, unless there is something to say in its place.
[[nodiscard]] std::variant<const Command*, Explanation> parse(const CommandTable& table, int argc,
                                                              const char* const* argv);

}  // namespace orvo::tool
