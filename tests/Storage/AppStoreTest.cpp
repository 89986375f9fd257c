#include <OrvoAPI/Storage/AppStore.h>
#include <OrvoAPI/Testing/ManualClock.h>
#include <gtest/gtest.h>

#include <string>

namespace orvo {
namespace {

using namespace std::chrono_literals;

template <class T>
Shared<T> shared(T value) {
  return std::make_shared<const T>(std::move(value));
}

void fill(AppStore& store) {
  store.systemViews.store(shared(Page{}), "key");
  store.collections.store(shared(ItemCollection{}), "key");
  store.playlists.store(shared(Playlist{}), "key");
  store.pages.store(shared(Page{}), "key");
  store.videos.store(shared(Video{}), "key");
  store.lineups.store(shared(Lineup{}), "key");
  store.items.store(shared(ContentItem(Page{})), "key");
  store.guide.store(shared(LinearProgramGuide({}, {}, Date(), Date())), "key");
}

int filled(AppStore& store) {
  return (store.systemViews.element("key") != nullptr) +
         (store.collections.element("key") != nullptr) +
         (store.playlists.element("key") != nullptr) + (store.pages.element("key") != nullptr) +
         (store.videos.element("key") != nullptr) + (store.lineups.element("key") != nullptr) +
         (store.items.element("key") != nullptr) + (store.guide.element("key") != nullptr);
}

TEST(AppStore, BeginsEmptyAndForgetsAllOnOneClock) {
  const auto clock = std::make_shared<ManualClock>();
  AppStore store(clock);
  EXPECT_EQ(filled(store), 0);
  fill(store);
  EXPECT_EQ(filled(store), 8);
  clock->advance(299'999ms);
  EXPECT_EQ(filled(store), 8);
  clock->advance(1ms);
  EXPECT_EQ(filled(store), 0);
}

TEST(AppStore, CanBeEmptied) {
  AppStore store;
  fill(store);
  store.removeAll();
  EXPECT_EQ(filled(store), 0);
}

TEST(AppStore, KeepsSystemViewsApartFromPages) {
  AppStore store;
  store.pages.store(shared(Page{}), "key");
  EXPECT_EQ(filled(store), 1);
  EXPECT_EQ(store.systemViews.element("key"), nullptr);
}

TEST(AppStore, BoundsEachStore) {
  AppStore store;
  fill(store);
  for (int i = 0; i < 1000; ++i) {
    const auto key = std::to_string(i);
    store.systemViews.store(shared(Page{}), key);
    store.collections.store(shared(ItemCollection{}), key);
    store.playlists.store(shared(Playlist{}), key);
    store.pages.store(shared(Page{}), key);
    store.videos.store(shared(Video{}), key);
    store.lineups.store(shared(Lineup{}), key);
    store.items.store(shared(ContentItem(Page{})), key);
    store.guide.store(shared(LinearProgramGuide({}, {}, Date(), Date())), key);
  }
  EXPECT_EQ(filled(store), 0);
}

}  // namespace
}  // namespace orvo
