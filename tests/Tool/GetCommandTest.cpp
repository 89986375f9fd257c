#include <tests/Tool/Fixtures.h>
#include <tests/support/Outcome.h>
#include <tool/ValueCheck.h>
#include <tool/get/ApiPath.h>
#include <tool/get/TokenMask.h>

#include <sstream>

namespace orvo::tool {
namespace {

/// The address, or nothing when it is refused.
std::string address(const std::string& path, const std::string& base = "http://a/b/v3/") {
  try {
    return apiAddress(path, *URL::parse(base)).text();
  } catch (const WrongUsage&) {
    return "";
  }
}

/// Between bars.
constexpr std::string_view kRefused =
    "|/x|//x/y|\\x|http://a/b/v3/x|a:b|x#y|#|a b|a\\b|..|../|../v3x/q|../v|p/../../q"
    "|../../../../b/v3/../q|%2e%2e/q|%2E./q|p/..%2f..%2f..|..%5cq|..%5Cv4|%252e%252e/q"
    "|%25252e%25252e/q|..;/q|..;x=y/q|%2e%2e%3b/q|..%2fv3x|..//v3/q|p//../../q|;x/../"
    "q|%zz|\xC3\xA4|x\ny";

TEST(ApiPath, StaysBeneathTheBase) {
  EXPECT_EQ(address("products/x"), "http://a/b/v3/products/x");
  EXPECT_EQ(address("search?q=../../x%2f..%2f.."), "http://a/b/v3/search?q=../../x%2f..%2f..");
  EXPECT_EQ(address("p/../q"), "http://a/b/v3/q");
  EXPECT_EQ(address("../v3/q"), "http://a/b/v3/q");
  EXPECT_EQ(address("./a:b"), "http://a/b/v3/a:b");
  EXPECT_EQ(address("?x"), "http://a/b/v3/?x");
  EXPECT_EQ(address("a..b/..."), "http://a/b/v3/a..b/...");
  EXPECT_EQ(address("x", "http://a/"), "http://a/x");
  std::istringstream refused{std::string(kRefused)};
  for (std::string path; std::getline(refused, path, '|');) EXPECT_EQ(address(path), "") << path;
  EXPECT_EQ(address("..", "http://a/"), "");
  EXPECT_EQ(address("%2e%2e/x", "http://a/"), "");
}

TEST(TokenMask, FindsATokenInEveryForm) {
  TokenMask mask;
  mask.add("ab/c+dd=");
  EXPECT_EQ(
      mask.body(R"(["ab/c+dd=", "ab\/c+dd=", "ab%2Fc%2Bdd%3D", "ab%2fc%2bdd%3d", "ab/c%2Bdd%3D",)"
                R"( "\u0061b/c\u002Bdd=", "%61%62/c+dd=ab/c+dd=", "ab/c+d", "\u00", "%"])"),
      R"(["***", "***", "***", "***", "***",)"
      R"( "***", "******", "ab/c+d", "\u00", "%"])");
  TokenMask odd;
  odd.add("%41\\n-odd");
  EXPECT_EQ(odd.text("x%41\\n-oddy"), "x***y") << "what is no escape";
  std::string escapes;
  for (int i = 0; i < 600'000; ++i) escapes += "\\u590f";
  EXPECT_EQ(mask.text(escapes), escapes) << "what needs no long search";
  TokenMask brief;
  brief.add("a");
  EXPECT_EQ(brief.body(R"({"a": "a", "token": "a"})"), R"({"a": "a", "token": "***"})");
  EXPECT_EQ(mask.headerValue("Location", "http://x/ab/c+dd=/y"), "http://x/***/y");
  EXPECT_EQ(mask.headerValue("Set-Cookie", "a=other; Path=/ab/c+dd="), "a=***; Path=/***");
  EXPECT_EQ(mask.headerValue("Set-Cookie", "other; Path=/"), "***; Path=/");
  EXPECT_EQ(mask.headerValue("X-Signature", "other"), "***");
  EXPECT_EQ(mask.body("http://me:other@h/"), "http://***@h/");
  EXPECT_EQ(mask.headerValue("X-Token", "other"), "***");
  EXPECT_EQ(mask.headerValue("authorization", "other"), "***");
  EXPECT_EQ(mask.headerValue("Date", "today"), "today");
}

TEST(TokenMask, HidesTheTokenOfAnySessionDocument) {
  const TokenMask mask;
  EXPECT_EQ(mask.body(R"({"token" : "a\"b", "token":"c","x":1})"),
            R"({"token" : "***", "token":"***","x":1})");
  EXPECT_EQ(mask.body(R"({"refreshToken": "a", "apiKey": ""})"),
            R"({"refreshToken": "***", "apiKey": "***"})");
  EXPECT_EQ(mask.headerValue("X-Api-Key", "a"), "***");
  EXPECT_EQ(mask.body(R"({"token":"cut off)"), R"({"token":"***)");
  EXPECT_EQ(mask.body(R"({"token":"x\)"), R"({"token":"***)");
  EXPECT_EQ(mask.body("{\"tok\\u0065n\":\"a\"}"), R"({"token":"***"})");
  const std::string other = R"({"token":5,"x":["token"],"author":"a"})";
  EXPECT_EQ(mask.body(other), other);
  TokenMask learned;
  learned.learnFrom(R"({"token":"abcdefgh"})");
  EXPECT_EQ(learned.text("x-abcdefgh-y"), "x-***-y");
}

TEST(GetCommand, AsksAsTheLibraryDoes) {
  std::atomic<int> sessions = 0;
  const test::HTTPServer server([&](const test::ServedRequest& request) -> test::ServedAnswer {
    if (request.target.starts_with("/v3/session")) {
      return {200, "{\"token\":\"" + kToken + "-" + std::to_string(++sessions) + "\"}"};
    }
    if (request.target.starts_with("/v3/configuration")) {
      return {200, toJson(*serviceDocuments().value("/v3/configuration/tvos/v1")).text()};
    }
    if (request.header("Authorization") != kToken + "-2") return {401, "no"};
    return {
        200, "\x1b[2J\t" + kToken + "-2\n\xFF", {{"Set-Cookie", "a=b"}, {"X-Way", kToken + "-2"}}};
  });
  const std::string line = "orvo get 'x?y=%2F' --api " + server.url("/v3/").text();
  const ToolRun raw = runLine(line);
  EXPECT_EQ(raw.output, "\x1b[2J\t***\n\xFF");
  EXPECT_EQ(raw.status, 0) << raw.error;
  EXPECT_NE(
      server.targets().find("/v3/x?y=%2F /v3/session?os_family=tvos&category=smart_tv /v3/x?y=%2F"),
      std::string::npos)
      << server.targets();
  sessions = 0;
  const ToolRun shown = runLine(line + " -i", 80);
  EXPECT_NE(shown.output.find("HTTP 200\r\n"), std::string::npos) << shown.output;
  EXPECT_NE(shown.output.find("Set-Cookie: a=***\r\nX-Way: ***\r\n\r\n"), std::string::npos)
      << shown.output;
  EXPECT_TRUE(shown.output.ends_with("\r\n\\u001b[2J\t***\r\n\uFFFD\r\n")) << shown.output;
}

}  // namespace
}  // namespace orvo::tool
