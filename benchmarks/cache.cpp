// A hit in the cache: what it costs the caller of a fetch, from the call to the end of its
// callback, against what it would cost to hand out a copy; and what the store itself allocates for
// it.

#include <OrvoAPI/Context/Context.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <OrvoAPI/Queues/MainQueue.h>
#include <OrvoAPI/Storage/AppStore.h>
#include <OrvoAPI/Testing/StubNetworkDataProvider.h>
#include <OrvoAPI/Testing/StubSessionProvider.h>
#include <benchmarks/support/Documents.h>
#include <benchmarks/support/Instructions.h>
#include <benchmarks/support/Measure.h>

#include <memory>
#include <string>

namespace {

using namespace orvo;
using namespace orvo::benchmarks;

constexpr std::size_t kItems = 200;
constexpr const char* kBase = "https://api.example/v3/";
constexpr const char* kID = "7d2e9a40-featured";
constexpr int kTimes = 1000;

JSONObject object(const std::string& text) {
  return JSONDataParser::object(Data(std::string(text))).force();
}

std::shared_ptr<Context> makeContext() {
  auto configuration =
      ConfigurationParser::parse(object(configurationDocument()), Environment::production).force();
  return Context::make(
      std::move(configuration), *URL::parse(kBase), *URL::parse("https://resources.example/"),
      std::make_shared<StubSessionProvider>(), std::make_shared<StubNetworkDataProvider>());
}

/// A thread that runs the main queue, as an app's does.
struct App {
  MainQueue::Claim claim = *MainQueue::shared()->claim();
  std::shared_ptr<Context> context = makeContext();
  std::string key =
      std::string(kBase) + "collections/" + kID + "?offset=0&limit=" + std::to_string(kItems);
  Shared<ItemCollection> kept = std::make_shared<const ItemCollection>(
      ItemCollectionParser::parse(object(collectionDocument(kItems))).force());
  std::size_t delivered = 0;

  App() { context->store().collections.store(kept, key); }

  void hit() {
    context->fetchItemCollection(kID, {.page = ListPartRequest{.offset = 0, .limit = kItems}})
        .onSuccess(MainQueue::shared(), [this](const Shared<ItemCollection>& collection) {
          delivered += collection->items.size();
        });
    while (claim.drain() > 0) {
    }
  }
  void copy() const { keep(ItemCollection(*kept)); }
  void access() const { keep(context->store().collections.element(key)); }
};

template <class Work>
Counts countsOfEach(Work&& work) {
  work();
  auto counts = countsOf([&] {
    for (int i = 0; i < kTimes; ++i) work();
  });
  return {counts.instructions / kTimes, counts.allocations / kTimes};
}

}  // namespace

int main(int, char** argv) {
  App app;
  const auto hit = [&] { app.hit(); };
  const auto copy = [&] { app.copy(); };
  const std::string name = "hit of a fetch, 200 items";
  if (!underCallgrind()) print(name, "ns", "a copy", compare(hit, copy), 0.005);
  runUnderCallgrind(argv);
  const auto ours = countsOfEach(hit), theirs = countsOfEach(copy);
  print(Row{name, "instructions", ours.instructions, "a copy", theirs.instructions,
            ours.instructions / theirs.instructions, Goal::atMost, 0.005});
  print(Row{.name = name,
            .unit = "allocations",
            .ours = ours.allocations,
            .peer = "a copy",
            .theirs = theirs.allocations});
  const auto access = countsOfEach([&] { app.access(); });
  print(
      Row{.name = "hit in the store itself", .unit = "instructions", .ours = access.instructions});
  print(Row{.name = "hit in the store itself",
            .unit = "allocations",
            .ours = access.allocations,
            .bound = 0});
  if (app.delivered != static_cast<std::size_t>(kTimes + 1) * kItems) return 1;  // no hit
}
