#include <tests/Context/StubbedContext.h>
#include <tests/support/ScriptedServer.h>

namespace orvo {
namespace {

/// The URL error's code, 0 for a success, 1 while it is pending.
template <class T>
int codeNow(const Future<T>& future) {
  if (!future.didComplete()) return 1;
  return future.didFail() ? future.error()->template as<URLError>()->code : 0;
}

class FetchScopeTest : public testing::Test {
 protected:
  /// What is to be done has been done.
  void settle() {
    for (int i = 0; i < 3; ++i) {
      while (stubbed_.queue->run() > 0) {
      }
      main_->drain();
    }
  }
  template <class T>
  int codeOf(const Future<T>& future) {
    const auto ended = test::eventually([&] {
      settle();
      return future.didComplete();
    });
    EXPECT_TRUE(ended);
    return codeNow(future);
  }

  StubbedContext stubbed_;
  std::optional<FetchScope> scope_{stubbed_.context};
  std::optional<MainQueue::Claim> main_ = MainQueue::shared()->claim();
};

TEST_F(FetchScopeTest, SharesWhatItsContextHas) {
  const auto& context = scope_->context();
  EXPECT_EQ(&context->configuration(), &stubbed_.context->configuration());
  EXPECT_EQ(&context->store(), &stubbed_.context->store());
  EXPECT_EQ(&context->appValues(), &stubbed_.context->appValues());
  EXPECT_EQ(&context->logger(), &stubbed_.context->logger());
  EXPECT_EQ(context->sessionProvider(), stubbed_.context->sessionProvider());
  EXPECT_EQ(context->clock(), stubbed_.context->clock());
  const auto video = context->fetchVideo("v");
  settle();
  ASSERT_TRUE(stubbed_.network->fetches.waitForCount(1));
  stubbed_.network->answer(0, 200, kVideoBody);
  EXPECT_EQ(codeOf(video), 0);
  scope_.reset();
  const auto again = stubbed_.context->fetchVideo("v");
  EXPECT_EQ(codeOf(again), 0);
  EXPECT_EQ(*again.value(), *video.value()) << "from the cache";
}

TEST_F(FetchScopeTest, EndsWhatWaitsForATokenAnAnswerOrARenewal) {
  const auto& context = scope_->context();
  const auto others = stubbed_.context->fetchPage("others");
  const auto renewing = context->fetchPage("renewing");
  settle();
  ASSERT_TRUE(stubbed_.network->fetches.waitForCount(2));
  stubbed_.network->answer(1, 401);
  const auto sent = context->fetchPage("sent");
  EXPECT_TRUE(test::eventually([&] {
    settle();
    return stubbed_.session->updates.count() == 1 && stubbed_.network->fetches.count() == 3;
  }));
  stubbed_.session->holdTokens();
  const auto waiting = context->fetchPage("waiting");
  scope_->cancel();
  EXPECT_EQ(codeOf(waiting), URLError::cancelled);
  EXPECT_EQ(codeOf(sent), URLError::cancelled);
  EXPECT_EQ(codeOf(renewing), URLError::cancelled);
  EXPECT_TRUE(stubbed_.network->fetches.isCancelled(2));
  EXPECT_FALSE(stubbed_.session->updates.isCancelled(0)) << "the session is everybody's";
  EXPECT_EQ(sent.error()->context()->identifier, "sent");
  stubbed_.session->updates.succeed(0, true);
  stubbed_.session->retrievals.succeed(3, kToken);
  settle();
  ASSERT_EQ(stubbed_.session->retrievals.count(), 5U);
  stubbed_.session->retrievals.succeed(4, kToken);
  settle();
  EXPECT_EQ(stubbed_.network->fetches.count(), 3U) << "nothing more is sent";
  stubbed_.network->answer(0, 200, kPageBody);
  EXPECT_EQ(codeOf(others), 0);
}

TEST_F(FetchScopeTest, RefusesAtOnceWhatIsAskedOfItsContextOnceItHasGone) {
  const auto cached = stubbed_.context->fetchVideo("v");
  settle();
  ASSERT_TRUE(stubbed_.network->fetches.waitForCount(1));
  stubbed_.network->answer(0, 200, kVideoBody);
  ASSERT_EQ(codeOf(cached), 0);
  const auto context = scope_->context();
  const auto capability = context->pageFetchCapability("p");
  const auto single = context->playlistCapability(**cached.value());
  const auto hit = context->fetchVideo("v");
  const auto unsent = context->fetchVideo("an identifier that makes no URL");
  const auto list = single();
  const ListWalk walk(context, context->collectionCapability("c"));
  const auto monitor = LinearProgramGuideMonitor::make(context);
  EXPECT_EQ(codeNow(hit) + codeNow(unsent) + codeNow(list), 3) << "they come by the main queue";
  scope_.reset();
  EXPECT_EQ(codeNow(hit), URLError::cancelled) << "which nobody drains any more";
  EXPECT_EQ(hit.error()->context()->identifier, "v");
  EXPECT_EQ(codeNow(unsent), URLError::cancelled);
  EXPECT_EQ(codeNow(list), URLError::cancelled);
  EXPECT_EQ(codeNow(context->fetchVideo("v")), URLError::cancelled) << "cached or not";
  EXPECT_EQ(codeNow(context->fetchVideo("an identifier that makes no URL")), URLError::cancelled);
  EXPECT_EQ(codeNow(context->fetchLineup(url("https://lineups.example/l"))), URLError::cancelled);
  EXPECT_EQ(codeNow(context->fetchVideoAdMetadata("v")), URLError::cancelled);
  EXPECT_EQ(codeNow(context->networkDataProvider()->fetch({.url = url("https://a.example/")})),
            URLError::cancelled);
  EXPECT_EQ(codeNow(capability()), URLError::cancelled);
  EXPECT_EQ(codeNow(single()), URLError::cancelled);
  EXPECT_EQ(codeOf(walk.next()), URLError::cancelled);
  EXPECT_EQ(codeOf(monitor->load(Date(0), Date(1))), URLError::cancelled);
  EXPECT_EQ(stubbed_.network->fetches.count(), 1U);
}

TEST_F(FetchScopeTest, EndsWithTheOneThatItWasMadeFromAndWhenItIsReplaced) {
  FetchScope inner(scope_->context());
  const auto first = inner.context()->fetchPage("p");
  settle();
  ASSERT_TRUE(stubbed_.network->fetches.waitForCount(1));
  inner = FetchScope(scope_->context());
  EXPECT_EQ(codeOf(first), URLError::cancelled);
  const auto second = inner.context()->fetchPage("p");
  settle();
  ASSERT_TRUE(stubbed_.network->fetches.waitForCount(2));
  FetchScope moved = std::move(inner);
  EXPECT_FALSE(moved.isCancelled());
  scope_.reset();
  EXPECT_TRUE(moved.isCancelled());
  EXPECT_EQ(codeOf(second), URLError::cancelled);
  EXPECT_TRUE(stubbed_.network->fetches.isCancelled(1));
}

TEST_F(FetchScopeTest, LetsGoOfWhatHasEnded) {
  const auto answer = scope_->context()->networkDataProvider()->fetch({.url = url("http://a.b/")});
  stubbed_.network->answer(0, 200, kPageBody);
  scope_->cancel();
  EXPECT_EQ(codeNow(answer), 0);
  EXPECT_FALSE(stubbed_.network->fetches.isCancelled(0));
}

/// Answers nothing and forgets what is cancelled, as the network does; knows which of its futures
/// somebody holds still.
class Silence final : public NetworkDataProvider {
 public:
  Future<HTTPResult> fetch(const URLRequest&) override {
    const Promise<HTTPResult> promise;
    const auto token = std::make_shared<int>();
    held.push_back(token);
    asked.tell();
    return promise.future().onComplete([token](const auto&) {});
  }
  [[nodiscard]] bool isForgotten() const {
    return std::all_of(held.begin(), held.end(), [](const auto& weak) { return weak.expired(); });
  }
  std::vector<std::weak_ptr<int>> held;
  test::Signal asked;
};

TEST(NestedFetchScopes, LeaveNothingOfWhatWasCancelledInThoseAbove) {
  const auto network = std::make_shared<Silence>();
  const FetchScope above(makeContext(std::make_shared<StubSessionProvider>(kToken), network));
  above.context()->networkDataProvider()->fetch({.url = url("http://a.b/")}).cancel();
  EXPECT_TRUE(network->isForgotten());
  FetchScope below(above.context());
  const auto page = below.context()->fetchPage("p");
  ASSERT_TRUE(network->asked.wait(2));
  EXPECT_FALSE(network->isForgotten());
  below.cancel();
  EXPECT_EQ(errorOf(page).as<URLError>()->code, URLError::cancelled);
  EXPECT_TRUE(test::eventually([&] { return network->isForgotten(); }));
}

// Ten connections to a host, so two fetches stand in line.
TEST(FetchScopeOverTheNetwork, ClosesItsConnectionsAndLetsNobodyTakeTheirPlaces) {
  test::SilentServer server;
  const auto network =
      std::make_shared<DefaultNetworkProvider>(std::make_shared<StubSessionProvider>(kToken));
  const auto context = Context::make(
      ConfigurationParser::parse(object(configurationBody()), Environment::staging).force(),
      server.url(), server.url(), network->sessionProvider(), network,
      {.logger = std::make_shared<PrintingLogger>()});
  std::optional<FetchScope> scope(context);
  std::vector<Future<Shared<Page>>> pages;
  for (int i = 0; i < 12; ++i) {
    pages.push_back(scope->context()->fetchPage("p" + std::to_string(i)));
  }
  ASSERT_TRUE(server.asked.wait(10));
  scope.reset();
  for (const auto& page : pages) {
    EXPECT_EQ(errorOf(page).as<URLError>()->code, URLError::cancelled);
  }
  ASSERT_TRUE(server.left.wait(10));
  const auto next = context->fetchPage("next");
  ASSERT_TRUE(server.asked.wait(11)) << "within a fresh connection";
  EXPECT_EQ(server.server.connections(), 11);
  network->urlSession()->invalidateAndCancel();
}

/// Answers, refuses or renews as soon as it is asked, on workers.
class BusyNetwork final : public NetworkDataProvider {
 public:
  Future<HTTPResult> fetch(const URLRequest& request) override {
    const Promise<HTTPResult> promise;
    DispatchQueue::global()->post([promise, request, asked = asked_++] {
      promise.success({{.url = request.url, .statusCode = asked % 3 == 0 ? 401 : 200},
                       Data(std::string(kPageBody))});
    });
    return promise.future();
  }

