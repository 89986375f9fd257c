#include <OrvoAPI/Context/ContextService.h>
#include <OrvoAPI/Context/Response.h>
#include <OrvoAPI/Testing/StubInterceptor.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <vector>

#include "tests/Context/StubbedContext.h"
#include "tests/support/Signal.h"

namespace orvo {
namespace {

using namespace std::chrono_literals;

struct StubbedService {
  std::shared_ptr<StubInterceptor> stub = std::make_shared<StubInterceptor>();
  std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();

  StubbedService() { stub->answerOthers("", {.statusCode = 404}); }

  void succeed() {
    stub->answer("/v3/session", R"({"token": "first"})");
    stub->answer("/v3/session", R"({"token": "second"})");
    stub->answer("/v3/configuration/tvos/v1", configurationBody());
  }
  [[nodiscard]] Future<std::shared_ptr<Context>> start() const {
    return ContextService::context(
        url("http://api.example/v3/"), url("http://img.example/"), Client::appleTV,
        {.session = {.protocolClasses = {stub}}, .context = {.clock = clock}});
  }
  [[nodiscard]] std::vector<std::string> tokensSentTo(std::string_view path) const {
    std::vector<std::string> tokens;
    for (const auto& request : stub->requests()) {
      if (request.url.path() != path) continue;
      tokens.emplace_back(request.headers.value("Authorization").value_or("none"));
    }
    return tokens;
  }
};

TEST(ContextService, OpensASessionAndLoadsTheConfiguration) {
  StubbedService service;
  service.succeed();
  const auto context = service.start().wait(kPatience).force();
  EXPECT_EQ(context->constants().linearStreamID, "stream");
  EXPECT_EQ(context->sessionProvider()->currentToken(), "first");
  EXPECT_EQ(context->environment(), Environment::production);
  const auto requests = service.stub->requests();
  ASSERT_EQ(requests.size(), 2U);
  EXPECT_EQ(requests[0].url.text(),
            "http://api.example/v3/session?os_family=tvos&category=smart_tv");
  for (const auto& request : requests) {
    EXPECT_EQ(request.timeoutInterval, 10s);
    EXPECT_EQ(request.cachePolicy, CachePolicy::reloadIgnoringLocalAndRemoteCacheData);
    EXPECT_FALSE(request.headers.contains("Authorization"));
  }
}

TEST(ContextService, ProtocolClassesSeeEveryLaterRequest) {
  StubbedService service;
  service.succeed();
  service.stub->answer("/v3/products/p", kPageBody);
  const auto context = service.start().wait(kPatience).force();
  EXPECT_EQ(context->fetchPage("p").wait(kPatience).force()->id, "p");
  EXPECT_EQ(service.tokensSentTo("/v3/products/p"), std::vector<std::string>{"first"});
}

TEST(ContextService, AFailureOfTheSessionComesBeforeOneOfTheConfiguration) {
  StubbedService service;
  service.stub->answer("/v3/session", "[]");
  service.stub->answer("/v3/configuration/tvos/v1", "", {.statusCode = 503});
  const auto list = errorOf(service.start());
  EXPECT_TRUE(
      caseOf<JSONParseError::unexpectedType>(caseOf<GeneralError::underlying>(list)->error));

  StubbedService other;
  other.stub->answer("/v3/session", R"({"token": "t"})");
  other.stub->answer("/v3/configuration/tvos/v1", "", {.statusCode = 503});
  const auto unavailable = errorOf(other.start());
  const auto* const bad =
      caseOf<Response::Error::badStatus>(caseOf<GeneralError::underlying>(unavailable)->error);
  ASSERT_NE(bad, nullptr);
  EXPECT_EQ(bad->status, 503);
}

TEST(ContextService, TransportErrorsComeUnchanged) {
  StubbedService service;
  service.stub->fail("/v3/session", URLError{URLError::cannotFindHost, ""});
  EXPECT_EQ(errorOf(service.start()).as<URLError>()->code, URLError::cannotFindHost);
}

// The error keeps the document for whoever looks at it, but no log line must show a token.
TEST(ContextService, ARejectedSessionDocumentIsKeptButNotDescribed) {
  StubbedService service;
  service.stub->answer("/v3/session", R"({"tokens": "secret"})");
  const auto error = errorOf(service.start());
  const auto inner = caseOf<GeneralError::underlying>(error)->error;
  const auto* const details = caseOf<JSONParseError::unableToParse>(inner);
  ASSERT_NE(details, nullptr);
  EXPECT_EQ(details->type, "Session");
  EXPECT_EQ(std::get<JSONValue>(details->value).object()->string("tokens"), "secret");
  EXPECT_EQ(error.description().find("secret"), std::string::npos);
}

TEST(ContextService, TheTokenIsRenewedAfterTwelveHoursWhateverTheWallClockSays) {
  StubbedService service;
  service.succeed();
  service.stub->answer("/v3/products/p", kPageBody);
  const auto context = service.start().wait(kPatience).force();
  const auto fetch = [&] {
    (void)context->fetchPage("p", {.noCache = true}).wait(kPatience).force();
  };
  service.clock->setWall(Date(4'000'000'000'000));
  fetch();
  service.clock->setWall(Date(0));
  service.clock->advance(12h - 1ms);
  fetch();
  service.clock->advance(1ms);
  fetch();
  EXPECT_EQ(service.tokensSentTo("/v3/products/p"),
            (std::vector<std::string>{"first", "first", "second"}));
}

/// Drops the last reference to a context inside a callback that runs on the queue.
void releaseOn(const std::shared_ptr<DispatchQueue>& queue) {
  StubbedService service;
  service.succeed();
  service.stub->answer("/v3/products/p", kPageBody);
  auto context = service.start().wait(kPatience).force();
  const std::weak_ptr<Context> gone = context;
  const auto page = context->fetchPage("p");
  test::Signal released;
  page.onSuccess(queue, [&released, last = std::move(context)](const Shared<Page>&) mutable {
    last.reset();
    released.tell();
  });
  ASSERT_TRUE(released.wait());
  EXPECT_TRUE(gone.expired());
}

TEST(ContextLifetime, MayEndInACallbackOnEachOfTheLibrarysThreads) {
  class InPlace final : public DispatchQueue {
   public:
    void post(Job job) override { job(); }
  };
  releaseOn(DispatchQueue::global());
  releaseOn(MainQueue::shared());
  releaseOn(std::make_shared<InPlace>());  // on the thread that completes the fetch
}

}  // namespace
}  // namespace orvo
