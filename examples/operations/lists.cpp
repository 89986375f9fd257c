// Lists that the service hands out in parts.
#include <OrvoAPI/Futures/Coroutine.h>

#include <atomic>

#include "Example.h"

namespace {

/// Shows ListWalk::ListWalk(context, first); ListWalk::forEach(queue, task).
Outcome wholeList(const App& app) {
  const orvo::ListWalk walk(app.context, app.context->collectionCapability("everything"));
  return walk.forEach(mainQueue(), [](const orvo::Shared<orvo::ItemCollection>& part) {
    show(std::to_string(part->items.size()) + " items from " + std::to_string(part->meta.offset));
  });  // true after the last part
}

/// Shows ListWalk::forEach(task).
Outcome untilEnough(const App& app) {
  const orvo::ListWalk walk(app.context, app.context->playlistCapability("films"));
  return walk
      .forEach([count = 0](const orvo::Shared<orvo::Playlist>& part) mutable {
        count += static_cast<int>(part->items.size());
        return count < 5;  // false: no more
      })
      .map([](bool wasWhole) { return !wasWhole; });
}

/// Shows ListWalk::next().
Outcome inALoop(App app) {
  const orvo::ListWalk walk(app.context, app.context->collectionCapability("everything"));
  int parts = 0;
  while (true) {
    const auto part = co_await walk.next();
    if (part.failed()) co_return orvo::Failure{*part.error()};
    if (*part.value() == nullptr) co_return parts > 1;  // that was the last one
    ++parts;
  }
}
Outcome inALoopOf(const App& app) { return inALoop(app); }

/// Shows Context::nextFetchCapability(collection); Context::nextFetchCapability(playlist).
Outcome onePartAfterAnother(const App& app) {
  const auto collection = app.context->fetchItemCollection("everything").flatMap([app](auto& part) {
    return app.context->nextFetchCapability(*part).value()();
  });
  const auto playlist = app.context->fetchPlaylist("films", {.page = {{.offset = 0, .limit = 3}}})
                            .flatMap([app](const auto& part) {
                              return app.context->nextFetchCapability(*part).value()();
                            });
  return collection.zip(playlist).map([](const auto& parts) {
    return parts.first->meta.offset > 0 && parts.second->meta.offset == 3;
  });
}

/// Shows Context::nextCapability(guide); Context::nextFetchCapability(guide).
Outcome nextPartOfTheGuide(const App& app) {
  const orvo::Date now = app.context->clock()->now();
  const auto first = app.context->linearProgramGuideCapability(
      now, now + std::chrono::hours(12), {.page = {{.offset = 0, .limit = 2}}});
  return first().map([app](const orvo::Shared<orvo::LinearProgramGuide>& part) {
    const auto next = app.context->nextCapability(*part);
    const auto same = app.context->nextFetchCapability(*part);
    return next.has_value() && same.has_value();  // nothing after the last part
  });
}

}  // namespace

std::vector<Example> listExamples() {
  return {{"wholeList", wholeList},
          {"untilEnough", untilEnough},
          {"inALoop", inALoopOf},
          {"onePartAfterAnother", onePartAfterAnother},
          {"nextPartOfTheGuide", nextPartOfTheGuide}};
}
