#include "RunTool.h"

#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <demo/DemoService.h>
#include <gtest/gtest.h>
#include <httplib.h>

#include <map>
#include <thread>

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
  JSONValue json(std::vector<std::string> arguments) {
    arguments.push_back("--json");
    const ToolRun result = run(std::move(arguments));
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(result.error, "");
    return JSONDataParser::value(Data(result.output)).force();
  }

  demo::DemoService service_{{.tokenLifetime = 3, .programLength = std::chrono::hours(1)}};
};

TEST_F(DemoCommands, AllAnswerForPeopleAndForPrograms) {
  const std::vector<std::vector<std::string>> commands{
      {"config"},
      {"views"},
      {"palette"},
      {"tour"},
      {"page", "view-discover"},
      {"video", "welcome"},
      {"item", "show-workbench"},
      {"collection", "everything"},
      {"playlist", "episodes-workbench"},
      {"search", "night"},
      {"search", "x", "--kind", "top"},
      {"suggest", "night"},
      {"guide", "--days", "2"},
      {"lineup", service_.lineupURL("grid")},
      {"lineup", service_.lineupURL("list")},
      {"stream", "welcome"},
      {"ads", "welcome"},
      {"image", "welcome", "square", "--size", "1x1"}};
  for (const auto& command : commands) {
    const ToolRun people = run(command);
    EXPECT_EQ(people.status, 0) << command[0] << ": " << people.error;
    EXPECT_EQ(people.output.find('\x1b'), std::string::npos) << command[0];
    EXPECT_FALSE(people.output.empty()) << command[0];
    EXPECT_NE(json(command).kind(), JSONValue::Kind::null) << command[0];
  }
}

TEST_F(DemoCommands, WholeCollectionComesAsOneAcrossRenewals) {
  // Five requests with tokens that are good for three.
  const JSONObject whole = *json({"collection", "everything", "--all"}).object();
  const auto items = *whole.objects("items");
  const JSONObject meta = *whole.object("meta");
  EXPECT_GT(items.size(), 300U);
  EXPECT_EQ(meta.integer("total"), static_cast<std::int64_t>(items.size()));
  EXPECT_EQ(meta.integer("limit"), static_cast<std::int64_t>(items.size()));
  EXPECT_EQ(meta.integer("offset"), 0);
}

TEST_F(DemoCommands, PagingOptionsReachTheService) {
  const auto first = *json({"collection", "everything", "--offset", "7", "--limit", "2"}).object();
  EXPECT_EQ(first.object("meta")->integer("offset"), 7);
  EXPECT_EQ(first.objects("items")->size(), 2U);
  const auto found = *json({"search", "night", "--kind", "videos", "--limit", "3"}).object();
  EXPECT_EQ(found.string("resultsKind"), "videos");
  EXPECT_EQ(found.objects("items")->size(), 3U);
}

TEST_F(DemoCommands, GuideJoinsItsPages) {
  const auto guide =
      *json({"guide", "--start", "2017-05-01T00:00:00.000Z", "--days", "5"}).object();
  EXPECT_EQ(guide.objects("items")->size(), 120U);
  EXPECT_EQ(guide.string("endDate"), "2017-05-06T00:00:00.000Z");
}

TEST_F(DemoCommands, StreamAddressIsServed) {
  const std::string stream(*json({"stream", "film-salt-road"}).string());
  const std::string root = "http://127.0.0.1:" + std::to_string(service_.port());
  ASSERT_EQ(stream.substr(0, root.size()), root);
  const auto answer = httplib::Client("127.0.0.1", service_.port()).Get(stream.substr(root.size()));
  EXPECT_EQ(answer->status, 200);
  EXPECT_EQ(answer->body.substr(0, 7), "#EXTM3U");
}

TEST_F(DemoCommands, PlaylistTakesTheIncludedVideoIn) {
  const auto playlist =
      *json({"playlist", "episodes-workbench", "--including", "episode-workbench-20"}).object();
  const auto items = *playlist.objects("items");
  EXPECT_EQ(items.size(), 20U);
  const ToolRun strange =
      run({"playlist", "episodes-workbench", "--including", "welcome", "--json"});
  EXPECT_EQ(strange.error, "Prepending video to playlist\n");
  EXPECT_NE(strange.output.find(R"("items":[{"id":"welcome")"), std::string::npos);
}

TEST_F(DemoCommands, FailuresAreTypedAndLeaveStandardOutputEmpty) {
  const std::map<std::string, std::string> errors{
      {"nobody", R"({"error":{"kind":"unexpectedStatus","status":404}})"},
      {"a b", R"({"error":{"kind":"invalidInput","input":"a b"}})"}};
  for (const auto& [id, error] : errors) {
    const ToolRun failed = run({"--json", "video", id});
    EXPECT_EQ(failed.status, 1);
    EXPECT_EQ(failed.output, "");
    EXPECT_EQ(failed.error, error + "\n");
  }
  const ToolRun people = run({"video", "nobody"});
  EXPECT_EQ(people.status, 1);
  EXPECT_EQ(people.output, "");
  EXPECT_EQ(people.error.find("orvo: the service answered with status 404"), 0U);
}

/// A service that answers everything in the same way.
class OneAnswer {
 public:
  OneAnswer(int status, std::string body) {
    server_.set_pre_routing_handler([=](const auto&, auto& response) {
      response.status = status;
      response.set_content(body, "application/json");
      return httplib::Server::HandlerResponse::Handled;
    });
    server_.set_keep_alive_max_count(1);
    port_ = server_.bind_to_any_port("127.0.0.1");
    thread_ = std::thread([this] { server_.listen_after_bind(); });
    while (!server_.is_running()) std::this_thread::yield();
  }
  ~OneAnswer() {
    server_.stop();
    thread_.join();
  }
  ToolRun views() {
    return runTool({"--json", "views", "--api", "http://127.0.0.1:" + std::to_string(port_)});
  }

 private:
  httplib::Server server_;
  int port_ = 0;
  std::thread thread_;
};

TEST(BadService, FailsTheBootstrapWithTheTypedError) {
  const ToolRun down = OneAnswer(503, "").views();
  EXPECT_EQ(down.status, 1);
  EXPECT_EQ(down.error,
            R"({"error":{"kind":"underlying","error":{"kind":"badStatus","status":503}}})"
            "\n");
  EXPECT_EQ(OneAnswer(200, "[]").views().error,
            R"({"error":{"kind":"underlying","error":{"kind":"unexpectedType"}}})"
            "\n");
  const ToolRun garbage = OneAnswer(200, "<html>").views();
  EXPECT_NE(garbage.error.find(R"("kind":"reader")"), std::string::npos);
}

TEST(BadService, NeverHasItsTokenPrinted) {
  const ToolRun run = OneAnswer(200, R"({"Token": "secret"})").views();
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.error.find("secret"), std::string::npos);
  EXPECT_NE(run.error.find(R"("type":"Session","key":null,"value":)"), std::string::npos);
}

TEST(NoService, FailsWithTheTransportError) {
  const ToolRun run = runTool({"--json", "views", "--api", "http://127.0.0.1:1/v3/"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.error.find(R"({"error":{"kind":"URLError","code":-1004,)"), 0U);
}

TEST(OwnDemoService, IsStartedForOneCommand) {
  const ToolRun run = runTool({"--demo", "--json", "views"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output, R"([{"name":"discover","label":"Discover","id":"view-discover"},)"
                        R"({"name":"calendar","label":"Calendar","id":"view-calendar"},)"
                        R"({"name":"channels","label":"Channels","id":"view-channels"}])"
                        "\n");
}

}  // namespace
}  // namespace orvo::tool
