// The main queue in a loop that turns anyhow, as a game's does.
// Usage: drain API_URL RESOURCES_URL, as `orvo serve-demo` prints them.
#include <OrvoAPI/OrvoAPI.h>

#include <chrono>
#include <cstdio>
#include <thread>

int main(int count, char** arguments) {
  if (count != 3) return 2;
  int status = 1;
  bool running = true;
  const auto queue = orvo::MainQueue::shared();
  auto claim = queue->claim();

  orvo::ContextService::context(*orvo::URL::parse(arguments[1]), *orvo::URL::parse(arguments[2]),
                                orvo::Client::appleTV)
      .flatMap([](const auto& context) { return context->fetchVideo("film-long-thaw"); })
      .onSuccess(queue,
                 [&](const auto& video) {
                   std::puts(video->title.c_str());
                   status = 0;
                   running = false;
                 })
      .onFailure(queue, [&](const auto& error) {
        std::fprintf(stderr, "%s\n", error.description().c_str());
        running = false;
      });

  while (running) {
    claim->drain();
    std::this_thread::sleep_for(std::chrono::milliseconds(16));  // draw a frame
  }
  return status;
}
