#include <OrvoAPI/Testing/ManualQueue.h>
#include <OrvoAPI/Testing/StubInterceptor.h>
#include <OrvoAPI/Testing/StubNetworkDataProvider.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <vector>

namespace orvo {
namespace {

using testing::ElementsAre;

URLRequest request(std::string_view path) {
  return {.url = URL::parse("https://api.example" + std::string(path)).value()};
}

TEST(StubNetworkDataProvider, SettlesRequestsInTheOrderOfTheTest) {
  const auto queue = std::make_shared<ManualQueue>();
  StubNetworkDataProvider network(queue);
  const auto first = network.fetch(request("/a"));
  const auto second = network.fetch(request("/b"));
  std::vector<std::string> outcomes;
  first.onFailure([&](const AnyError& error) { outcomes.push_back(error.description()); });
  second.onSuccess([&](const HTTPResult& result) { outcomes.emplace_back(result.body.view()); });
  network.answer(1, 200, "B");
  network.fetches.fail(0, GeneralError::elementNotFound{});
  EXPECT_TRUE(outcomes.empty());
  queue->run();
  EXPECT_THAT(outcomes, ElementsAre("B", "elementNotFound"));
  EXPECT_EQ(network.request(0).url.path(), "/a");
  EXPECT_EQ(second.value()->response.url, network.request(1).url);
  EXPECT_THROW(network.answer(2, 200), std::out_of_range);
}

TEST(StubNetworkDataProvider, WaitsForRequestsOfOtherThreads) {
  StubNetworkDataProvider network;
  std::thread thread([&] { network.fetch(request("/a")).cancel(); });
  EXPECT_TRUE(network.fetches.waitForCount(1));
  thread.join();
  EXPECT_TRUE(network.fetches.isCancelled(0));
  EXPECT_FALSE(network.fetches.waitForCount(2, std::chrono::milliseconds(0)));
}

/// Keeps what a request was answered with.
class Answered final : public InterceptedRequest {
 public:
  void respond(HTTPURLResponse response, Data body) override {
    text = std::to_string(response.statusCode) + " " + std::string(body.view());
  }
  void fail(URLError error) override { text = std::to_string(error.code); }
  void onCancel(std::function<void()>) override {}
  std::string text;
};

std::string answer(StubInterceptor& stub, std::string_view path) {
  const auto answered = std::make_shared<Answered>();
  return stub.intercept(request(path), answered) ? answered->text : "went by";
}

TEST(StubInterceptor, AnswersByPathInTurn) {
  StubInterceptor stub;
  stub.answer("/a", "no", {.statusCode = 401});
  stub.answer("/a", "yes");
  stub.answer("/a?q=1", "one");
  stub.fail("/b", {URLError::timedOut, ""});
  EXPECT_EQ(answer(stub, "/a"), "401 no");
  EXPECT_EQ(answer(stub, "/a?q=1"), "200 one");
  EXPECT_EQ(answer(stub, "/a?q=2"), "200 yes");
  EXPECT_EQ(answer(stub, "/a"), "200 yes");
  EXPECT_EQ(answer(stub, "/b"), "-1001");
  EXPECT_EQ(answer(stub, "/c"), "went by");
  stub.answerOthers("nothing");
  EXPECT_EQ(answer(stub, "/c"), "404 nothing");
  EXPECT_EQ(stub.requests().size(), 7U);
  stub.answerFromFile("/file", __FILE__);
  EXPECT_THAT(answer(stub, "/file"), testing::HasSubstr("AnswersByPathInTurn"));
  EXPECT_THROW(stub.answerFromFile("/b", "/nonexistent"), std::runtime_error);
}

}  // namespace
}  // namespace orvo
