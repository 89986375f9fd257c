#include <OrvoAPI/Network/SessionError.h>

namespace orvo {

std::string SessionError::description() const {
  if (const auto* const answer = as<unexpectedStatus>()) {
    return "unexpectedStatus " + std::to_string(answer->status);
  }
  return "couldNotUpdateSession";
}

}  // namespace orvo
