#pragma once

#include <functional>
#include <string_view>

namespace orvo {

/// Where the library's few plain console lines go. Called from any thread, also concurrently; each
/// call gets one whole line with its newline.
using ConsoleSink = std::function<void(std::string_view line)>;

/// Replaces the sink for the whole process; an empty one restores standard output, which gets each
/// line in one write. Thread-safe; a line on its way may still reach the earlier sink.
void setConsoleSink(ConsoleSink sink);

/// Drops the lines, before they are built, until a sink is set: a guide of nothing but bad
/// programmes has a line for each. Thread-safe.
void silenceConsole();
[[nodiscard]] bool isConsoleSilent();

/// Hands `line` and a newline to the sink.
void printToConsole(std::string_view line);

}  // namespace orvo
