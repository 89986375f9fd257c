// A screen that is left while its video is under way: the request ends, and nothing reaches it.
// Usage: leave API_URL RESOURCES_URL, as `orvo serve-demo` prints them.
#include <OrvoAPI/OrvoAPI.h>

#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace {

using Show = std::function<void(const orvo::Result<orvo::Shared<orvo::Video>>&)>;
const auto kMainQueue = orvo::MainQueue::shared();

/// What not to do. It is never opened here.
class WrongScreen {
 public:
  explicit WrongScreen(Show show) : show_(std::move(show)) {}

  void open(const orvo::Context& context) {
    video_ = context.fetchVideo("film-long-thaw").onComplete(kMainQueue, [this](const auto& video) {
      show_(video);
    });
  }
  ~WrongScreen() { video_.cancel(); }

 private:
  orvo::Future<orvo::Shared<orvo::Video>> video_;
  Show show_;
};

class Screen : public std::enable_shared_from_this<Screen> {
 public:
  Screen(const std::shared_ptr<const orvo::Context>& context, Show show)
      : scope_(context), show_(std::move(show)) {}

  void open() {
    scope_.context()
        ->fetchVideo("film-long-thaw")
        .onComplete(kMainQueue, weak_from_this(), [this](const auto& video) { show_(video); });
  }

 private:
  orvo::FetchScope scope_;  // ends with the screen, and all that it fetched
  Show show_;
};

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) return 2;
  const auto context =
      orvo::ContextService::context(*orvo::URL::parse(arguments[1]),
                                    *orvo::URL::parse(arguments[2]), orvo::Client::appleTV)
          .wait(std::chrono::minutes(1));
  if (context.failed()) {
    std::fprintf(stderr, "%s\n", context.error()->description().c_str());
    return 1;
  }
  auto claim = kMainQueue->claim();
  auto left = std::make_shared<Screen>(*context.value(), [](const auto&) { std::puts("left"); });
  left->open();
  left.reset();

  int status = 1;
  const auto screen = std::make_shared<Screen>(*context.value(), [&](const auto& video) {
    if (!video.failed()) std::puts((*video.value())->title.c_str());
    status = video.failed() ? 1 : 0;
    claim->stop();
  });
  screen->open();
  claim->run();
  return status;
}
