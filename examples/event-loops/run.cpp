// The main queue on a thread that does nothing else.
// Usage: run API_URL RESOURCES_URL, as `orvo serve-demo` prints them.
#include <OrvoAPI/OrvoAPI.h>

#include <cstdio>

int main(int count, char** arguments) {
  if (count != 3) return 2;
  int status = 1;
  const auto queue = orvo::MainQueue::shared();
  auto claim = queue->claim();

  orvo::ContextService::context(*orvo::URL::parse(arguments[1]), *orvo::URL::parse(arguments[2]),
                                orvo::Client::appleTV)
      .flatMap([](const auto& context) { return context->fetchVideo("film-long-thaw"); })
      .onSuccess(queue,
                 [&](const auto& video) {
                   std::puts(video->title.c_str());
                   status = 0;
                   claim->stop();
                 })
      .onFailure(queue, [&](const auto& error) {
        std::fprintf(stderr, "%s\n", error.description().c_str());
        claim->stop();
      });

  claim->run();
  return status;
}
