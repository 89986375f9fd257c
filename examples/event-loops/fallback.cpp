// No event loop at all: until the main queue is claimed, a thread of the library runs it. Usage:
// fallback API_URL RESOURCES_URL, as `orvo serve-demo` prints them.
#include <OrvoAPI/OrvoAPI.h>

#include <chrono>

#include "Film.h"

int main(int count, char** arguments) {
  if (count != 3) return 2;
  return print(filmTitle(arguments)
                   .map(orvo::MainQueue::shared(), [](const std::string& title) { return title; })
                   .wait(std::chrono::seconds(30)));
}
