#include <OrvoAPI/HTTP/URLError.h>

namespace orvo {

std::string URLError::description() const {
  auto text = "URLError " + std::to_string(code);
  return message.empty() ? text : text + ": " + message;
}

}  // namespace orvo
