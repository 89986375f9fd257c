#include <OrvoAPI/Parsing/JSONReaderError.h>

namespace orvo {

std::string JSONReaderError::description() const { return "JSON reader: " + message; }

}  // namespace orvo
