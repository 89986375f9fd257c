#include "RunTool.h"

#include <OrvoAPI/Version.h>
#include <gtest/gtest.h>
#include <tool/Text.h>

#include <sstream>

namespace orvo::tool {
namespace {

TEST(CommandLine, ThatIsWrongIsExplainedOnStandardErrorAlone) {
  for (const char* wrong : {"",
                            "nonsense",
                            "video",
                            "video a b",
                            "video a --nonsense",
                            "views --environment Production",
                            "views --client iphone",
                            "views --api ftp://example.com/v3/",
                            "views --resources http://example.com/",
                            "--demo --api http://example.com/ views",
                            "collection a --limit 0",
                            "collection a --all --limit 5",
                            "playlist a --including v --all",
                            "search a --kind top_results",
                            "search a --limit 5",
                            "guide --days 0",
                            "guide --start 2017-05-01",
                            "guide --end 2017-05-01T00:00:00.000Z --days 2",
                            "lineup lineups/grid.json",
                            "image a landscape",
                            "image a nonsense --size 1x1",
                            "parse nonsense",
                            "serve-demo --port 65536"}) {
    const ToolRun run = runTool(words(wrong));
    EXPECT_EQ(run.status, 2) << wrong;
    EXPECT_EQ(run.output, "") << wrong;
    EXPECT_NE(run.error.find("Usage: orvo"), std::string::npos) << wrong << "\n" << run.error;
  }
}

TEST(CommandLine, SizesThatAreNoNumberOfPixelsAreRefused) {
  for (const char* size : {"1", "1x", "ax1", "nanx1", "1xinf", "1e300x1", "9.3e18x1", "1x-1e19"}) {
    EXPECT_EQ(runTool({"image", "a", "landscape", "--size", size}).status, 2) << size;
  }
}

TEST(CommandLine, GlobalOptionsStandOnEitherSide) {
  const std::string command = "image a landscape --size 3x2";
  const std::string options = "--json --api http://a/v3/ --resources http://b/r";
  const ToolRun run = runTool(words(options + " " + command));
  EXPECT_EQ(run.output,
            "\"http://b/r/a/orvo_display_art_landscape/im:i:c_fill,w_3,h_2,f_jpg,q_65\"\n");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(runTool(words(command + " " + options)).output, run.output);
}

TEST(CommandLine, ImageAddressesFollowTheirOptions) {
  const auto image = [](const std::string& options) {
    const std::string output = runTool(words("image video coverSquare " + options)).output;
    return output.substr(output.find("/video/"));
  };
  EXPECT_EQ(image("--size 100.7x0 --title"),
            "/video/orvo_cover_art_square/im:i:e_trim,w_100,f_png\n");
  EXPECT_EQ(image("--size 0x5 --crop fit --format png"),
            "/video/orvo_cover_art_square/im:i:c_fit,h_5,f_png\n");
}

TEST(CommandLine, HelpAndVersionAreAnswers) {
  const ToolRun version = runTool({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.output, "orvo " ORVO_API_VERSION_STRING "\n");
  for (const char* arguments : {"--help", "video --help", "--json parse -h"}) {
    const ToolRun help = runTool(words(arguments));
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.output.find("Usage: orvo"), std::string::npos);
    EXPECT_EQ(help.error, "");
    std::istringstream lines(help.output);
    for (std::string line; std::getline(lines, line);) EXPECT_LE(displayWidth(line), 80U) << line;
  }
}

TEST(CommandLine, ReaderThatHasGoneAwayEndsTheToolQuietly) {
  const ToolRun run = runToolUnread({"image", "a", "square", "--size", "1x1"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.error, "");
}

}  // namespace
}  // namespace orvo::tool
