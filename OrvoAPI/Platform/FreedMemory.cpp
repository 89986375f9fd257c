#include <OrvoAPI/Platform/FreedMemoryInternal.h>

#include <cstdlib>  // says which C library this is

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace orvo::detail {

void giveBackFreedMemory() {
#if defined(__GLIBC__)
  malloc_trim(0);
#endif
}

}  // namespace orvo::detail
