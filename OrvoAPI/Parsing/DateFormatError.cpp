#include <OrvoAPI/Parsing/DateFormatError.h>

namespace orvo {

std::string DateFormatError::description() const {
  const auto& mismatch = std::get<stringDoesNotMatchFormat>(value_);
  return "stringDoesNotMatchFormat: \"" + mismatch.string + "\", " + mismatch.format;
}

}  // namespace orvo
