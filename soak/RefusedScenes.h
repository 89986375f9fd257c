#pragma once

#include <OrvoAPI/Futures/AnyError.h>
#include <OrvoAPI/HTTP/URL.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvo::soak {

/// What the scenes talk to.
struct Service {
  struct Deployment {
    URL api;
    URL resources;
  };
  Deployment lasting;
  Deployment forgetful;  // its tokens are good for two requests

  URL secure;  // over HTTP/2
  std::string authorityFile;

  /// Each a line, in this order.
  [[nodiscard]] static Service fromText(std::string_view text);
};

/// How a scene ended.
struct Ending {
  std::optional<AnyError> error = std::nullopt;
  bool isLost = false;  // a future was not completed, or a callback not called
};

/// One scene in one process. What it needs first is made when it is.
class Player {
 public:
  virtual ~Player() = default;
  /// What things are refused in; callable again. May throw what the library throws.
  virtual Ending act(const Service& service) = 0;
};

struct Scene {
  const char* name;
  std::unique_ptr<Player> (*make)(const Service& service);
  bool needsTLS = false;
};

[[nodiscard]] const std::vector<Scene>& scenes();

}  // namespace orvo::soak
