#include "RunTool.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

namespace orvo::tool {
namespace {

struct Document {
  std::vector<std::string> kind;
  std::string body;
  std::string answer;
};

void expectAnswers(const std::vector<Document>& documents, int status) {
  for (const Document& document : documents) {
    std::vector<std::string> arguments = document.kind;
    arguments.insert(arguments.begin(), "parse");
    const ToolRun run = runTool(arguments, document.body);
    EXPECT_EQ(run.output, document.answer + "\n");
    EXPECT_EQ(run.status, status) << document.answer;
  }
}

TEST(ParseCommand, PrintsTheExactModelOfAVideo) {
  const ToolRun run = runTool({"parse", "video", "--playlist-id", ""}, R"({
      "id": "a", "title": "T", "short_description": "S", "content_type": "live_program",
      "duration": 90500, "playable": true, "collections": [{"id": "c", "label": "C"}],
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
                        R"("playlistID":"","deepLinkPlaylistID":null,"nextPlaylistID":null,)"
                        R"("shareURL":null}})"
                        "\n");
  EXPECT_EQ(run.status, 0);
}

TEST(ParseCommand, PrintsTheExactModelOfALineup) {
  const ToolRun run = runTool({"parse", "lineup"}, R"([{"start": "2017-05-01T10:20:00.000Z",
      "end": "2017-05-01T11:00:00.000Z", "title": "T",
      "channel": {"id": "c", "name": "C", "order": 3}, "images": {"icon": {"template": "t"}}},
      {"title": "no slot"}])");
  const std::string slot =
      R"({"start":"2017-05-01T10:20:00.000Z","end":"2017-05-01T11:00:00.000Z","title":"T",)"
      R"("imageResources":{"icon":{"template":"t"}},"channelID":"c","channelName":"C",)"
      R"("channelOrder":3})";
  EXPECT_EQ(run.output, R"({"ok":{"slots":[)" + slot +
                            R"(],"days":[{"startTime":"2017-05-01T00:00:00.000Z","hours":[)"
                            R"({"startTime":"2017-05-01T10:00:00.000Z","slots":[)" +
                            slot + "]}]}]}}\n");
}

TEST(ParseCommand, PassesOnWhatIsNotInTheDocument) {
  const std::string meta = R"("meta":{"total":1,"limit":1,"offset":0})";
  const std::string collection = R"({"type": "generic", "collection_type": "top_results",
      "label": "L", "short_label": "S", "items": [], )" +
                                 meta + "}";
  const std::string parsed =
      R"([{"query":"q","label":"L","shortLabel":"S","kind":"generic","contentsKind":"mixed",)"
      R"("resultsKind":"top",)" +
      meta + R"(,"items":[]}])";
  expectAnswers({{{"search-results", "--query", "q"},
                  R"({"collections": [)" + collection + ", {}]}",
                  R"({"ok":)" + parsed + "}"},
                 {{"linear-program-guide", "--start", "2017-05-01T00:00:00.000Z"},
                  "{" + meta + "}",
                  R"({"ok":{"startDate":"2017-05-01T00:00:00.000Z",)"
                  R"("endDate":"1970-01-01T00:00:00.000Z","items":[],)" +
                      meta + "}}"}},
                0);
}

TEST(ParseCommand, ReadsBareDatesWithOrWithoutALineEnd) {
  const std::string nine = R"({"ok":"2017-05-01T09:00:00.000Z"})";
  expectAnswers({{{"event-date"}, "2017-05-01T10:00:00+01:00\n", nine},
                 {{"iso8601-date"}, "2017-05-01T09:00:00Z\r\n", nine},
                 {{"resource-date"}, "2017-05-01T09:00:00.000Z", nine},
                 {{"resource-date"}, "yesterday", R"({"ok":null})"}},
                0);
}

TEST(ParseCommand, PrintsEachErrorWithItsPayload) {
  expectAnswers(
      {{{"video"},
        R"({"id": "a"})",
        R"({"error":{"kind":"unableToParse","type":"Video","key":"title"}})"},
       {{"session"},
        R"({"token": 5, "x": [1.50, null]})",
        R"({"error":{"kind":"unableToParse","type":"Session","key":null,)"
        R"("value":{"token":5,"x":[1.5,null]}}})"},
       {{"object"}, "[]", R"({"error":{"kind":"unexpectedType"}})"},
       {{"event-date"},
        "2017-05-01 10:00:00+01:00",
        R"({"error":{"kind":"stringDoesNotMatchFormat","string":"2017-05-01 10:00:00+0100",)"
        R"("format":"yyyy-MM-dd'T'HH:mm:ss.SSSZ"}})"}},
      1);
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
