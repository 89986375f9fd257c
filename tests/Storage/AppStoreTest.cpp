#include <OrvoAPI/Storage/AppStore.h>
#include <OrvoAPI/Testing/ManualClock.h>
#include <gtest/gtest.h>

#include <string>

namespace orvo {
namespace {

using namespace std::chrono_literals;

template <class T>
void put(Store<T>& store, T value, const std::string& key) {
  store.store(std::make_shared<const T>(std::move(value)), key);
}

void fill(AppStore& store, const std::string& key = "key") {
  put(store.systemViews, Page{}, key);
  put(store.collections, ItemCollection{}, key);
  put(store.playlists, Playlist{}, key);
  put(store.pages, Page{}, key);
  put(store.videos, Video{}, key);
  put(store.lineups, Lineup{}, key);
  put(store.items, ContentItem(Page{}), key);
  put(store.guide, LinearProgramGuide({}, {}, Date(), Date()), key);
}

int filled(AppStore& store) {
  const auto count = [](auto&... stores) { return ((stores.element("key") != nullptr) + ...); };
  return count(store.systemViews, store.collections, store.playlists, store.pages, store.videos,
               store.lineups, store.items, store.guide);
}

TEST(AppStore, ForgetsAllOnOneClockAndWhenItIsTold) {
  const auto clock = std::make_shared<ManualClock>();
  AppStore store(clock);
  EXPECT_EQ(filled(store), 0);
  fill(store);
  clock->advance(299'999ms);
  EXPECT_EQ(filled(store), 8);
  clock->advance(1ms);
  EXPECT_EQ(filled(store), 0);
  fill(store);
  store.removeAll();
  EXPECT_EQ(filled(store), 0);
}

TEST(AppStore, BoundsEachStore) {
  AppStore store;
  put(store.pages, Page{}, "key");
  EXPECT_EQ(filled(store), 1) << "system views are kept apart from pages";
  fill(store);
  for (int i = 0; i < 1000; ++i) fill(store, std::to_string(i));
  EXPECT_EQ(filled(store), 0);
}

}  // namespace
}  // namespace orvo
