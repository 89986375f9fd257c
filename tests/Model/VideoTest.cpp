#include <OrvoAPI/Model/Video.h>
#include <gtest/gtest.h>

#include "tests/support/Document.h"

namespace orvo {
namespace {

const Document kVideo{{"id", R"("a")"}, {"title", R"("T")"}, {"short_description", R"("S")"}};

Video videoWith(std::string_view key, std::string_view json) {
  return VideoParser::parse(kVideo.with(key, json)).force();
}

TEST(VideoParser, RequiresThreeTextsAndHasADefaultForTheRest) {
  const auto parse = [](const JSONObject& json) { return VideoParser::parse(json); };
  expectRequired("Video", kVideo, {"id", "title", "short_description"}, parse);
  Document damaged = kVideo;
  for (const char* key :
       {"content_type", "subheading", "duration", "playable", "deeplink_playlist", "next_playlist",
        "collections", "lineup", "share_url", "resources", "status", "links"}) {
    damaged = damaged.with(key, R"([7, "button"])");
  }
  for (const Document& document : {kVideo, damaged}) {
    const Video video = parse(document).force();
    EXPECT_EQ(video.kind, Video::ContentKind::generic);
    EXPECT_EQ(video.playbackStatus, Video::PlaybackStatus::unavailable);
    EXPECT_TRUE(video.subheading.empty() && video.collections.empty() && video.appActions.empty());
    EXPECT_TRUE(video.imageResources.empty() && video.videoPreviews.empty());
    EXPECT_EQ(video.status.label, "TBD");
    EXPECT_FALSE(video.playlistID || video.deepLinkPlaylistID || video.nextPlaylistID);
    EXPECT_FALSE(video.duration || video.lineupMeta || video.shareURL);
  }
}

TEST(VideoParser, TakesOptionalMembersLiterallyOrNotAtAll) {
  for (const char* playable : {R"("true")", "1", "false"}) {
    EXPECT_EQ(videoWith("playable", playable).playbackStatus, Video::PlaybackStatus::unavailable);
  }
  EXPECT_EQ(videoWith("duration", "0").duration, 0.0);
  for (const char* url : {R"("")", R"("http://a b")", R"("%zz")"}) {
    EXPECT_EQ(videoWith("share_url", url).shareURL, std::nullopt) << url;
  }
  EXPECT_EQ(videoWith("share_url", R"("watch/a")").shareURL->text(), "watch/a");
  EXPECT_TRUE(videoWith("resources", R"(["orvo_logo_landscape", 1])").imageResources.empty());
}

TEST(VideoParser, KeepsTheCollectionsThatHaveIdAndLabel) {
  const std::vector<CollectionReference> expected{{"1", "one"}, {"3", "three"}};
  const char* entries =
      R"([{"id": "1", "label": "one"}, {"id": "2"}, {"label": "x"}, {"label": "three", "id": "3"}])";
  EXPECT_EQ(videoWith("collections", entries).collections, expected);
  EXPECT_TRUE(videoWith("collections", R"([{"id": "1", "label": "one"}, 5])").collections.empty());
}

TEST(VideoParser, PointsToALineupOnlyWithAddressAndKind) {
  const LineupReference expected{.url = URL::parse("https://l.example/x").value(),
                                 .displayKind = LineupDisplayKind::lineup};
  const Document lineup{{"url", R"("https://l.example/x")"}, {"display_type", R"("lineup")"}};
  EXPECT_EQ(videoWith("lineup", lineup.text()).lineupMeta, expected);
  for (const Document& broken :
       {lineup.without("url"), lineup.without("display_type"), lineup.with("url", R"("a b")"),
        lineup.with("display_type", R"("Grid")")}) {
    EXPECT_EQ(videoWith("lineup", broken.text()).lineupMeta, std::nullopt) << broken.text();
  }
}

TEST(Video, IsEqualByTextsAndDuration) {
  const Video video{.id = "a", .title = "T", .subheading = "U", .shortDescription = "S"};
  Video other = video;
  other.status.code = StatusCode::live;
  EXPECT_EQ(video, other);
  for (auto field : {&Video::id, &Video::title, &Video::subheading, &Video::shortDescription}) {
    other = video;
    other.*field = "x";
    EXPECT_NE(video, other);
  }
  other = video;
  other.duration = 0;
  EXPECT_NE(video, other);
}

}  // namespace
}  // namespace orvo
