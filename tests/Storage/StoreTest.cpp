#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/Queues/MainQueue.h>
#include <OrvoAPI/Queues/QueueLabels.h>
#include <OrvoAPI/Storage/AppStore.h>
#include <OrvoAPI/Storage/KeyedStore.h>
#include <OrvoAPI/Storage/Store.h>
#include <OrvoAPI/Testing/ManualClock.h>
#include <gmock/gmock.h>
#include <tests/support/Test.h>

namespace orvo {
namespace {

using testing::ElementsAre;
using testing::MatchesRegex;
using testing::UnorderedElementsAre;

struct Element {
  int number = 0;
  double seconds = DefaultCacheableTTL;
  [[nodiscard]] double ttl() const { return seconds; }
};

Shared<Element> element(int number, double seconds = DefaultCacheableTTL) {
  return std::make_shared<const Element>(Element{number, seconds});
}

class StoreTest : public testing::Test {
 protected:
  /// The number of the element under the key, 0 when there is none.
  int numberUnder(std::string_view key) {
    const auto found = store.element(key);
    return found ? found->number : 0;
  }

  std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
  Store<Element> store{2, clock};
};

TEST_F(StoreTest, ForgetsAnElementExactlyAfterItsTimeToLiveWhateverTheWallClockSays) {
  store.store(element(1, 10), "a");
  clock->advance(9s);
  store.store(element(2, 300), "a");
  clock->setWall(Date(0));
  clock->advance(299'999ms);
  EXPECT_EQ(numberUnder("a"), 2);
  clock->setWall(Date(4'000'000'000'000));
  EXPECT_EQ(numberUnder("a"), 2);
  clock->advance(1ms);
  EXPECT_EQ(numberUnder("a"), 0);
}

TEST_F(StoreTest, TakesAnyTimeToLive) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const double seconds :
       {0.0, -1.0, -kInfinity, std::numeric_limits<double>::quiet_NaN(), 1e-320}) {
    store.store(element(1, seconds), "a");
    if (seconds > 0) clock->advance(1ms);
    EXPECT_EQ(numberUnder("a"), 0) << seconds;
  }
  for (const double seconds : {kInfinity, std::numeric_limits<double>::max(), 1e15}) {
    store.store(element(1, seconds), "a");
    clock->advance(24h * 365 * 1000);
    EXPECT_EQ(numberUnder("a"), 1) << seconds;
  }
}

TEST_F(StoreTest, CountsMillisecondsExactly) {
  for (int milliseconds = 1; milliseconds < 10'000; milliseconds += 7) {
    store.store(element(1, milliseconds / 1000.0), "a");
    clock->advance(std::chrono::milliseconds(milliseconds - 1));
    ASSERT_EQ(numberUnder("a"), 1) << milliseconds;
    clock->advance(1ms);
    ASSERT_EQ(numberUnder("a"), 0) << milliseconds;
  }
}

TEST_F(StoreTest, DropsWhatWasUsedLeastRecently) {
  store.store(element(1), "a");
  store.store(element(2), "b");
  EXPECT_EQ(numberUnder("a"), 1);
  store.store(element(3), "c");
  EXPECT_EQ(numberUnder("b"), 0);
  EXPECT_EQ(numberUnder("a"), 1);
  store.store(element(4), "c");
  EXPECT_EQ(numberUnder("a"), 1);
  EXPECT_EQ(numberUnder("c"), 4);
}

TEST_F(StoreTest, LetsADestructorUseItAgain) {
  int destroyed = 0;
  const auto element = [&] {
    return Shared<Element>(new Element, [&](const Element* gone) {
      destroyed += store.element("b") == nullptr;
      delete gone;
    });
  };
  store.store(element(), "a");
  store.store(element(), "a");
  store.removeAll();
  store.store(element(), "a");
  store.store(nullptr, "a");
  clock->advance(1h);
  EXPECT_EQ(numberUnder("a"), 0);
  EXPECT_EQ(destroyed, 3);
}

TEST_F(StoreTest, AccessAnswersAHitFromTheMainQueue) {
  auto main = MainQueue::shared()->claim();
  ASSERT_TRUE(main);
  const auto stored = element(1);
  store.store(stored, "a");
  const auto future = store.access("a", []() -> Future<Shared<Element>> {
    ADD_FAILURE() << "asked for what was there";
    return {};
  });
  EXPECT_FALSE(future.didComplete());
  main->drain();
  ASSERT_TRUE(future.didSucceed());
  EXPECT_EQ(*future.value(), stored);
}

/// Says what was in the store when a callback was posted to it.
class ProbeQueue final : public DispatchQueue {
 public:
  explicit ProbeQueue(std::function<int()> probe) : probe_(std::move(probe)) {}
  void post(Job) override { seen.push_back(probe_()); }
  std::vector<int> seen;

