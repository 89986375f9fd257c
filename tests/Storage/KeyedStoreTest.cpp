#include <OrvoAPI/Storage/KeyedStore.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tests/support/Race.h>

#include <any>
#include <memory>

namespace orvo {
namespace {

using testing::MatchesRegex;
using testing::UnorderedElementsAre;

TEST(KeyedStore, MakesANewKeyForEachElement) {
  KeyedStore<std::string> store;
  const auto first = store.add("one");
  const auto second = store.add("two");
  EXPECT_THAT(first, MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-"
                                  "[0-9A-F]{12}"));
  EXPECT_NE(first, second);
  EXPECT_EQ(store.element(second), "two");
  EXPECT_THAT(store.elements(), UnorderedElementsAre("one", "two"));
}

TEST(KeyedStore, ReplacesAndRemovesByKey) {
  KeyedStore<std::any> store;
  store.add(1, "a");
  store.add(std::string("two"), "a");
  store.add(3, "b");
  EXPECT_EQ(std::any_cast<std::string>(*store.element("a")), "two");
  store.remove("unknown");
  EXPECT_EQ(store.elements().size(), 2U);
  store.remove("a");
  EXPECT_FALSE(store.element("a"));
  EXPECT_TRUE(store.element("b"));
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
