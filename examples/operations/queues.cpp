// Queues, stores, the clock and the console.
#include <OrvoAPI/Testing/ManualClock.h>

#include <deque>
#include <mutex>

#include "Example.h"

namespace {

/// Shows DispatchQueue::post(job); DispatchQueue::postAfter(delay, job).
Outcome later(const App&) {
  const orvo::Promise<bool> ran;
  mainQueue()->post([] { show("soon, on the main queue"); });
  orvo::DispatchQueue::global()->postAfter(std::chrono::milliseconds(1),
                                           [ran] { ran.success(true); });
  return ran.future();
}

/// Shows Job::Job(function); DispatchQueue::post(job).
class FrameQueue final : public orvo::DispatchQueue {
 public:
  void post(orvo::Job job) override {  // from any thread; never runs it
    const std::lock_guard guard(mutex_);
    jobs_.push_back(std::move(job));
  }
  /// Called by the app's loop, once per frame.
  void runAll() {
    std::deque<orvo::Job> jobs;
    {
      const std::lock_guard guard(mutex_);
      jobs.swap(jobs_);
    }
    for (auto& job : jobs) job();
  }
  /// As a future's callback does it: anything that can be called is a job.
  void postGreeting() {
    post(orvo::Job([] { show("hello"); }));
  }

 private:
  std::mutex mutex_;
  std::deque<orvo::Job> jobs_;
};

Outcome ownQueue(const App&) {
  const auto queue = std::make_shared<FrameQueue>();
  const auto outcome = Outcome::completed(orvo::Result<bool>(true)).map(queue, [](bool done) {
    return done;  // runs within runAll, on this thread
  });
  queue->postGreeting();
  queue->runAll();
  return outcome;
}

/// Shows SerialQueue::sync(function).
Outcome guardedState(const App&) {
  const auto queue = orvo::SerialQueue::make("counter");
  int count = 0;  // only touched on the queue
  queue->post([&count] { ++count; });
  queue->sync([&count] { ++count; });  // after the other, and waits for it
  return Outcome::succeeded(count == 2);
}

/// Shows Store::access(key, fallback); Store::keep(future, key).
Outcome ownCache(const App& app) {
  static orvo::Store<orvo::Video> store(100);
  const auto fetch = [context = app.context] {
    return context->fetchVideo("film-long-thaw", {.noCache = true});
  };
  return store
      .access("trailer", fetch)  // fetches, and keeps what comes
      .flatMap([fetch](const auto&) { return store.keep(fetch(), "trailer"); })  // a newer one
      .map([](const auto& video) { return store.element("trailer") == video; });
}

/// Shows Clock::onWallSet(task).
Outcome wallClock(const App&) {
  const orvo::Promise<bool> told;
  const auto clock = std::make_shared<orvo::ManualClock>();  // in an app: Clock::system()
  const auto watch = clock->onWallSet([told] { told.success(true); });  // as long as it is held
  clock->setWall(orvo::ManualClock::kDefaultWall + std::chrono::hours(24));
  return told.future();
}

/// Shows setConsoleSink(sink).
Outcome console(const App&) {
  const auto lines = std::make_shared<int>(0);
  orvo::setConsoleSink([lines](std::string_view line) {
    ++*lines;
    show(std::string(line.substr(0, line.find('\n'))));
  });
  orvo::printToConsole("as the library would");
  orvo::setConsoleSink({});  // standard output again
  return Outcome::succeeded(*lines == 1);
}

}  // namespace

std::vector<Example> queueExamples() {
  return {{"later", later},       {"ownQueue", ownQueue},   {"guardedState", guardedState},
          {"ownCache", ownCache}, {"wallClock", wallClock}, {"console", console}};
}
