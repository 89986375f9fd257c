#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "tests/Context/StubbedContext.h"

namespace orvo {
namespace {

std::string requested(StubbedContext& stubbed) {
  const auto count = stubbed.requests();
  const auto text = stubbed.network->request(count - 1).url.text();
  return text.substr(std::string("https://api.example/v3/").size());
}

TEST(ContextCapability, ANextPageIsThereUntilTheListEnds) {
  StubbedContext stubbed;
  ItemCollection collection{.id = "c", .label = "", .shortLabel = ""};
  collection.meta = {.total = 30, .limit = 10, .offset = 10};
  (void)(*stubbed.context->nextFetchCapability(collection))();
  EXPECT_EQ(requested(stubbed), "collections/c?offset=20&limit=10");
  collection.meta.offset = 20;
  EXPECT_FALSE(stubbed.context->nextFetchCapability(collection));

  const SearchCollection search{.query = "q",
                                .resultsKind = SearchCollection::ResultsKind::top,
                                .meta = {.total = 2, .limit = 1, .offset = 0}};
  (void)(*stubbed.context->nextFetchCapability(search))();
  EXPECT_EQ(requested(stubbed), "search?q=q&collection_type=top_results&offset=1&limit=1");

  const LinearProgramGuide guide({}, {.total = 11, .limit = 10, .offset = 0}, Date(0), Date(1000));
  (void)(*stubbed.context->nextCapability(guide))();
  EXPECT_EQ(requested(stubbed),
            "epg?start_time=1970-01-01T00:00:00.000Z&end_time=1970-01-01T00:00:01.000Z"
            "&offset=10&limit=10");
}

TEST(ContextCapabilityDeathTest, AnOffsetBeyond64BitsStopsTheProcess) {
  StubbedContext stubbed;
  Playlist playlist{.id = "p", .label = ""};
  playlist.meta = {.total = 1, .limit = 1, .offset = std::numeric_limits<std::int64_t>::max()};
  EXPECT_DEATH((void)stubbed.context->nextFetchCapability(playlist), "beyond 64 bits");
}

TEST(ContextCapability, AVideoLeadsToItsPlaylist) {
  StubbedContext stubbed;
  Video video{.id = "v", .title = "T", .shortDescription = "S"};
  const auto alone = stubbed.context->playlistCapability(video)().wait(kPatience).force();
  EXPECT_EQ(stubbed.requests(), 0U);
  EXPECT_EQ(alone->id + alone->label + alone->shortLabel, "TT");
  EXPECT_EQ(alone->meta, (PagingMeta{.total = 1, .limit = 1, .offset = 0}));
  EXPECT_EQ(alone->items, std::vector{video});

  video.deepLinkPlaylistID = "deep";
  (void)stubbed.context->playlistCapability(video)();
  EXPECT_EQ(requested(stubbed), "playlists/deep?includes=v");
  video.playlistID = "own";
  (void)stubbed.context->playlistCapability(video)();
  EXPECT_EQ(requested(stubbed), "playlists/own?includes=v");

  EXPECT_FALSE(stubbed.context->nextPlaylistCapability(video));
  video.nextPlaylistID = "next";
  (void)(*stubbed.context->nextPlaylistCapability(video))();
  EXPECT_EQ(requested(stubbed), "playlists/next");
}

TEST(ContextCapability, AVideosIdentifierLeadsToThePlaylistOfTheFetchedVideo) {
  StubbedContext stubbed{.callbackQueue = DispatchQueue::global()};
  const auto playlist = stubbed.context->playlistCapability("v", "list")();
  ASSERT_TRUE(stubbed.network->fetches.waitForCount(1));
  stubbed.answer(200, kVideoBody);
  ASSERT_TRUE(stubbed.network->fetches.waitForCount(2));
  EXPECT_EQ(requested(stubbed), "playlists/list?includes=v");
  stubbed.answer(200, R"({"id": "list", "label": "L", "short_label": "L",
                          "meta": {"total": 0, "limit": 0, "offset": 0}, "items": []})");
  EXPECT_EQ(playlist.wait(kPatience).force()->items.front().playlistID, "list");
}

TEST(ContextCapability, SystemViewsComeInTheirFixedOrderWithTheirFetch) {
  StubbedContext stubbed;
  const auto views = stubbed.context->systemViews();
  ASSERT_EQ(views.size(), 2U);
  EXPECT_EQ(views[0].name, "discover");
  EXPECT_EQ(views[1].label, "Channels");
  const auto page = views[1].fetch();
  EXPECT_EQ(requested(stubbed), "products/c");
  stubbed.answer(200, kPageBody);
  EXPECT_EQ(page.wait(kPatience).force()->title, "Channels");
}

TEST(ContextCapability, UpcomingEventsKeepTheirIdentifierUnchanged) {
  StubbedContext stubbed;
  const auto events = stubbed.context->upcomingEventsCapability();
  EXPECT_EQ(events.label, "Soon");
  (void)events.fetch();
  EXPECT_EQ(requested(stubbed), "playlists/playlists::soon");
}

TEST(Context, BuildsStreamAddressesWithTheCurrentToken) {
  StubbedContext stubbed;
  EXPECT_EQ(stubbed.context->videoURL("v").text(),
            "https://hls.example/live/v/token/playlist.m3u8?q=1");
  stubbed.session->setToken("t/2 ");
  // A path cannot hold a space; an identifier from the network must not stop the process.
  EXPECT_EQ(stubbed.context->videoURL("a b").text(),
            "https://hls.example/live/a%20b/t/2%20/playlist.m3u8?q=1");
}

TEST(Context, KeepsAnyValueOfTheApps) {
  StubbedContext stubbed;
  stubbed.context->appValues().add(std::any(std::string("x")), "key");
  EXPECT_EQ(std::any_cast<std::string>(*stubbed.context->appValues().element("key")), "x");
}

}  // namespace
}  // namespace orvo
