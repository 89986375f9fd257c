#pragma once

#include <tool/ModelJson.h>

namespace orvo::tool {

/// With `--json` standard error is a JSON document a line. What it is about is its first key:
/// "report", "trace", or "error" for the last one.
void printJsonLine(const Json& document);

/// Has the library's console lines be such documents from now on, in the whole process.
void printConsoleAsJsonLines();

}  // namespace orvo::tool
