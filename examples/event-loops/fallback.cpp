// No event loop at all: until somebody claims the main queue, a thread of the library's runs it.
// Usage: fallback API_URL RESOURCES_URL, as `orvo serve-demo` prints them.
#include <OrvoAPI/OrvoAPI.h>

#include <chrono>
#include <cstdio>

int main(int count, char** arguments) {
  if (count != 3) return 2;
  const auto title =
      orvo::ContextService::context(*orvo::URL::parse(arguments[1]),
                                    *orvo::URL::parse(arguments[2]), orvo::Client::appleTV)
          .flatMap([](const auto& context) { return context->fetchVideo("film-long-thaw"); })
          .map(orvo::MainQueue::shared(), [](const auto& video) { return video->title; })
          .wait(std::chrono::seconds(30));
  std::puts(title.failed() ? title.error()->description().c_str() : title.value()->c_str());
  return title.failed() ? 1 : 0;
}
