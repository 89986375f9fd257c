#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <demo/DemoService.h>
#include <httplib.h>
#include <tests/support/Outcome.h>
#include <tests/support/Test.h>

namespace orvo::demo {
namespace {

/// A running service and a client of it, without the library.
struct Visit {
  explicit Visit(DemoServiceOptions options = {}) : service(std::move(options)) {
    EXPECT_TRUE(service.start());
  }

  int status(const std::string& path, const std::string& token = "") {
    return get(path, token)->status;
  }
  std::string openSession() {
    const auto body = get("/v3/session?os_family=ios&category=tablet", "")->body;
    std::string token(*JSONDataParser::object(Data(body)).force().string("token"));
    EXPECT_TRUE(token.starts_with(kToken));
    return token;
  }
  httplib::Result get(const std::string& path, const std::string& token) {
    return httplib::Client("127.0.0.1", service.port())
        .Get(path, token.empty() ? httplib::Headers() : httplib::Headers{{"Authorization", token}});
  }

  DemoService service;
};

TEST(DemoService, TakesAFreePortAndFreesIt) {
  int port = 0;
  {
    Visit first;
    port = first.service.port();
    EXPECT_FALSE(DemoService({.port = port}).start());
    EXPECT_EQ(first.status("/v3/configuration/ios/v1"), 200);
  }
  EXPECT_TRUE(DemoService({.port = port}).start());
}

TEST(DemoServiceTokens, ExpireAfterTheirRequests) {
  Visit visit({.tokenLifetime = 2});
  const std::string token = visit.openSession();
  EXPECT_EQ(visit.status("/v3/products/welcome", token), 200);
  EXPECT_EQ(visit.status("/v3/search?q=night", token), 200);
  EXPECT_EQ(visit.status("/v3/products/welcome", token), 401);
  EXPECT_EQ(visit.status("/v3/products/welcome", visit.openSession()), 200);
  // A player that is in the middle of a stream does not notice.
  EXPECT_EQ(visit.status("/hls/welcome/" + token + "/playlist.m3u8"), 200);
}

TEST(DemoServiceLog, HasALinePerRequestAndNoToken) {
  std::mutex mutex;
  std::string log;
  {
    Visit visit({.requestLog = [&](const std::string& line) {
      const std::lock_guard lock(mutex);
      log += line + "\n";
    }});
    visit.status("/hls/welcome/" + visit.openSession() + "/playlist.m3u8");
    visit.status("/v3/search?q=%1B%5B31m", "made up");
  }
  EXPECT_EQ(log.find(kToken), std::string::npos);
  EXPECT_NE(log.find("200 GET /hls/welcome/(token)/playlist.m3u8\n"), std::string::npos) << log;
  EXPECT_NE(log.find("401 GET /v3/search?q=%1B%5B31m (unknown token)\n"), std::string::npos) << log;
}

TEST(DemoService, AsksForATokenForContentOnlyAndRefusesWhatMakesNoSense) {
  Visit visit;
  const std::string token = visit.openSession();
  EXPECT_EQ(visit.status("/v3/products/welcome"), 401);
  EXPECT_EQ(visit.status("/v3/products/welcome", "made up"), 401);
  EXPECT_EQ(visit.status("/lineups/grid.json"), 200);
  EXPECT_EQ(visit.status("/resources/welcome/orvo_cover_art_square/im:i:f_png"), 200);
  EXPECT_EQ(visit.status("/v3/products/nobody", token), 404);
  EXPECT_EQ(visit.status("/v3/collections/everything?limit=-1", token), 400);
  EXPECT_EQ(visit.status("/v3/epg?start_time=now&end_time=then", token), 400);
  EXPECT_EQ(visit.status("/hls/welcome/made-up/playlist.m3u8"), 403);
}

}  // namespace
}  // namespace orvo::demo
