#include "RunTool.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace orvo::tool {
namespace {

TEST(CommandLine, ThatIsWrongIsExplainedOnStandardErrorAlone) {
  const std::vector<std::vector<std::string>> wrong{
      {},
      {"nonsense"},
      {"video"},
      {"video", "a", "b"},
      {"video", "a", "--nonsense"},
      {"views", "--environment", "Production"},
      {"views", "--client", "iphone"},
      {"views", "--api", "example.com/v3/"},
      {"views", "--api", "ftp://example.com/v3/"},
      {"views", "--resources", "http://example.com/"},
      {"--demo", "--api", "http://example.com/", "views"},
      {"collection", "a", "--limit", "-1"},
      {"collection", "a", "--limit", "0"},
      {"collection", "a", "--all", "--limit", "5"},
      {"playlist", "a", "--including", "v", "--all"},
      {"search", "a", "--kind", "top_results"},
      {"search", "a", "--limit", "5"},
      {"guide", "--days", "0"},
      {"guide", "--start", "2017-05-01"},
      {"guide", "--end", "2017-05-01T00:00:00.000Z", "--days", "2"},
      {"lineup", "lineups/grid.json"},
      {"image", "a", "landscape"},
      {"image", "a", "nonsense", "--size", "1x1"},
      {"parse", "nonsense"},
      {"serve-demo", "--port", "65536"}};
  for (const auto& arguments : wrong) {
    const ToolRun run = runTool(arguments);
    const std::string last = arguments.empty() ? "nothing" : arguments.back();
    EXPECT_EQ(run.status, 2) << last;
    EXPECT_EQ(run.output, "") << last;
    EXPECT_NE(run.error.find("Usage: orvo"), std::string::npos) << last << "\n" << run.error;
  }
}

TEST(CommandLine, SizesThatAreNoNumberOfPixelsAreRefused) {
  for (const char* size : {"1", "1x", "ax1", "nanx1", "1xinf", "1e300x1", "9.3e18x1", "1x-1e19"}) {
    EXPECT_EQ(runTool({"image", "a", "landscape", "--size", size}).status, 2) << size;
  }
}

TEST(CommandLine, GlobalOptionsStandOnEitherSide) {
  const std::vector<std::string> command{"image", "a", "landscape", "--size", "3x2"};
  std::vector<std::string> before{"--json", "--api", "http://a/v3/", "--resources", "http://b/r"};
  std::vector<std::string> after = command;
  after.insert(after.end(), before.begin(), before.end());
  before.insert(before.end(), command.begin(), command.end());
  const ToolRun run = runTool(before);
  EXPECT_EQ(run.output,
            "\"http://b/r/a/orvo_display_art_landscape/im:i:c_fill,w_3,h_2,f_jpg,q_65\"\n");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(runTool(after).output, run.output);
}

TEST(CommandLine, ImageAddressesFollowTheirOptions) {
  const auto image = [](std::vector<std::string> options) {
    options.insert(options.begin(), {"image", "a", "coverSquare", "--resources", "http://b/",
                                     "--api", "http://a/v3/"});
    return runTool(options).output;
  };
  EXPECT_EQ(image({"--size", "100.7x0", "--title"}),
            "http://b/a/orvo_cover_art_square/im:i:e_trim,w_100,f_png\n");
  EXPECT_EQ(image({"--size", "0x5", "--crop", "fit", "--format", "png"}),
            "http://b/a/orvo_cover_art_square/im:i:c_fit,h_5,f_png\n");
}

TEST(CommandLine, HelpAndVersionAreAnswers) {
  const ToolRun version = runTool({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.output.substr(0, 5), "orvo ");
  EXPECT_EQ(std::count(version.output.begin(), version.output.end(), '\n'), 1);
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"--help"}, {"video", "--help"}, {"--json", "guide", "-h"}}) {
    const ToolRun help = runTool(arguments);
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.output.find("Usage: orvo"), std::string::npos);
    EXPECT_EQ(help.error, "");
  }
}

TEST(CommandLine, CommandNamesAreGoodAsArguments) {
  const ToolRun run = runTool({"--json", "image", "video", "square", "--size", "0x0"});
  EXPECT_EQ(run.status, 0);
  EXPECT_NE(run.output.find("/video/orvo_display_art_square/"), std::string::npos);
}

TEST(CommandLine, ReaderThatHasGoneAwayEndsTheToolQuietly) {
  const ToolRun run = runToolUnread({"image", "a", "square", "--size", "1x1"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.error, "");
}

}  // namespace
}  // namespace orvo::tool
