#pragma once

#include <tests/support/Test.h>

namespace orvo::tool {

/// What a run of the tool left behind.
struct ToolRun {
  /// The exit status; that of a run which a signal has ended is negative.
  int status = 0;
  std::string output;
  std::string error;
};

/// Runs a line of bash, for which `orvo` (and `$orvo`) is the tool, without a locale and in UTC:
/// with its output into files, or on a terminal of that many columns.
[[nodiscard]] ToolRun runLine(const std::string& line, int columns = 0,
                              const std::string& input = "");

/// Runs the tool without a locale, without a terminal and without colours. Nothing here may hold a
/// single quote.
[[nodiscard]] ToolRun runTool(const std::vector<std::string>& arguments,
                              const std::string& input = "");

}  // namespace orvo::tool
