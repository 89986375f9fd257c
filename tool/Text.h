#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orvo::tool {

/// Text as terminals show it, whatever the locale: UTF-8, measured in columns.

/// The text as it may reach a terminal: on one line, without control characters, without characters
/// that change the direction of writing, and without bytes that are not UTF-8.
[[nodiscard]] std::string printable(std::string_view text);

/// The same for messages that repeat what the user wrote: what terminals would obey is shown as an
/// escape like `\u001b`.
[[nodiscard]] std::string escaped(std::string_view text);

/// The address without the user's name and password, which `…@` stands for.
[[nodiscard]] std::string withoutUserInfo(std::string_view url);

/// A message that repeats what the user wrote, as it may be seen: escaped, and wherever a password
/// may be meant, without that.
[[nodiscard]] std::string harmless(std::string_view message);

/// The columns that a printable text takes: East Asian characters two, combining marks none.
[[nodiscard]] std::size_t displayWidth(std::string_view text);

/// The text if it fits, else as much of it as does with "…" after it. A mark is never separated
/// from its character.
[[nodiscard]] std::string cut(std::string_view text, std::size_t width);

/// The text, cut or filled up with spaces to exactly that width.
[[nodiscard]] std::string padded(std::string_view text, std::size_t width);

/// The lines of a paragraph, broken at spaces; a word that is longer than a line, between its
/// characters.
[[nodiscard]] std::vector<std::string> wrapped(std::string_view text, std::size_t width);

}  // namespace orvo::tool
