// Results, promises and coroutines.
#include <OrvoAPI/Futures/Coroutine.h>

#include <stdexcept>

#include "Example.h"

namespace {

/// Shows Promise::future(); Promise::complete(other).
Outcome ownOperation(const App& app) {
  // A fetch with a second source: the first that comes counts.
  const orvo::Promise<orvo::Shared<orvo::Video>> video;
  app.context->fetchVideo("no-such-film")
      .onFailure([video, context = app.context](const orvo::AnyError&) {
        video.complete(context->fetchVideo("film-long-thaw"));
      })
      .onSuccess([video](const auto& found) { video.success(found); });
  return video.future().map([](const auto& found) { return found->id == "film-long-thaw"; });
}

/// Shows Result::calling(f); Result::map(f); Result::flatMap(f); Result::process(f);
/// Result::rescue(fallback); Result::d_rescue().
Outcome results(const App&) {
  const auto number = orvo::Result<int>::calling([] { return std::stoi("90"); });
  const auto none = orvo::Result<int>::calling([] { return std::stoi("ninety"); });
  const auto half = number.map([](int minutes) { return minutes / 2; });
  const auto even = half.flatMap([](int minutes) -> orvo::Result<int> {
    if (minutes % 2 == 0) return minutes;
    return orvo::Failure{std::domain_error("an odd number")};
  });
  half.process([](int minutes) { show(std::to_string(minutes) + " minutes"); });
  const bool rescued = none.rescue([] { return 0; }) == 0;
  try {
    (void)even.d_rescue([] { return 0; });  // throws in spite of its fallback
    return Outcome::succeeded(false);
  } catch (const std::exception&) {
    return Outcome::succeeded(rescued);
  }
}

/// Shows resumeOn(queue, future); operator co_await(future).
Outcome awaiting(std::shared_ptr<const orvo::Context> context) {
  const auto page = co_await context->fetchPage("view-discover");  // goes on on a worker
  const auto video = co_await orvo::resumeOn(mainQueue(), context->fetchVideo("film-long-thaw"));
  if (page.failed()) co_return orvo::Failure{*page.error()};
  show(video.force()->title);  // on the main queue; what `force` throws fails the future
  co_return true;
}

Outcome coroutine(const App& app) { return awaiting(app.context); }

}  // namespace

std::vector<Example> resultExamples() {
  return {{"ownOperation", ownOperation}, {"results", results}, {"coroutine", coroutine}};
}
