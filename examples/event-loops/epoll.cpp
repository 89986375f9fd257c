// The main queue in an epoll loop; poll, libuv, libevent and asio watch its descriptor likewise.
// Usage: epoll API_URL RESOURCES_URL, as `orvo serve-demo` prints them.
#include <OrvoAPI/OrvoAPI.h>
#include <sys/epoll.h>
#include <unistd.h>

#include "Film.h"

int main(int count, char** arguments) {
  if (count != 3) return 2;
  int status = 1;
  bool running = true;
  const auto queue = orvo::MainQueue::shared();
  auto claim = queue->claim();
  const int loop = epoll_create1(EPOLL_CLOEXEC);
  epoll_event event{.events = EPOLLIN, .data = {.fd = claim->eventDescriptor()}};
  if (epoll_ctl(loop, EPOLL_CTL_ADD, claim->eventDescriptor(), &event) != 0) return 1;

  filmTitle(arguments).onComplete(queue, [&](const auto& title) {
    status = print(title);
    running = false;
  });

  while (running) {
    // More descriptors may be watched; this one says that jobs wait.
    if (epoll_wait(loop, &event, 1, -1) == 1 && event.data.fd == claim->eventDescriptor()) {
      claim->drain();
    }
  }
  close(loop);
  return status;
}
