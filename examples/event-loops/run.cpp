// The main queue on a thread that does nothing else.
// Usage: run API_URL RESOURCES_URL, as `orvo serve-demo` prints them.
#include <OrvoAPI/OrvoAPI.h>

#include "Film.h"

int main(int count, char** arguments) {
  if (count != 3) return 2;
  int status = 1;
  const auto queue = orvo::MainQueue::shared();
  auto claim = queue->claim();

  filmTitle(arguments).onComplete(queue, [&](const auto& title) {
    status = print(title);
    claim->stop();
  });

  claim->run();
  return status;
}
