// The main queue in a loop that runs anyway, as a game's does. Usage: drain API_URL RESOURCES_URL,
// as `orvo serve-demo` prints them.
#include <OrvoAPI/OrvoAPI.h>

#include <chrono>
#include <thread>

#include "Film.h"

int main(int count, char** arguments) {
  if (count != 3) return 2;
  int status = 1;
  bool running = true;
  const auto queue = orvo::MainQueue::shared();
  auto claim = queue->claim();

  filmTitle(arguments).onComplete(queue, [&](const auto& title) {
    status = print(title);
    running = false;
  });

  while (running) {
    claim->drain();
    std::this_thread::sleep_for(std::chrono::milliseconds(16));  // draw a frame
  }
  return status;
}
