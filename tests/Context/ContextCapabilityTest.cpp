#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "tests/Context/StubbedContext.h"

namespace orvo {
namespace {

TEST(ContextCapability, SendsTheRequestOfItsFetchWhenItIsCalled) {
  StubbedContext stubbed;
  const auto& context = *stubbed.context;
  std::size_t sent = 0;
  const auto requestOf = [&](const auto& capability) {
    EXPECT_EQ(stubbed.requests(), sent++);
    (void)capability();
    return stubbed.requested();
  };
  EXPECT_EQ(requestOf(context.pageFetchCapability("a")), "products/a");
  EXPECT_EQ(requestOf(context.videoFetchCapability("a")), "products/a");
  EXPECT_EQ(requestOf(context.contentItemCapability("a")), "products/a");
  EXPECT_EQ(requestOf(context.collectionCapability("a")), "collections/a");
  EXPECT_EQ(requestOf(context.collectionFetchCapabilities({"a", "b"})[1]), "collections/b");
  EXPECT_EQ(requestOf(context.playlistCapability("a")), "playlists/a");
  EXPECT_EQ(requestOf(context.searchCapability("a")), "search?q=a");
  EXPECT_EQ(requestOf(context.searchCapability("a", SearchCollection::ResultsKind::shows)),
            "search?q=a&collection_type=shows");
  EXPECT_EQ(requestOf(context.searchSuggestionsCapability("a")), "search/suggest?q=a");
  EXPECT_EQ(requestOf(context.lineupCapability({.url = url("https://api.example/v3/l")})), "l");
  EXPECT_EQ(requestOf(context.linearProgramGuideCapability(Date(0), Date(0))),
            "epg?start_time=1970-01-01T00:00:00.000Z&end_time=1970-01-01T00:00:00.000Z");
  EXPECT_EQ(requestOf(context.videoAdMetadataCapability("a")), "live/a/token/playlist.json?q=1");
}

TEST(ContextCapabilityDeathTest, AnOffsetBeyond64BitsStopsTheProcess) {
  StubbedContext stubbed;
  Playlist playlist{.id = "p", .label = ""};
  playlist.meta = {.total = 1, .limit = 1, .offset = std::numeric_limits<std::int64_t>::max()};
  EXPECT_DEATH((void)stubbed.context->nextFetchCapability(playlist), "beyond 64 bits");
}

TEST(ContextCapability, AVideoLeadsToItsPlaylist) {
  StubbedContext stubbed;
  const auto& context = *stubbed.context;
  Video video{.id = "v", .title = "T", .shortDescription = "S"};
  const auto alone = context.playlistCapability(video)().wait(kPatience).force();
  EXPECT_EQ(stubbed.requests(), 0U);
  EXPECT_EQ(alone->id + alone->label + alone->shortLabel, "TT");
  EXPECT_EQ(alone->meta, (PagingMeta{.total = 1, .limit = 1, .offset = 0}));
  EXPECT_EQ(alone->items, std::vector{video});

  video.deepLinkPlaylistID = "deep";
  (void)context.playlistCapability(video)();
  EXPECT_EQ(stubbed.requested(), "playlists/deep?includes=v");
  video.playlistID = "own";
  (void)context.playlistCapability(video)();
  EXPECT_EQ(stubbed.requested(), "playlists/own?includes=v");

  EXPECT_FALSE(context.nextPlaylistCapability(video));
  video.nextPlaylistID = "next";
  (void)(*context.nextPlaylistCapability(video))();
  EXPECT_EQ(stubbed.requested(), "playlists/next");
}

TEST(ContextCapability, AVideosIdentifierLeadsToThePlaylistOfTheFetchedVideo) {
  StubbedContext stubbed{.callbackQueue = DispatchQueue::global()};
  const auto playlist = stubbed.context->playlistCapability("v", "list")();
  ASSERT_TRUE(stubbed.network->fetches.waitForCount(1));
  stubbed.answer(200, kVideoBody);
  ASSERT_TRUE(stubbed.network->fetches.waitForCount(2));
  EXPECT_EQ(stubbed.requested(), "playlists/list?includes=v");
  stubbed.answer(200, R"({"id": "list", "label": "L", "short_label": "L",
                          "meta": {"total": 0, "limit": 0, "offset": 0}, "items": []})");
  EXPECT_EQ(playlist.wait(kPatience).force()->items.front().playlistID, "list");
}

TEST(ContextCapability, TheConfigurationsListsComeWithTheirFetch) {
  StubbedContext stubbed;
  const auto views = stubbed.context->systemViews();
  ASSERT_EQ(views.size(), 2U);
  EXPECT_EQ(views[0].name + views[0].label + views[0].id, "discoverDiscoverd");
  EXPECT_EQ(views[1].name, "channels");
  const auto page = views[1].fetch();
  EXPECT_EQ(stubbed.requested(), "products/c");
  stubbed.answer(200, kPageBody);
  EXPECT_EQ(page.wait(kPatience).force()->title, "Channels");

  const auto events = stubbed.context->upcomingEventsCapability();
  EXPECT_EQ(events.label, "Soon");
  (void)events.fetch();
  EXPECT_EQ(stubbed.requested(), "playlists/playlists::soon") << "the identifier unchanged";
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

}  // namespace
}  // namespace orvo
