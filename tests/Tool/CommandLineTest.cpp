#include "RunTool.h"

#include <OrvoAPI/Version.h>
#include <gtest/gtest.h>
#include <tool/Text.h>

#include <sstream>

namespace orvo::tool {
namespace {

TEST(CommandLine, ThatIsWrongIsExplainedOnStandardErrorAlone) {
  std::istringstream lines(
      "\nnonsense\nvideo\nvideo a b\nvideo a --nonsense\nviews --environment Production\n"
      "views --client iphone\nviews --api ftp://example.com/v3/\n"
      "views --resources http://example.com/\n--demo --api http://example.com/ views\n"
      "collection a --limit 0\ncollection a --all --limit 5\nplaylist a --including v --all\n"
      "search a --kind top_results\nsearch a --limit 5\nguide --days 0\n"
      "guide --start 2017-05-01\nguide --end 2017-05-01T00:00:00.000Z --days 2\n"
      "lineup lineups/grid.json\nimage a landscape\nimage a nonsense --size 1x1\n"
      "parse nonsense\nmonitor --program-seconds 3\nserve-demo --port 65536\n");
  for (std::string wrong; std::getline(lines, wrong);) {
    const ToolRun run = runTool(words(wrong));
    EXPECT_EQ(run.status, 2) << wrong;
    EXPECT_EQ(run.output, "") << wrong;
    EXPECT_NE(run.error.find("Usage: orvo"), std::string::npos) << wrong << "\n" << run.error;
  }
  for (const char* size : {"1", "1x", "ax1", "nanx1", "1xinf", "1e300x1", "9.3e18x1", "1x-1e19"}) {
    EXPECT_EQ(runTool({"image", "a", "landscape", "--size", size}).status, 2) << size;
  }
}

TEST(CommandLine, OptionsStandOnEitherSide) {
  const auto image = [](const std::string& front, const std::string& options) {
    return runTool(words(front + " image a coverSquare --resources http://b/r " + options)).output;
  };
  const std::string trimmed = "http://b/r/a/orvo_cover_art_square/im:i:e_trim,w_100,f_png\n";
  EXPECT_EQ(image("--api http://a/v3/", "--size 100.7x0 --title"), trimmed);
  EXPECT_EQ(image("", "--size 0x5 --crop fit --format png --json --api http://a/v3/"),
            "\"http://b/r/a/orvo_cover_art_square/im:i:c_fit,h_5,f_png\"\n");
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
  EXPECT_EQ(bash("exec 3> >(exit); wait $!;"
                 " said=$($orvo image a square --size 1x1 2>&1 >&3) && [[ -z $said ]]"),
            0);
}

}  // namespace
}  // namespace orvo::tool
