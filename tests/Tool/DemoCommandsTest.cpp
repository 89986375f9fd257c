#include "RunTool.h"

#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <demo/DemoService.h>
#include <gtest/gtest.h>
#include <tests/support/HTTPServer.h>

#include <utility>

namespace orvo::tool {
namespace {

/// Runs the tool against the demo service inside this test.
class DemoCommands : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(service_.start()); }

  ToolRun run(std::vector<std::string> arguments) {
    arguments.insert(arguments.end(),
                     {"--api", service_.baseURL(), "--resources", service_.resourceURL()});
    return runTool(arguments);
  }
  JSONValue json(const std::string& command) {
    const ToolRun result = run(words(command + " --json"));
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(result.error, "");
    return JSONDataParser::value(Data(result.output)).force();
  }

  demo::DemoService service_{{.tokenLifetime = 3, .programLength = std::chrono::hours(1)}};
};

TEST_F(DemoCommands, AllAnswerForPeopleAndForPrograms) {
  for (const std::string command :
       {"config", "views", "palette", "tour", "page view-discover", "video welcome",
        "item show-workbench", "collection everything", "playlist episodes-workbench",
        "search night", "search x --kind top", "suggest night", "guide --days 2", "stream welcome",
        "ads welcome", "image welcome square --size 1x1", "lineup grid", "lineup list"}) {
    const bool isLineup = command.starts_with("lineup ");
    const auto line = isLineup ? "lineup " + service_.lineupURL(command.substr(7)) : command;
    const ToolRun people = run(words(line));
    // The tour's is only 0 when the stream's address answers.
    EXPECT_EQ(people.status, 0) << line << ": " << people.error;
    EXPECT_EQ(people.output.find('\x1b'), std::string::npos) << line;
    EXPECT_FALSE(people.output.empty()) << line;
    EXPECT_NE(json(line).kind(), JSONValue::Kind::null) << line;
  }
}

TEST_F(DemoCommands, ListOptionsReachTheServiceAndLongListsComeAsOneAcrossRenewals) {
  // Five requests with tokens that are good for three.
  const auto whole = *json("collection everything --all").object();
  const auto count = static_cast<std::int64_t>(whole.objects("items")->size());
  EXPECT_GT(count, 300);
  EXPECT_EQ(whole.object("meta")->integer("limit"), count);
  const auto some = *json("collection everything --offset 7 --limit 2").object();
  EXPECT_EQ(some.object("meta")->integer("offset"), 7);
  EXPECT_EQ(some.objects("items")->size(), 2U);
  EXPECT_EQ(json("search night --kind videos --limit 3").object()->objects("items")->size(), 3U);
  const auto guide = *json("guide --start 2017-05-01T00:00:00.000Z --days 5").object();
  EXPECT_EQ(guide.objects("items")->size(), 120U) << "of two pages";
  const auto near = *json("playlist episodes-workbench --including episode-workbench-20").object();
  EXPECT_EQ(near.objects("items")->size(), 20U);
}

TEST_F(DemoCommands, FailuresAreTypedAndLeaveStandardOutputEmpty) {
  const std::string unknown = R"({"error":{"kind":"unexpectedStatus","status":404}})";
  const std::string invalid = R"({"error":{"kind":"invalidInput","input":"a b"}})";
  for (const auto& [id, error] : {std::pair("nobody", unknown), std::pair("a b", invalid)}) {
    const ToolRun failed = run({"--json", "video", id});
    EXPECT_EQ(failed.status, 1);
    EXPECT_EQ(failed.output, "");
    EXPECT_EQ(failed.error, error + "\n");
  }
  const ToolRun people = run({"video", "nobody"});
  EXPECT_EQ(people.error.find("orvo: the service answered with status 404"), 0U);
}

/// What the tool says of a service that answers everything in the same way.
ToolRun viewsOf(int status, const std::string& body) {
  const test::HTTPServer server([&](const test::ServedRequest&) {
    return test::ServedAnswer{.status = status, .body = body};
  });
  return runTool({"--json", "views", "--api", server.url().text()});
}

TEST(BadService, FailsTheBootstrapWithTheTypedError) {
  const std::string head = R"({"error":{"kind":"underlying","error":{"kind":)";
  const ToolRun down = viewsOf(503, "");
  EXPECT_EQ(down.status, 1);
  EXPECT_EQ(down.error, head + R"("badStatus","status":503}}})" + "\n");
  EXPECT_EQ(viewsOf(200, "[]").error, head + R"("unexpectedType"}}})" + "\n");
  EXPECT_EQ(viewsOf(200, "<html>").error.find(head + R"("reader",)"), 0U);
  const ToolRun none = runTool(words("--json views --api http://127.0.0.1:1/v3/"));
  EXPECT_EQ(none.error.find(R"({"error":{"kind":"URLError","code":-1004,)"), 0U);
}

TEST(BadService, NeverHasItsTokenPrinted) {
  const ToolRun run = viewsOf(200, R"({"Token": "secret-token"})");
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.error.find(R"("type":"Session","key":null,"value":)"), std::string::npos);
}

}  // namespace
}  // namespace orvo::tool
