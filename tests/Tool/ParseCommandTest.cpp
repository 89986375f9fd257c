#include "RunTool.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

namespace orvo::tool {
namespace {

void expectAnswer(const std::string& kind, const std::string& body, const std::string& answer) {
  const ToolRun run = runTool(words("parse " + kind), body);
  EXPECT_EQ(run.output, answer + "\n");
  EXPECT_EQ(run.status, answer.starts_with(R"({"ok":)") ? 0 : 1) << answer;
}

TEST(ParseCommand, PrintsTheExactModelOfAVideo) {
  const ToolRun run = runTool({"parse", "video", "--playlist-id", ""}, R"({
      "id": "a", "title": "T", "short_description": "S", "content_type": "live_program",
      "duration": 90500, "playable": true, "share_url": "w/a",
      "deeplink_playlist": "d", "next_playlist": "n", "collections": [{"id": "c", "label": "C"}],
      "lineup": {"url": "http://l/", "display_type": "grid"},
      "resources": ["orvo_cover_art_square", "short_preview_mp4_low"],
      "status": {"code": "live", "label": "L", "ttl": 1500,
                 "start_time": "2017-05-01T10:00:00+0200"},
      "links": [{"type": "button", "id": "b", "label": "B", "action": "tv"}]})");
  EXPECT_EQ(run.output, R"({"ok":{"id":"a","title":"T","subheading":"","shortDescription":"S",)"
                        R"("kind":"liveProgram","duration":90.5,"playbackStatus":"available",)"
                        R"("collections":[{"id":"c","label":"C"}],)"
                        R"("lineupMeta":{"url":"http://l/","displayKind":"grid"},)"
                        R"("imageResources":{"coverSquare":{"key":"coverSquare","productID":"a"}},)"
                        R"("videoPreviews":{"low":{"key":"low","productID":"a"}},)"
                        R"("status":{"code":"live","label":"L","ttl":1.5,"message":null,)"
                        R"("startTime":"2017-05-01T08:00:00.000Z","endTime":null},)"
                        R"("appActions":[{"id":"b","label":"B","kind":"tv","icon":"space"}],)"
                        R"("playlistID":"","deepLinkPlaylistID":"d","nextPlaylistID":"n",)"
                        R"("shareURL":"w/a"}})"
                        "\n");
  EXPECT_EQ(run.status, 0);
}

TEST(ParseCommand, PassesOnWhatIsNotInTheDocument) {
  const std::string meta = R"("meta":{"total":1,"limit":1,"offset":0})";
  expectAnswer("search-results --query q",
               R"({"collections": [{"type": "generic", "collection_type": "top_results",
                   "label": "L", "short_label": "S", "items": [], )" +
                   meta + "}, {}]}",
               R"({"ok":[{"query":"q","label":"L","shortLabel":"S","kind":"generic",)"
               R"("contentsKind":"mixed","resultsKind":"top",)" +
                   meta + R"(,"items":[]}]})");
  expectAnswer("linear-program-guide --start 2017-05-01T00:00:00.000Z", "{" + meta + "}",
               R"({"ok":{"startDate":"2017-05-01T00:00:00.000Z",)"
               R"("endDate":"1970-01-01T00:00:00.000Z","items":[],)" +
                   meta + "}}");
}

TEST(ParseCommand, ReadsBareDatesWithOrWithoutALineEnd) {
  const std::string nine = R"({"ok":"2017-05-01T09:00:00.000Z"})";
  expectAnswer("event-date", "2017-05-01T10:00:00+01:00\n", nine);
  expectAnswer("iso8601-date", "2017-05-01T09:00:00Z\r\n", nine);
  expectAnswer("resource-date", "yesterday", R"({"ok":null})");
}

TEST(ParseCommand, PrintsEachErrorWithItsPayload) {
  expectAnswer("video", R"({"id": "a"})",
               R"({"error":{"kind":"unableToParse","type":"Video","key":"title"}})");
  expectAnswer("session", R"({"token": 5, "x": [1.50, null]})",
               R"({"error":{"kind":"unableToParse","type":"Session","key":null,)"
               R"("value":{"token":5,"x":[1.5,null]}}})");
  expectAnswer("event-date", "2017-05-01 10:00:00+01:00",
               R"({"error":{"kind":"stringDoesNotMatchFormat",)"
               R"("string":"2017-05-01 10:00:00+0100",)"
               R"("format":"yyyy-MM-dd'T'HH:mm:ss.SSSZ"}})");
  const ToolRun run = runTool({"parse", "page"}, "{\"id\": ");
  EXPECT_EQ(run.output.find(R"({"error":{"kind":"reader","message":")"), 0U);
  EXPECT_EQ(run.status, 1);
}

TEST(ParseCommand, KeepsConsoleLinesOutOfTheDocument) {
  const std::string path = testing::TempDir() + "orvo-included-video";
  std::ofstream(path) << R"({"id": "v", "title": "T", "short_description": "S"})";
  const ToolRun run = runTool({"parse", "playlist", "--include", path},
                              R"({"id": "p", "label": "L", "short_label": "S", "items": [],
                              "meta": {"total": 0, "limit": 1, "offset": 0}})");
  std::remove(path.c_str());
  EXPECT_EQ(run.output.find(R"({"ok":{"id":"p")"), 0U);
  EXPECT_NE(run.output.find(R"("items":[{"id":"v")"), std::string::npos);
  EXPECT_EQ(run.error, "Prepending video to playlist\n");
  EXPECT_EQ(runTool({"parse", "playlist", "--include", path}, "{}").status, 2);
}

}  // namespace
}  // namespace orvo::tool
