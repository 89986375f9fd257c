#include <tests/Tool/Fixtures.h>

namespace orvo::tool {
namespace {

TEST(ShowCommand, FindsWhatHasTheIdentifier) {
  const DocumentService service;
  const auto show = [&](const std::string& words) {
    return runLine(replaced("orvo show " + words + " " + kOptions, kHost, service.base()));
  };
  EXPECT_TRUE(show("show").output.starts_with("Workbench"));
  EXPECT_NE(show("film").output.find("Artwork  landscape\n  " + service.base() +
                                     "/r/film/orvo_display_art_landscape/im:i:c_fill,w_640,"),
            std::string::npos);
  const auto json =
      JSONDataParser::object(Data(show("film --json --image-key coverSquare").output)).force();
  EXPECT_EQ(json.object("artwork")->string("key"), "coverSquare");
  EXPECT_TRUE(json.object("video").has_value());
  EXPECT_TRUE(show("mixed").output.starts_with("bare\tvideo\t"));
  EXPECT_TRUE(show("evening").output.starts_with("film\tvideo\t"));
  const std::size_t before = service.requests();
  EXPECT_EQ(show("nowhere").error,
            "orvo: fetchContentItem nowhere: the service answered with status 404 (there is no "
            "such thing)\n\"orvo views\" and \"orvo search\" show identifiers.\n");
  EXPECT_EQ(service.targets(before),
            " /v3/collections/nowhere /v3/playlists/nowhere /v3/products/nowhere "
            "/v3/session?os_family=tvos&category=smart_tv");
  EXPECT_NE(show("forbidden").error.find("status 403"), std::string::npos);
  const ToolRun run = show("film --image-key banner");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.error, "orvo: the item has no image banner; it has landscape, coverSquare\n");
}

}  // namespace
}  // namespace orvo::tool
