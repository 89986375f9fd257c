#include <OrvoAPI/Context/Environment.h>
#include <OrvoAPI/Context/URLService.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

namespace orvo {
namespace {

URLService service(std::string_view base = "https://api.example/v3/") {
  return {.baseURL = URL::parse(base).value(),
          .resourceURL = URL::parse("https://images.example/").value()};
}

std::string streamText(const std::string& id, const std::string& token) {
  return service().videoURL(id)(token).text();
}

TEST(URLService, TellsTheServiceWhatAsksForASession) {
  const std::vector<std::pair<Client, std::string>> queries{
      {Client::iPhone, "os_family=ios&category=smartphone"},
      {Client::iPad, "os_family=ios&category=tablet"},
      {Client::appleTV, "os_family=tvos&category=smart_tv"},
      {Client::appleWatch, "os_family=watchos&category=watch"}};
  for (const auto& [client, query] : queries) {
    EXPECT_EQ(service().session(client).text(), "https://api.example/v3/session?" + query);
  }
  EXPECT_EQ(fromRawValue<Category>("tv"), std::nullopt);
  EXPECT_EQ(fromRawValue<Client>("iphone"), std::nullopt);
}

TEST(URLService, FindsTheConfigurationBeneathTheBase) {
  EXPECT_EQ(service().configuration(Client::iPad).force().text(),
            "https://api.example/v3/configuration/ios/v1");
  EXPECT_EQ(service("http://localhost:80/a/?x").configuration(Client::appleWatch).force().text(),
            "http://localhost:80/a/configuration/watchos/v1");
}

// A stray character in what a server names must not stop the app.
TEST(URLService, EncodesWhatAPathCannotHold) {
  EXPECT_EQ(streamText("a b?c#d", "\xC3\xA4%41%zz[\n"),
            "a%20b%3Fc%23d/%C3%A4%41%25zz%5B%0A/playlist.m3u8");
  EXPECT_EQ(streamText("a/b", "c/d=="), "a/b/c/d==/playlist.m3u8");
  EXPECT_EQ(streamText("urn:1", "t:2@x"), "urn:1/t:2@x/playlist.m3u8");
  EXPECT_EQ(streamText("", ""), "//playlist.m3u8");
  EXPECT_EQ(streamText(std::string(2 << 20, 'x'), "t").size(), (2U << 20) + 16);

  const auto base = URL::parse("https://video.example/hls/?k=v").value();
  for (const std::string id : {"1:2", "//a:b", "@@//", ":"}) {
    const auto relative = service().videoURL(id)("t");
    EXPECT_TRUE(URL::parse(relative.text())) << relative.text();
    const auto absolute = base.appendingPathComponent(relative.text());
    EXPECT_TRUE(URL::parse(absolute.text())) << absolute.text();
    EXPECT_TRUE(absolute.path().ends_with("/t/playlist.m3u8")) << absolute.text();
  }
}

TEST(Environment, HasAServiceOfItsOwn) {
  std::set<std::string> services;
  for (const auto environment : allEnvironments) {
    EXPECT_EQ(url(environment).path(), "/v3/");
    EXPECT_EQ(resourceURL(environment).path(), "/");
    services.insert(url(environment).text());
  }
  EXPECT_EQ(services.size(), 3U);
}

}  // namespace
}  // namespace orvo
