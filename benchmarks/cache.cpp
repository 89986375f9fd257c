// A hit in the cache, beside a table behind a lock as an app would keep it: in the store itself,
// and by a fetch, from the call to the end of its callback on the main queue.

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
#include <mutex>
#include <string>
#include <unordered_map>

namespace {

using namespace orvo;
using namespace orvo::benchmarks;

constexpr std::size_t kItems = 200;
constexpr const char* kBase = "https://api.example/v3/";
constexpr const char* kID = "7d2e9a40-featured";
constexpr int kTimes = 1000;
/// With them, the store is almost full.
constexpr int kOthers = 24;

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

  App() {
    for (int i = 0; i < kOthers; ++i) context->store().collections.store(kept, key + char('a' + i));
    context->store().collections.store(kept, key);
  }

  void hit() {
    context->fetchItemCollection(kID, {.page = ListPartRequest{.offset = 0, .limit = kItems}})
        .onSuccess(MainQueue::shared(), [this](const Shared<ItemCollection>& collection) {
          delivered += collection->items.size();
        });
    while (claim.drain() > 0) {
    }
  }
  void access() const { keep(context->store().collections.element(key)); }
};

/// Forgets nothing, knows of no age and has no bound.
class LockedTable {
 public:
  LockedTable(const std::string& key, Shared<ItemCollection> kept) {
    for (int i = 0; i < kOthers; ++i) table_[key + char('a' + i)] = kept;
    table_[key] = std::move(kept);
  }
  [[nodiscard]] Shared<ItemCollection> element(const std::string& key) const {
    const std::lock_guard guard(lock_);
    const auto found = table_.find(key);
    return found == table_.end() ? nullptr : found->second;
  }

 private:
  mutable std::mutex lock_;
  std::unordered_map<std::string, Shared<ItemCollection>> table_;
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
  const LockedTable table(app.key, app.kept);
  const auto hit = [&] { app.hit(); };
  const auto access = [&] { app.access(); };
  const auto theirs = [&] { keep(table.element(app.key)); };
  const std::string fetch = "hit of a fetch", store = "hit in the store itself",
                    peer = "a locked unordered_map";
  if (!underCallgrind()) {
    print(store, "ns", peer, compare(access, theirs), kNothing);
    print(fetch, "ns", peer, compare(hit, theirs), kNothing);
  }
  runUnderCallgrind(argv);
  const auto ofFetch = countsOfEach(hit), ofStore = countsOfEach(access),
             ofTable = countsOfEach(theirs);
  printCounts(store, "instructions", ofStore.instructions, peer, ofTable.instructions);
  printCounts(fetch, "instructions", ofFetch.instructions, peer, ofTable.instructions);
  printCounts(store, "allocations", ofStore.allocations, peer, ofTable.allocations, 0);
  printCounts(fetch, "allocations", ofFetch.allocations, peer, ofTable.allocations);
  if (app.delivered != static_cast<std::size_t>(kTimes + 1) * kItems) return 1;  // no hit
}
