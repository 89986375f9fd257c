#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvo::tool {

/// A program that plays streams. Arguments can be seen by everybody on the device, so that it gets
/// a stream's address in a list that it reads from its descriptor 3.
struct Player {
  std::string_view name;
  /// The package in which Debian has it.
  std::string_view package;
  std::vector<std::string> arguments;
  /// The list with that one address.
  std::string (*list)(std::string_view title, std::string_view address);
};

/// In the order in which they are looked for.
[[nodiscard]] const std::vector<Player>& players();

/// A player and where it is.
struct FoundPlayer {
  const Player* player;
  std::string path;
};
/// The one of that name, or the first that is there.
[[nodiscard]] std::optional<FoundPlayer> findPlayer(const std::optional<std::string>& name);

}  // namespace orvo::tool