 private:
  std::function<int()> probe_;
};

TEST_F(StoreTest, AccessStoresBeforeAnyLaterCallbackIsPosted) {
  const Promise<Shared<Element>> promise;
  const auto probe = std::make_shared<ProbeQueue>([&] { return numberUnder("a"); });
  promise.future().onComplete(probe, [](const auto&) {});
  int asked = 0;
  const auto fallback = [&] {
    ++asked;
    return promise.future();
  };
  const auto future = store.access("a", fallback);
  future.onComplete(probe, [](const auto&) {});
  EXPECT_EQ(numberUnder("a"), 0);

  promise.success(element(7));
  EXPECT_EQ(probe->seen, (std::vector{0, 7}));
  EXPECT_EQ(*future.value(), *promise.future().value());
  (void)store.access("a", fallback);
  EXPECT_EQ(asked, 1);
}

TEST_F(StoreTest, AccessStoresNoFailureAndNoCancelledValue) {
  const Promise<Shared<Element>> failing;
  const Promise<Shared<Element>> cancelled;
  (void)store.access("a", [&] { return failing.future(); });
  store.access("a", [&] { return cancelled.future(); }).cancel();
  failing.failure(GeneralError::elementNotFound{});
  cancelled.success(element(1));
  EXPECT_EQ(numberUnder("a"), 0);
}

TEST(StoreLifetime, AccessDoesNotKeepTheStore) {
  const Promise<Shared<Element>> promise;
  auto store = std::make_unique<Store<Element>>(std::size_t{2});
  auto kept = element(1);
  const std::weak_ptr watched = kept;
  store->store(std::move(kept), "kept");
  (void)store->access("a", [&] { return promise.future(); });
  store.reset();
  EXPECT_TRUE(watched.expired());
  promise.success(element(2));
  EXPECT_EQ(promise.future().value()->use_count(), 1);
}

TEST(StoreThreads, WriteReadAndEmptyAtOnce) {
  Store<Element> store(8);
  std::atomic<int> hits = 0;
  test::race(
      500, [](int) {},
      [&](int racer, int round) {
        const auto key = std::to_string((round * 7 + racer) % 12);
        store.store(element(round + 1), key);
        if (const auto found = store.element(key)) hits += found->number > 0;
        if (round % 100 == 99) store.removeAll();
      });
  EXPECT_GT(hits, 0);
}

/// Calls `visit` with each store and a value of its kind.
template <class Visit>
void visitStores(AppStore& store, Visit visit) {
  visit(store.systemViews, Page{});
  visit(store.collections, ItemCollection{});
  visit(store.playlists, Playlist{});
  visit(store.pages, Page{});
  visit(store.videos, Video{});
  visit(store.lineups, Lineup{});
  visit(store.items, ContentItem(Page{}));
  visit(store.guide, LinearProgramGuide({}, {}, Date(), Date()));
}

void fill(AppStore& store, int count) {
  visitStores(store, [&](auto& one, const auto& value) {
    using Value = std::decay_t<decltype(value)>;
    for (int i = 0; i < count; ++i)
      one.store(std::make_shared<const Value>(value), std::to_string(i));
  });
}

/// How many of the elements that were put into them the stores hold.
std::vector<int> held(AppStore& store) {
  std::vector<int> held;
  visitStores(store, [&](auto& one, const auto&) {
    held.push_back(0);
    for (int i = 0; i < 300; ++i) held.back() += one.element(std::to_string(i)) != nullptr;
  });
  return held;
}

TEST(AppStore, BoundsItsStoresAndForgetsAllOnOneClockAndWhenItIsTold) {
  const auto clock = std::make_shared<ManualClock>();
  AppStore store(clock);
  store.pages.store(std::make_shared<const Page>(), "0");
  EXPECT_THAT(held(store), ElementsAre(0, 0, 0, 1, 0, 0, 0, 0)) << "pages are no system views";
  EXPECT_EQ(store.pages.accessQueueLabel(), std::string(ServiceDomainPrefix) + ".store.Page");
  fill(store, 1);
  clock->advance(299'999ms);
  EXPECT_THAT(held(store), testing::Each(1));
  clock->advance(1ms);
  EXPECT_THAT(held(store), testing::Each(0));
  fill(store, 300);
  EXPECT_THAT(held(store), ElementsAre(16, 32, 32, 64, 256, 8, 256, 16));
  store.removeAll();
  EXPECT_THAT(held(store), testing::Each(0));
}

TEST(KeyedStore, MakesKeysReplacesAndRemoves) {
  KeyedStore<std::string> store;
  const auto first = store.add("one");
  EXPECT_THAT(first, MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-"
                                  "[0-9A-F]{12}"));
  EXPECT_NE(first, store.add("two"));
  store.add("three", first);
  store.remove("unknown");
  EXPECT_THAT(store.elements(), UnorderedElementsAre("three", "two"));
  store.remove(first);
  EXPECT_FALSE(store.element(first));
}

TEST(KeyedStore, LetsADestructorUseItAgain) {
  KeyedStore<std::shared_ptr<int>> store;
  bool sawItself = true;
  store.add(std::shared_ptr<int>(new int,
                                 [&](const int* gone) {
                                   sawItself = store.element("a").has_value();
                                   delete gone;
                                 }),
            "a");
  store.remove("a");
  EXPECT_FALSE(sawItself);
}

TEST(KeyedStore, IsWrittenAndReadByManyThreads) {
  KeyedStore<int> store;
  test::race(
      200, [](int) {},
      [&](int racer, int round) {
        const auto key = store.add(round);
        store.add(round, "shared");
        (void)store.elements();
        if (round % test::kRacers != racer) store.remove(key);
      });
  EXPECT_EQ(store.elements().size(), 201U);
}

}  // namespace
}  // namespace orvo
