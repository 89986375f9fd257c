#pragma once

#include <OrvoAPI/Context/Client.h>
#include <OrvoAPI/Context/Environment.h>
#include <OrvoAPI/HTTP/URL.h>

#include <optional>
#include <string>

namespace orvo::tool {

/// What the command line says about the service, as it is written.
struct WrittenService {
  std::optional<std::string> environment{};
  std::string api{};
  std::string resources{};
  std::optional<std::string> profile{};
  bool demo = false;
  std::optional<std::string> client{};
};

/// The service to talk to, and as what.
struct ServiceChoice {
  Environment environment = Environment::production;
  /// In place of the environment's, when given.
  std::optional<URL> api{};
  std::optional<URL> resources{};
  bool demo = false;
  Client client = Client::appleTV;
  /// Who said so, for people: `ORVO_API`, `profile staging`.
  std::string source{};
  std::string clientSource{};
};

/// The first that says anything counts: the command line, the environment's variables, the profile
/// in use, what is compiled in; and both hosts come from the same one. Throws `WrongUsage` when a
/// variable or a profile cannot be understood.
[[nodiscard]] ServiceChoice chooseService(const WrittenService& written);

}  // namespace orvo::tool
