#include <OrvoAPI/Configuration/Configuration.h>
#include <OrvoAPI/Model/ItemCollection.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <demo/DemoService.h>
#include <gtest/gtest.h>
#include <httplib.h>

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

namespace orvo::demo {
namespace {

/// A client of the service, without the library.
class Visitor {
 public:
  explicit Visitor(const DemoService& service) : client_("127.0.0.1", service.port()) {}

  std::string openSession() {
    const auto answer = client_.Get("/v3/session?os_family=ios&category=tablet");
    const auto json = JSONDataParser::object(Data(answer->body));
    return std::string(json.value()->string("token").value_or(""));
  }
  httplib::Result get(const std::string& path, const std::string& token = "") {
    return client_.Get(
        path, token.empty() ? httplib::Headers() : httplib::Headers{{"Authorization", token}});
  }
  int status(const std::string& path, const std::string& token = "") {
    const auto answer = get(path, token);
    return answer ? answer->status : 0;
  }

 private:
  httplib::Client client_;
};

TEST(DemoServiceStart, FailsOnAPortThatIsTaken) {
  DemoService first;
  ASSERT_TRUE(first.start());
  DemoService second({.port = first.port()});
  EXPECT_FALSE(second.start());
  second.stop();
}

TEST(DemoServiceStop, FreesItsPort) {
  int port = 0;
  {
    DemoService service;
    ASSERT_TRUE(service.start());
    port = service.port();
    EXPECT_EQ(Visitor(service).status("/v3/configuration/ios/v1"), 200);
  }
  DemoService next({.port = port});
  EXPECT_TRUE(next.start());
}

TEST(DemoServiceTokens, AreNeededForContentOnly) {
  DemoService service;
  ASSERT_TRUE(service.start());
  Visitor visitor(service);
  EXPECT_EQ(visitor.status("/v3/products/welcome"), 401);
  EXPECT_EQ(visitor.status("/v3/products/welcome", "made up"), 401);
  EXPECT_EQ(visitor.status("/v3/products/welcome", visitor.openSession()), 200);
  EXPECT_EQ(visitor.status("/lineups/grid.json"), 200);
  EXPECT_EQ(visitor.status("/resources/welcome/orvo_cover_art_square/im:i:f_png"), 200);
}

TEST(DemoServiceTokens, ExpireAfterTheirRequests) {
  DemoService service({.tokenLifetime = 2});
  ASSERT_TRUE(service.start());
  Visitor visitor(service);
  const std::string token = visitor.openSession();
  EXPECT_EQ(visitor.status("/v3/products/welcome", token), 200);
  EXPECT_EQ(visitor.status("/v3/search?q=night", token), 200);
  EXPECT_EQ(visitor.status("/v3/products/welcome", token), 401);
  EXPECT_EQ(visitor.status("/v3/products/welcome", visitor.openSession()), 200);
  // A player that is in the middle of a stream does not notice.
  EXPECT_EQ(visitor.status("/hls/welcome/" + token + "/playlist.m3u8"), 200);
}

TEST(DemoServiceLog, HasALinePerRequestAndNoToken) {
  std::mutex mutex;
  std::vector<std::string> lines;
  std::string token;
  {
    DemoService service({.requestLog = [&](const std::string& line) {
      const std::lock_guard lock(mutex);
      lines.push_back(line);
    }});
    ASSERT_TRUE(service.start());
    Visitor visitor(service);
    token = visitor.openSession();
    visitor.get("/hls/welcome/" + token + "/playlist.m3u8");
    visitor.get("/v3/search?q=%1B%5B31m", "made up");
  }
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_NE(lines[1].find("200 GET /hls/welcome/(token)/playlist.m3u8"), std::string::npos);
  EXPECT_NE(lines[2].find("401 GET /v3/search?q=%1B%5B31m (unknown token)"), std::string::npos);
  for (const std::string& line : lines) EXPECT_EQ(line.find(token), std::string::npos) << line;
}

TEST(DemoServiceAddresses, PointToTheServiceItself) {
  DemoService service;
  ASSERT_TRUE(service.start());
  Visitor visitor(service);
  const std::string root = "http://127.0.0.1:" + std::to_string(service.port()) + "/";
  EXPECT_EQ(service.baseURL(), root + "v3/");
  const auto body = visitor.get("/v3/configuration/ios/v1")->body;
  const auto configuration = ConfigurationParser::parse(JSONDataParser::object(Data(body)).force(),
                                                        Environment::production);
  ASSERT_NE(configuration.value(), nullptr);
  EXPECT_EQ(configuration.value()->constants.hlsBaseURL.text(), root + "hls");
  EXPECT_EQ(service.lineupURL("grid"), root + "lineups/grid.json");
}

TEST(DemoServicePaging, CoversACollectionWithoutGapsOrRepeats) {
  DemoService service;
  ASSERT_TRUE(service.start());
  Visitor visitor(service);
  const std::string token = visitor.openSession();
  std::vector<std::string> ids;
  std::int64_t total = 0;
  do {
    const auto body =
        visitor
            .get("/v3/collections/everything?limit=99&offset=" + std::to_string(ids.size()), token)
            ->body;
    const auto part = ItemCollectionParser::parse(JSONDataParser::object(Data(body)).force());
    total = part.force().meta.total;
    ASSERT_FALSE(part.force().items.empty());
    for (const ContentItem& item : part.force().items) {
      ids.push_back(item.video() != nullptr ? item.video()->id : item.page()->id);
    }
  } while (static_cast<std::int64_t>(ids.size()) < total);
  EXPECT_GT(total, 300);
  EXPECT_EQ(static_cast<std::int64_t>(ids.size()), total);
  std::sort(ids.begin(), ids.end());
  EXPECT_EQ(std::adjacent_find(ids.begin(), ids.end()), ids.end());
}

TEST(DemoServiceRequests, ThatMakeNoSenseAreRefused) {
  DemoService service;
  ASSERT_TRUE(service.start());
  Visitor visitor(service);
  const std::string token = visitor.openSession();
  EXPECT_EQ(visitor.status("/v3/products/nobody", token), 404);
  EXPECT_EQ(visitor.status("/v3/collections/everything?limit=-1", token), 400);
  EXPECT_EQ(visitor.status("/v3/epg?start_time=now&end_time=then", token), 400);
  EXPECT_EQ(visitor.status("/hls/welcome/made-up/playlist.m3u8"), 403);
  EXPECT_EQ(visitor.status("/"), 404);
  EXPECT_EQ(httplib::Client("127.0.0.1", service.port()).Post("/v3/session")->status, 405);
}

}  // namespace
}  // namespace orvo::demo
