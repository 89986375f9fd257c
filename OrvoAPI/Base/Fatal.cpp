#include <OrvoAPI/Base/FatalInternal.h>

#include <cstdio>
#include <cstdlib>

namespace orvo::detail {

void fatal(std::string_view message) {
  std::fprintf(stderr, "OrvoAPI: %.*s\n", static_cast<int>(message.size()), message.data());
  std::abort();
}

}  // namespace orvo::detail
