#include <OrvoAPI/Parsing/DateFormatError.h>

namespace orvo {

std::string DateFormatError::description() const {
  const auto& mismatch = *as<stringDoesNotMatchFormat>();
  return "stringDoesNotMatchFormat: \"" + mismatch.string + "\", " + mismatch.format;
}

}  // namespace orvo
