#include <OrvoAPI/Futures/GeneralError.h>

namespace orvo {

std::string GeneralError::description() const {
  if (const auto* wrapped = as<underlying>()) return "underlying: " + wrapped->error.description();
  return is<elementNotFound>() ? "elementNotFound" : "unableToPerformAction";
}

}  // namespace orvo
