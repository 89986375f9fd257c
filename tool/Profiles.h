#pragma once

#include <tool/CommandTable.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orvo::tool {

/// A service under a name of the user's. Empty texts are those that were not given.
struct Profile {
  std::string name;
  std::string api{};
  std::string resources{};
  std::string client{};
};

/// What the user's file of profiles holds; nothing that is secret. Used by one thread.
struct Profiles {
  /// The name of the one that counts when nothing else is said; or empty.
  std::string used{};
  std::vector<Profile> all{};

  /// Throws `WrongUsage` when there is none of that name.
  [[nodiscard]] const Profile& named(const std::string& name) const;
};

/// Where the file is, below the folder of the user's configuration; nothing when the environment
/// names no such folder.
[[nodiscard]] std::optional<std::string> profilesPath();

/// Nothing is found in a file that is not there. Throws `WrongUsage` with the file and the line
/// when something in it cannot be understood.
[[nodiscard]] Profiles readProfiles();

/// Writes what `change` makes of the profiles, and returns it; one program at a time does so.
/// Throws `WrongUsage` when the file cannot be understood or written.
Profiles changeProfiles(const std::function<void(Profiles&)>& change);

/// The names that profiles may have.
[[nodiscard]] Values profileNames();
/// Those that there are, for a shell to offer; none when the file cannot be understood.
[[nodiscard]] std::vector<std::string> knownProfiles();
[[nodiscard]] Values clientNames();

}  // namespace orvo::tool
