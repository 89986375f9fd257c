// What a fetch costs more when somebody is told of it, and when it is a screen's: a video from a
// network that answers at once, read and not cached.

#include <OrvoAPI/OrvoAPI.h>
#include <OrvoAPI/Testing/Fixtures.h>
#include <OrvoAPI/Testing/StubSessionProvider.h>
#include <benchmarks/support/Documents.h>
#include <benchmarks/support/Instructions.h>
#include <benchmarks/support/Measure.h>

#include <atomic>
#include <memory>
#include <string>
#include <utility>

namespace {

using namespace orvo;
using namespace orvo::benchmarks;

class AnsweringNetwork final : public NetworkDataProvider {
 public:
  explicit AnsweringNetwork(std::string body) : body_(std::move(body)) {}
  Future<HTTPResult> fetch(const URLRequest& request) override {
    const Promise<HTTPResult> promise;
    promise.success(HTTPResult{{request.url, 200, {}}, body_});
    return promise.future();
  }

 private:
  const Data body_;
};

/// Holds a session whose token is ready.
std::shared_ptr<Context> contextFor(std::string body, ContextOptions options = {}) {
  return Context::make(fixtures::configuration(), *URL::parse("https://api.example/v3/"),
                       *URL::parse("https://images.example/"),
                       std::make_shared<StubSessionProvider>("token"),
                       std::make_shared<AnsweringNetwork>(std::move(body)), std::move(options));
}

/// One after another.
double instructionsPerFetch(const Context& context) {
  constexpr int kTimes = 500;
  const auto fetch = [&] {
    std::atomic<bool> isDone = false;
    context.fetchVideo("v", {.noCache = true}).onComplete([&](const auto& result) {
      if (result.failed()) std::exit(2);
      isDone = true;
      isDone.notify_one();
    });
    isDone.wait(false);
  };
  for (int i = 0; i < kTimes; ++i) fetch();
  return instructionsOf([&] {
           for (int i = 0; i < kTimes; ++i) fetch();
         }) /
         kTimes;
}

}  // namespace

int main(int, char** argv) {
  runUnderCallgrind(argv);
  const auto lossy = videoDocument(0);  // with an image of a kind that is not known
  const std::string unknown = "orvo_hologram_cube";
  auto whole = lossy;
  whole.replace(whole.find(unknown), unknown.size(), "orvo_logo_landscape");
  const auto plain = contextFor(whole), plainOfLossy = contextFor(lossy);
  const double without = instructionsPerFetch(*plain);
  const auto beside = [&](const char* what, const Context& context) {
    printCounts(what, "instructions", instructionsPerFetch(context), "without", without);
  };
  std::atomic<int> reports = 0, losses = 0;
  const auto observed = contextFor(whole, {.onReport = [&](const RequestReport&) { ++reports; }});
  beside("a fetch with an observer", *observed);
  const ContextOptions watching{.onLoss = [&](const DocumentLoss&) { ++losses; }};
  const auto watched = contextFor(whole, watching), told = contextFor(lossy, watching);
  beside("a fetch with an observer of losses, of which there are none", *watched);
  if (losses > 0) return 2;
  printCounts("a fetch with an observer of losses, of which there is one", "instructions",
              instructionsPerFetch(*told), "without", instructionsPerFetch(*plainOfLossy));
  const FetchScope scope(plain);
  beside("a fetch through a scope", *scope.context());
  if (reports < 500 || losses < 500) return 2;
}
