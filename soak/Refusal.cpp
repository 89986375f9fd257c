#include <dlfcn.h>
#include <pthread.h>
#include <soak/Refusal.h>
#include <sys/epoll.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>

using orvo::soak::Refusal;

namespace {

bool refuses(Refusal::Kind kind, int error) noexcept {
  if (!Refusal::takes(kind)) return false;
  errno = error;
  return true;
}

template <class... Arguments>
int call(Refusal::Kind kind, int error, long number, Arguments... arguments) {
  return refuses(kind, error) ? -1 : static_cast<int>(syscall(number, arguments...));
}

}  // namespace

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)

// The sanitizer has its own malloc.
#include <support/OperatorNew.h>

bool orvo::test::refusesMemory() noexcept { return refuses(Refusal::Kind::memory, ENOMEM); }

#else

// All that C and C++ allocate goes through these, libcurl and the TLS library included.

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);

void* malloc(std::size_t size) noexcept {
  return refuses(Refusal::Kind::memory, ENOMEM) ? nullptr : __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) noexcept {
  return refuses(Refusal::Kind::memory, ENOMEM) ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* memory, std::size_t size) noexcept {
  return refuses(Refusal::Kind::memory, ENOMEM) ? nullptr : __libc_realloc(memory, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
  return refuses(Refusal::Kind::memory, ENOMEM) ? nullptr : __libc_memalign(alignment, size);
}
int posix_memalign(void** memory, std::size_t alignment, std::size_t size) noexcept {
  if (refuses(Refusal::Kind::memory, ENOMEM)) return ENOMEM;
  *memory = __libc_memalign(alignment, size);
  return *memory != nullptr ? 0 : ENOMEM;
}

}  // extern "C"

#endif

extern "C" {

int socket(int domain, int type, int protocol) noexcept {
  return call(Refusal::Kind::socket, EMFILE, SYS_socket, domain, type, protocol);
}
int connect(int socket, const sockaddr* address, socklen_t size) {
  return call(Refusal::Kind::connect, ENOBUFS, SYS_connect, socket, address, size);
}
int epoll_create1(int flags) noexcept {
  return call(Refusal::Kind::epollCreate, EMFILE, SYS_epoll_create1, flags);
}
int epoll_ctl(int epoll, int operation, int descriptor, epoll_event* event) noexcept {
  return call(Refusal::Kind::epollControl, ENOMEM, SYS_epoll_ctl, epoll, operation, descriptor,
              event);
}
int eventfd(unsigned initial, int flags) noexcept {
  return call(Refusal::Kind::eventfd, EMFILE, SYS_eventfd2, initial, flags);
}
int timerfd_create(clockid_t clock, int flags) noexcept {
  return call(Refusal::Kind::timerfd, EMFILE, SYS_timerfd_create, clock, flags);
}
/// Only the clocks that an old system may lack.
int clock_gettime(clockid_t clock, timespec* time) noexcept {
  if (clock != CLOCK_BOOTTIME && clock >= 0) {
    return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
  }
  return call(Refusal::Kind::clock, EINVAL, SYS_clock_gettime, clock, time);
}
ssize_t getrandom(void* buffer, std::size_t size, unsigned flags) {
  if (refuses(Refusal::Kind::random, ENOSYS)) return -1;
  return syscall(SYS_getrandom, buffer, size, flags);
}
int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                   void* argument) noexcept {
  using Create = int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
  static Create* const create = reinterpret_cast<Create*>(dlsym(RTLD_NEXT, "pthread_create"));
  return refuses(Refusal::Kind::thread, EAGAIN) ? EAGAIN
                                                : create(thread, attributes, start, argument);
}

}  // extern "C"
