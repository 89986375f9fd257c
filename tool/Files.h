#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace orvo::tool {

/// Files that the user names. Each function throws `WrongUsage`, which names the file, when it
/// cannot be read or written, or is larger than `most` bytes.

/// All that comes from the descriptor until its end.
[[nodiscard]] std::string readDescriptor(int descriptor, const std::string& name, std::size_t most);

/// What the file holds, or what comes out of the pipe.
[[nodiscard]] std::string readFile(const std::string& path, std::size_t most);

/// What a regular file holds; nothing when there is none. Anything else is refused, so that there
/// is nothing to wait for.
[[nodiscard]] std::optional<std::string> readRegularFile(const std::string& path, std::size_t most);
/// The same, but there has to be one.
[[nodiscard]] std::string requireRegularFile(const std::string& path, std::size_t most);

/// Replaces a file, which only the user may read then, by what `change` makes of its content (or of
/// nothing when there is none). Whoever reads it meanwhile sees the file before or the file after;
/// whoever changes it meanwhile comes before or after. The file that a symbolic link leads to is
/// replaced, not the link.
void rewriteFile(const std::string& path, std::size_t most,
                 const std::function<std::string(const std::optional<std::string>&)>& change);

/// Puts a file there in one step, in place of a regular file or of none; only the user may read it.
/// A symbolic link is refused: who put it there chose what it would be written over.
void replaceFile(const std::string& path, const std::string& text);
/// Refuses at once what `replaceFile` would refuse in the end.
void requireReplaceable(const std::string& path);

}  // namespace orvo::tool
