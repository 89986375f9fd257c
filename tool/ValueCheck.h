#pragma once

#include <tool/CommandTable.h>

#include <optional>
#include <stdexcept>
#include <string>

namespace orvo::tool {

/// What the command line, the environment or a profile says cannot be done. Thrown while a command
/// runs, it ends the tool with status 2.
struct WrongUsage : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Nothing, or what is wrong with the text: `"x" is not one of png, jpg`.
[[nodiscard]] std::string complaint(const Values& values, const std::string& text);

/// Puts a text that there is no complaint about where it goes.
void store(const Target& target, const std::string& text);

/// `; did you mean this?`, or nothing.
[[nodiscard]] std::string didYouMean(const std::optional<std::string>& nearest);

/// The number that the whole text is.
[[nodiscard]] std::optional<std::int64_t> wholeNumber(const std::string& text);

}  // namespace orvo::tool
