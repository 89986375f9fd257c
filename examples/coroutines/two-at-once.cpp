// Two fetches at once, awaited one after the other on the program's own thread.
// Usage: two-at-once API_URL RESOURCES_URL, as `orvo serve-demo` prints them.
#include <OrvoAPI/Futures/Coroutine.h>
#include <OrvoAPI/OrvoAPI.h>

#include <cstdio>
#include <memory>
#include <utility>

namespace {

const std::shared_ptr<orvo::MainQueue> mainQueue = orvo::MainQueue::shared();

orvo::Future<bool> show(std::shared_ptr<const orvo::Context> context) {
  auto video = context->fetchVideo("film-long-thaw");
  auto other = context->fetchVideo("film-salt-road");  // both are on their way now
  const auto first = co_await orvo::resumeOn(mainQueue, std::move(video));
  const auto second = co_await orvo::resumeOn(mainQueue, std::move(other));
  if (first.failed()) co_return orvo::Failure{*first.error()};
  std::puts(first.force()->title.c_str());
  std::puts(second.force()->title.c_str());  // or so: what it throws fails the future
  co_return true;
}

orvo::Future<bool> run(orvo::URL api, orvo::URL resources) {
  const auto opened = co_await orvo::ContextService::context(api, resources, orvo::Client::appleTV);
  co_return co_await show(opened.force());
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) return 2;
  int status = 1;
  auto claim = mainQueue->claim();
  run(*orvo::URL::parse(arguments[1]), *orvo::URL::parse(arguments[2]))
      .onComplete(mainQueue, [&](const orvo::Result<bool>& shown) {
        if (shown.failed()) std::fprintf(stderr, "%s\n", shown.error()->description().c_str());
        status = shown.failed() ? 1 : 0;
        claim->stop();
      });
  claim->run();
  return status;
}
