#include <OrvoAPI/Network/SessionError.h>
#include <OrvoAPI/Parsing/JSONReaderError.h>
#include <OrvoAPI/Platform/URLError.h>
#include <gtest/gtest.h>

#include <optional>
#include <vector>

#include "tests/Context/StubbedContext.h"

namespace orvo {
namespace {

int unexpectedStatusOf(const AnyError& error) {
  const auto* const answer = caseOf<SessionError::unexpectedStatus>(error);
  return answer != nullptr ? answer->status : 0;
}

TEST(RequestPipeline, RenewsTheSessionOnceAfterA401) {
  StubbedContext stubbed;
  stubbed.session->setToken("a b=c");
  const auto video = stubbed.context->fetchVideo("v");
  stubbed.answer(401);
  ASSERT_EQ(stubbed.session->updates.count(), 1U);
  stubbed.session->setToken("second");
  stubbed.session->updates.succeed(0, true);
  ASSERT_EQ(stubbed.requests(), 2U);
  for (const auto& [request, token] : {std::pair(0U, "a b=c"), std::pair(1U, "second")}) {
    EXPECT_EQ(stubbed.network->request(request).headers.values("authorization"),
              std::vector<std::string_view>{token});
  }
  stubbed.answer(401);
  EXPECT_EQ(unexpectedStatusOf(errorOf(video)), 401);
  EXPECT_EQ(stubbed.requests(), 2U);
  EXPECT_EQ(stubbed.session->updates.count(), 1U);
}

TEST(RequestPipeline, ReportsARenewalThatGivesNoSession) {
  StubbedContext stubbed;
  const auto refused = stubbed.context->fetchVideo("v");
  stubbed.answer(401);
  stubbed.session->updates.succeed(0, false);
  const auto failed = stubbed.context->fetchPage("p");
  stubbed.answer(401);
  stubbed.session->updates.fail(1, URLError{URLError::timedOut, ""});
  stubbed.queue->run();
  EXPECT_TRUE(caseOf<SessionError::couldNotUpdateSession>(errorOf(refused)));
  EXPECT_EQ(errorOf(failed).as<URLError>()->code, URLError::timedOut);
  EXPECT_EQ(stubbed.requests(), 2U);
}

TEST(RequestPipeline, TakesAStatusBelow400ForASuccess) {
  StubbedContext stubbed;
  for (const int status : {100, 204, 302, 304, 399}) {
    const auto page = stubbed.context->fetchPage("a", {.noCache = true});
    stubbed.answer(status, kPageBody);
    EXPECT_EQ(page.wait(kPatience).force()->id, "p") << status;
  }
  for (const int status : {400, 403, 500, 503}) {
    const auto page = stubbed.context->fetchPage("a", {.noCache = true});
    stubbed.answer(status, kPageBody);
    EXPECT_EQ(unexpectedStatusOf(errorOf(page)), status);
  }
  EXPECT_EQ(stubbed.session->updates.count(), 0U);
  EXPECT_EQ(stubbed.requests(), 9U);
}

TEST(RequestPipeline, PassesTokenAndTransportErrorsUnchanged) {
  StubbedContext stubbed;
  const auto reset = stubbed.context->fetchPage("a");
  stubbed.queue->run();
  stubbed.network->fetches.fail(0, URLError{URLError::networkConnectionLost, ""});
  stubbed.session->holdTokens();
  const auto tokenless = stubbed.context->fetchPage("b");
  stubbed.session->retrievals.fail(1, SessionError::unexpectedStatus{500});
  stubbed.queue->run();
  EXPECT_EQ(errorOf(reset).as<URLError>()->code, URLError::networkConnectionLost);
  EXPECT_EQ(unexpectedStatusOf(errorOf(tokenless)), 500);
  EXPECT_EQ(stubbed.requests(), 1U);
}

TEST(RequestPipeline, WrapsWhatTheParsersReport) {
  StubbedContext stubbed;
  const auto failure = [&](std::string_view body) {
    const auto page = stubbed.context->fetchPage("a");
    stubbed.answer(200, body);
    return caseOf<GeneralError::underlying>(errorOf(page))->error;
  };
  EXPECT_TRUE(failure("<html>").is<JSONReaderError>());
  EXPECT_TRUE(caseOf<JSONParseError::unexpectedType>(failure("[1]")));
  EXPECT_EQ(failureOf(failure(R"({"id": "p"})")), "Page: title");
}

TEST(RequestPipeline, ALineupIsFetchedWithoutTokenOrRenewal) {
  StubbedContext stubbed;
  const auto lineup = stubbed.context->fetchLineup(url("https://lineups.example/today"));
  stubbed.answer(401);
  EXPECT_EQ(unexpectedStatusOf(errorOf(lineup)), 401);
  EXPECT_FALSE(stubbed.network->request(0).headers.contains("Authorization"));
  EXPECT_EQ(stubbed.session->updates.count(), 0U);
  stubbed.session->holdTokens();
  const auto tokenless = stubbed.context->fetchLineup(url("https://lineups.example/later"));
  stubbed.session->retrievals.fail(1, URLError{URLError::timedOut, ""});
  EXPECT_EQ((stubbed.queue->run(), errorOf(tokenless)).as<URLError>()->code, URLError::timedOut);
}

TEST(ContextLifetime, TenFetchesOutliveTheirContext) {
  StubbedContext stubbed;
  std::vector<Future<Shared<Video>>> videos;
  for (int i = 0; i < 10; ++i) videos.push_back(stubbed.context->fetchVideo("v"));
  stubbed.queue->runOne();
  const std::weak_ptr<Context> gone = stubbed.context;
  stubbed.context.reset();
  EXPECT_TRUE(gone.expired());
  for (const auto& video : videos) {
    stubbed.answer(200, kVideoBody);
    EXPECT_EQ(video.wait(kPatience).force()->id, "v");
  }
}

TEST(ContextLifetime, ARenewalWhoseContextIsGoneEndsTheCallUnanswered) {
  StubbedContext stubbed;
  const auto video = stubbed.context->fetchVideo("v");
  stubbed.answer(401);
  stubbed.context.reset();
  stubbed.session->updates.succeed(0, true);
  EXPECT_EQ(stubbed.requests(), 1U);
  EXPECT_FALSE(video.didComplete());
}

TEST(ContextLifetime, CancellingAFetchReachesNothingUpstream) {
  StubbedContext stubbed;
  const auto video = stubbed.context->fetchVideo("v");
  stubbed.queue->run();
  video.cancel();
  EXPECT_FALSE(stubbed.network->fetches.isCancelled(0));
  EXPECT_EQ(errorOf(video).as<URLError>()->code, URLError::cancelled);
}

}  // namespace
}  // namespace orvo
