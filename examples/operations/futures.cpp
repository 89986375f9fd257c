// What can be done with a future.
#include <OrvoAPI/Testing/ManualQueue.h>

#include "Example.h"

namespace {

/// Shows Future::onComplete(queue, task); Future::onSuccess(queue, task);
/// Future::onFailure(queue, task).
Outcome callbacksOnAQueue(const App& app) {
  const orvo::Promise<bool> shown;
  app.context->fetchVideo("film-long-thaw")
      .onSuccess(mainQueue(), [](const orvo::Shared<orvo::Video>& video) { show(video->title); })
      .onFailure(mainQueue(), [](const orvo::AnyError& error) { show(error.description()); })
      .onComplete(mainQueue(), [shown](const orvo::Result<orvo::Shared<orvo::Video>>& result) {
        shown.success(!result.failed());  // the spinner goes, whatever came
      });
  return shown.future();
}

/// Shows Future::onComplete(task); Future::onSuccess(task); Future::onFailure(task).
Outcome callbacksOnAWorker(const App& app) {
  const orvo::Promise<bool> counted;
  app.context->fetchVideo("no-such-film")
      .onSuccess([counted](const auto&) { counted.success(false); })
      .onFailure([](const orvo::AnyError& error) { show(error.description()); })
      .onComplete([counted](const auto& result) { counted.success(result.failed()); });
  return counted.future();  // on the future's own queue, by default a worker of the library
}

/// A screen of an app.
class Screen : public std::enable_shared_from_this<Screen> {
 public:
  void open(const orvo::Context& context);
  void openWithQueueOfTheFuture(const orvo::Context& context);
  orvo::Promise<bool> shown;

 private:
  void draw(const std::string& title) { shown.success(!title.empty()); }
};

/// Shows Future::onComplete(queue, owner, task); Future::onSuccess(queue, owner, task);
/// Future::onFailure(queue, owner, task).
void Screen::open(const orvo::Context& context) {
  // Only while the screen lives; whatever waits when it goes is not called any more.
  context.fetchPage("view-discover")
      .onSuccess(mainQueue(), weak_from_this(), [this](const auto& page) { draw(page->title); })
      .onFailure(mainQueue(), weak_from_this(), [this](const auto& error) { shown.failure(error); })
      .onComplete(mainQueue(), weak_from_this(), [](const auto&) { show("the spinner goes"); });
}

/// Shows Future::onComplete(owner, task); Future::onSuccess(owner, task);
/// Future::onFailure(owner, task); Future::onCancel(owner, task).
void Screen::openWithQueueOfTheFuture(const orvo::Context& context) {
  // For an owner that may end on any thread.
  context.fetchPage("view-discover")
      .onSuccess(weak_from_this(), [this](const auto& page) { draw(page->title); })
      .onFailure(weak_from_this(), [this](const auto& error) { shown.failure(error); })
      .onCancel(weak_from_this(), [this](bool) { shown.success(false); })
      .onComplete(weak_from_this(), [](const auto&) { show("the spinner goes"); });
}

Outcome callbacksOfAScreen(const App& app) {
  const auto screen = std::make_shared<Screen>();
  const auto other = std::make_shared<Screen>();
  screen->open(*app.context);
  other->openWithQueueOfTheFuture(*app.context);
  return screen->shown.future().zip(other->shown.future()).map([screen, other](const auto& both) {
    return both.first && both.second;
  });
}

/// Shows Future::onCancel(queue, task); Future::onCancel(task);
/// Future::onCancel(queue, owner, task).
Outcome cancelling(const App& app) {
  const auto heard = std::make_shared<int>(0);
  const auto video =
      app.context->fetchVideo("film-salt-road", {.noCache = true})
          .onCancel(mainQueue(), [heard](bool completed) { *heard += completed ? 0 : 1; })
          .onCancel(mainQueue(), std::weak_ptr(heard), [heard](bool) { ++*heard; })
          .onCancel([heard](bool) { ++*heard; });
  video.cancel();  // runs all three before it returns, on this thread
  return Outcome::succeeded(video.isCancelled() && *heard >= 2);
}

/// Shows Future::map(queue, transform); Future::map(transform);
/// Future::flatMap(queue, task); Future::flatMap(task).
Outcome chains(const App& app) {
  return app.context->fetchVideo("film-long-thaw")
      .flatMap([context = app.context](const auto& video) {  // another fetch with what came
        return context->fetchPlaylist(video->deepLinkPlaylistID.value());
      })
      .map([](const auto& playlist) { return playlist->items.size(); })  // another value
      .flatMap(mainQueue(), [](std::size_t count) { return Outcome::succeeded(count > 0); })
      .map(mainQueue(), [](bool hasItems) {
        show(hasItems ? "something comes after it" : "nothing comes after it");
        return hasItems;
      });
}

/// Shows Future::zip(other).
Outcome twoAtOnce(const App& app) {
  return app.context->fetchPage("view-discover")
      .zip(app.context->fetchVideo("film-long-thaw"))
      .map([](const std::pair<orvo::Shared<orvo::Page>, orvo::Shared<orvo::Video>>& both) {
        return !both.first->title.empty() && !both.second->title.empty();
      });
}

/// Shows Future::concat(futures); Future::combine(future, with).
Outcome manyAtOnce(const App& app) {
  using Videos = orvo::Future<orvo::Shared<orvo::Video>>;
  const auto two = Videos::concat(
      {app.context->fetchVideo("film-long-thaw"), app.context->fetchVideo("film-salt-road")});
  return Videos::combine(two, app.context->fetchVideo("film-forty-bells"))
      .map([](const std::vector<orvo::Shared<orvo::Video>>& videos) { return videos.size() == 3; });
}

/// Shows Future::validate(predicate); Future::successResult().
Outcome conditions(const App& app) {
  return app.context->fetchVideo("film-long-thaw")
      .validate([](const auto& video) {  // else GeneralError::elementNotFound
        return video->playbackStatus == orvo::Video::PlaybackStatus::available;
      })
      .successResult();  // whether all that went well; never fails
}

/// Shows Future::succeeded(value); Future::failed(error); Future::completed(result).
orvo::Future<std::string> titleOf(const std::string& cached, bool isOffline) {
  if (!cached.empty()) return orvo::Future<std::string>::succeeded(cached);
  if (isOffline) {
    const orvo::URLError error{orvo::URLError::notConnectedToInternet, "offline"};
    return orvo::Future<std::string>::failed(error);
  }
  return orvo::Future<std::string>::completed(orvo::Result<std::string>("The Long Thaw"));
}

Outcome settledFutures(const App&) {
  return titleOf("a title", false).zip(titleOf("", false)).flatMap([](const auto&) {
    return titleOf("", true).successResult().map([](bool succeeded) { return !succeeded; });
  });
}

}  // namespace

std::vector<Example> futureExamples() {
  return {{"callbacksOnAQueue", callbacksOnAQueue},
          {"callbacksOnAWorker", callbacksOnAWorker},
          {"callbacksOfAScreen", callbacksOfAScreen},
          {"cancelling", cancelling},
          {"chains", chains},
          {"twoAtOnce", twoAtOnce},
          {"manyAtOnce", manyAtOnce},
          {"conditions", conditions},
          {"settledFutures", settledFutures}};
}
