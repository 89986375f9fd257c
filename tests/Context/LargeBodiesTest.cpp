#include <OrvoAPI/Network/URLSession.h>
#include <tests/Context/StubbedContext.h>
#include <tests/support/HTTPServer.h>
#include <tests/support/Outcome.h>

namespace orvo::test {
namespace {

constexpr std::size_t kMebibyte = std::size_t{1} << 20;

/// Answers "/N" with so many mebibytes, and "/15/held" when it is let go.
struct LargeServer {
  Signal asked;
  Signal letGo;
  HTTPServer server{[this](const ServedRequest& request) -> ServedAnswer {
    if (request.target.ends_with("held")) {
      asked.tell();
      EXPECT_TRUE(letGo.wait());
    }
    return {.body = std::string(std::stoul(request.target.substr(1)) * kMebibyte, 'x')};
  }};
};

TEST(LargeBodies, ThatTheAppKeepsAreFollowedByOneAtATimeOfTheirHostInAllSessions) {
  LargeServer large;
  const HTTPServer small([](const ServedRequest&) -> ServedAnswer { return {.body = "small"}; });
  const auto place = ".1:" + std::to_string(*large.server.url().port());
  std::vector<HTTPResult> kept;
  for (int i = 0; i < 5; ++i)
    kept.push_back(valueOf(URLSession().fetch({.url = url("http://0x7f" + place + "/15")})));
  const auto first = URLSession().fetch({.url = url("http://0x7f" + place + "/15/held")});
  ASSERT_TRUE(large.asked.wait());
  URLSession session;
  const auto second = session.fetch({.url = url("HTTP://another@0X7F" + place + "/15/held")});
  EXPECT_EQ(bodyOf(session.fetch({.url = small.url()})), "small") << "others do not wait";
  EXPECT_EQ(large.server.requests().size(), 6U);
  kept.clear();
  EXPECT_TRUE(large.asked.wait(2)) << "once there is room the next one goes";
  large.letGo.tell();
  EXPECT_EQ(codeOf(first), 200);
  EXPECT_EQ(codeOf(second), 200);
}

TEST(LargeBodies, NeverWaitForOneThatTheAppKeeps) {
  LargeServer large;
  URLSession session({.maximumBodySize = 70 * kMebibyte});
  const auto beyondTheBudget = valueOf(session.fetch({.url = large.server.url("/70")}));
  EXPECT_EQ(beyondTheBudget.body.size(), 70 * kMebibyte);
  const auto first = session.fetch({.url = large.server.url("/0")});
  const auto second = session.fetch({.url = large.server.url("/0")});
  EXPECT_EQ(codeOf(first), 200);
  EXPECT_EQ(codeOf(second), 200);
}

TEST(LargeBodies, AreReadOneAfterAnotherHoweverThatEnds) {
  StubbedContext stubbed;
  const auto lineup = [&](const std::string& host) {
    return stubbed.context->fetchLineup(url("https://" + host + ".example/"));
  };
  const auto broken = lineup("a"), cancelled = lineup("a"), dense = lineup("a");
  const auto whole = lineup("a"), other = lineup("b");
  cancelled.cancel();
  const std::string blank(2 * kMebibyte, ' ');
  const std::string list = "[" + blank + "]";
  for (const auto& body : {blank, list, std::string(5 * kMebibyte, ','), list, list}) {
    stubbed.answer(200, body);
  }
  EXPECT_NE(caseOf<GeneralError::underlying>(errorOf(broken)), nullptr);
  EXPECT_EQ(caseOf<GeneralError::underlying>(errorOf(dense))->error.as<URLError>()->code,
            URLError::dataLengthExceedsMaximum);
  EXPECT_TRUE(valueOf(whole)->slots_.empty());
  EXPECT_TRUE(valueOf(other)->slots_.empty());
}

}  // namespace
}  // namespace orvo::test
