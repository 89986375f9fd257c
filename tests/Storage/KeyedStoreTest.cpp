#include <OrvoAPI/Storage/KeyedStore.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tests/support/Race.h>

#include <memory>
#include <string>

namespace orvo {
namespace {

using testing::MatchesRegex;
using testing::UnorderedElementsAre;

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

/// Uses the store that it lies in when it is copied.
struct Busy {
  explicit Busy(KeyedStore<Busy>& itsStore) : store(&itsStore) {}
  Busy(const Busy& other) : store(other.store) { store->remove("unknown"); }
  Busy& operator=(const Busy&) = default;
  KeyedStore<Busy>* store;
};

TEST(KeyedStore, LetsItsElementsUseItAgain) {
  KeyedStore<Busy> busy;
  busy.add(Busy(busy), "a");
  EXPECT_TRUE(busy.element("a"));
  EXPECT_EQ(busy.elements().size(), 1U);

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