 private:
  std::atomic<int> asked_{0};
};
class BusySession final : public SessionProvider {
 public:
  [[nodiscard]] std::string currentToken() const override { return kToken; }
  Future<std::string> retrieveSessionToken() override {
    return Future<std::string>::succeeded(kToken);
  }
  Future<bool> updateSession() override {
    const Promise<bool> promise;
    DispatchQueue::global()->post([promise] { promise.success(true); });
    return promise.future();
  }
};

TEST(FetchScopeRace, EveryFetchEndsHoweverItMeetsTheCancel) {
  constexpr int kRounds = 300;
  const auto context =
      makeContext(std::make_shared<BusySession>(), std::make_shared<BusyNetwork>());
  std::array<std::optional<FetchScope>, 2> scopes;
  std::shared_ptr<const Context> shared;
  test::Signal ended;
  std::atomic<int> wrong = 0;
  test::race(
      kRounds,
      [&](int) {
        scopes[0].emplace(context);
        scopes[1].emplace(scopes[0]->context());
        shared = scopes[1]->context();
      },
      [&](int racer, int round) {
        const auto own = shared;
        for (int i = 0; i < 2; ++i) {
          own->fetchPage("p" + std::to_string(round), {.noCache = true})
              .onComplete([&](const auto& result) {
                const auto* const error =
                    result.failed() ? result.error()->template as<URLError>() : nullptr;
                const auto* const refused =
                    result.failed() ? result.error()->template as<SessionError>() : nullptr;
                wrong += result.failed() && refused == nullptr &&
                         (error == nullptr || error->code != URLError::cancelled);
                ended.tell();
              });
          if (racer < 2 && i == 0) scopes.at(static_cast<std::size_t>(racer))->cancel();
        }
      });
  EXPECT_TRUE(ended.wait(kRounds * test::kRacers * 2));
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace orvo
