#include <OrvoAPI/Network/URLSession.h>
#include <OrvoAPI/Testing/StubInterceptor.h>
#include <fcntl.h>
#include <signal.h>
#include <support/OperatorNew.h>
#include <sys/socket.h>
#include <tests/support/HTTPServer.h>
#include <tests/support/Outcome.h>
#include <tests/support/ScriptedServer.h>
#include <tests/support/Test.h>
#include <unistd.h>

namespace {

std::atomic<bool> networkIsRefusedMemory{false};

bool isOnNetworkThread() {
  std::array<char, 16> name{};
  pthread_getname_np(pthread_self(), name.data(), name.size());
  return std::string_view(name.data()) == "orvo-network";
}

}  // namespace

bool orvo::test::refusesMemory() noexcept { return networkIsRefusedMemory && isOnNetworkThread(); }

namespace orvo::test {
namespace {

TEST(URLSessionCancel, AbortsTheTransferAndLetsThoseThatWaitGoToo) {
  SilentServer silent;
  URLSession session({.maximumConnectionsPerHost = 1});
  const auto first = session.fetch({.url = silent.url()});
  const auto waiting = session.fetch({.url = silent.url()});
  const auto last = session.fetch({.url = silent.url()});
  ASSERT_TRUE(silent.asked.wait());
  waiting.cancel();
  first.cancel();
  ASSERT_TRUE(silent.asked.wait(2));
  last.cancel();
  EXPECT_TRUE(silent.left.wait(2));
  EXPECT_EQ(silent.server.connections(), 2);
  EXPECT_FALSE(first.didComplete() || waiting.didComplete() || last.didComplete());
}

TEST(URLSessionCancel, RacesWithTheAnswer) {
  const HTTPServer server([](const ServedRequest& request) -> ServedAnswer {
    if (request.target == "/moved") return {302, "", {{"Location", "/"}}};
    return {};
  });
  URLSession session;
  for (int i = 0; i < 50; ++i) {
    std::vector<Future<HTTPResult>> fetches;
    for (int j = 0; j < 4; ++j) fetches.push_back(session.fetch({.url = server.url("/moved")}));
    std::thread cancelling([&] { fetches[1].cancel(); });
    fetches[2].cancel();
    EXPECT_EQ(codeOf(fetches[0]), 200);
    EXPECT_EQ(codeOf(fetches[3]), 200);
    cancelling.join();
  }
}

/// Counts those that are destroyed on the network thread.
struct Mourned {
  struct Interceptor final : URLInterceptor {
    bool intercept(const URLRequest&, const std::shared_ptr<InterceptedRequest>&) override {
      return false;
    }
    std::shared_ptr<void> held;
  };
  [[nodiscard]] std::shared_ptr<void> make() {
    return {nullptr, [this](void*) {
              onNetworkThread += isOnNetworkThread();
              gone.tell();
            }};
  }
  /// A body of the app's own memory.
  [[nodiscard]] Data body() {
    static const std::array<char, 1 + Data::kPadding> bytes{};
    return {std::shared_ptr<const char>(make(), bytes.data()), 1};
  }
  std::atomic<int> onNetworkThread = 0;
  Signal gone;
};

TEST(URLSessionCancel, DestroysNothingOfTheAppsOnTheNetworkThread) {
  constexpr int kFetches = 50;
  SilentServer silent;
  Mourned mourned;
  auto interceptor = std::make_shared<Mourned::Interceptor>();
  interceptor->held = mourned.make();
  int asked = 0, gone = 0;
  for (const bool isRefused : {false, true}) {
    for (const bool together : {false, true}) {
      URLSession session({.protocolClasses = {interceptor}});
      std::vector<Future<HTTPResult>> fetches;
      for (int i = 0; i < kFetches; ++i) {
        fetches.push_back(session.fetch({.url = silent.url(), .body = mourned.body()}));
        (void)fetches.back().map([held = mourned.make()](const auto&) { return held; });
      }
      ASSERT_TRUE(silent.asked.wait(asked += 10));
      networkIsRefusedMemory = isRefused;
      for (; !fetches.empty(); fetches.pop_back()) {
        if (!together) fetches.back().cancel();
      }
      if (together) session.invalidateAndCancel();
      EXPECT_TRUE(mourned.gone.wait(gone += 2 * kFetches));
      networkIsRefusedMemory = false;
    }
  }
  interceptor.reset();
  EXPECT_TRUE(mourned.gone.wait(gone + 1));
  EXPECT_EQ(mourned.onNetworkThread, 0);
}

TEST(URLSessionOutOfMemory, LeavesAFutureTheResultThatTheAppHasGivenIt) {
  Signal asked;
  Signal letGo;
  const HTTPServer server([&](const ServedRequest&) -> ServedAnswer {
    asked.tell();
    EXPECT_TRUE(letGo.wait());
    return {};
  });
  URLSession session({.maximumConnectionsPerHost = 1});
  const auto fetch = session.fetch({.url = server.url()});
  ASSERT_TRUE(asked.wait());
  fetch.failure(GeneralError::elementNotFound{});
  const auto waiting = session.fetch({.url = server.url()});
  const ScriptedServer other("HTTP/1.0 204 None\r\n\r\n");
  ASSERT_EQ(codeOf(session.fetch({.url = other.url()})), 204) << "after which that one waits";
  networkIsRefusedMemory = true;
  letGo.tell();
  (void)resultOf(waiting);  // the first one is at its end
  (void)resultOf(session.fetch({.url = server.url()}));
  networkIsRefusedMemory = false;
  EXPECT_EQ(codeOf(session.fetch({.url = server.url()})), 200);
  EXPECT_TRUE(errorOf(fetch).is<GeneralError>());
}

TEST(URLSessionDropped, FinishesWhatIsUnderWay) {
  Signal released;
  const HTTPServer server([&](const ServedRequest& request) -> ServedAnswer {
    EXPECT_TRUE(released.wait());
    if (request.target == "/") return {302, "", {{"Location", "/end"}}};
    return {.body = "arrived"};
  });
  std::vector<Future<HTTPResult>> fetches;
  {
    URLSession session;
    for (int i = 0; i < 15; ++i) fetches.push_back(session.fetch({.url = server.url()}));
  }
  released.tell();
  for (const auto& fetch : fetches) EXPECT_EQ(bodyOf(fetch), "arrived");
}

TEST(URLSessionDropped, ClosesItsConnectionsInTheEndAndLeavesOthersAlone) {
  SilentServer silent;
  const auto pending = URLSession().fetch({.url = silent.url()});
  ASSERT_TRUE(silent.asked.wait());
  Signal left;
  const ScriptedServer server([&](Connection& connection) {
    connection.readHead();
    connection.send("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
    connection.waitForClose();
    left.tell();
  });
  const auto watching = std::make_shared<StubInterceptor>();
  EXPECT_EQ(codeOf(URLSession({.protocolClasses = {watching}}).fetch({.url = server.url()})), 200);
  EXPECT_TRUE(eventually([&] { return watching.use_count() == 1; })) << "nothing of it is kept";
  EXPECT_FALSE(pending.didComplete());
  pending.cancel();
  EXPECT_TRUE(left.wait());
}

TEST(URLSessionInvalidate, FailsWhatIsUnderWayAndWhatComesLater) {
  SilentServer silent;
  URLSession session({.maximumConnectionsPerHost = 0});  // at least one
  const auto fetch = [&] { return session.fetch({.url = silent.url()}); };
  const auto first = fetch();
  const auto waiting = fetch();
  ASSERT_TRUE(silent.asked.wait());
  // Others have gone before, the older first.
  std::vector<Future<HTTPResult>> gone(20);
  std::ranges::generate(gone, fetch);
  for (const auto& each : gone) each.cancel();
  const ScriptedServer other("HTTP/1.0 204 None\r\n\r\n");
  EXPECT_EQ(codeOf(session.fetch({.url = other.url()})), 204);
  session.invalidateAndCancel();
  EXPECT_EQ(codeOf(first), URLError::cancelled);
  EXPECT_EQ(codeOf(waiting), URLError::cancelled);
  EXPECT_EQ(codeOf(fetch()), URLError::cancelled);
  EXPECT_TRUE(first.didComplete()) << "it was the session that was cancelled, not the future";
}

std::vector<Future<HTTPResult>>* underWay = nullptr;

/// Runs when the library has come to its end: 3 if every fetch was told so.
void checkUnderWay() {
  for (const auto& fetch : *underWay) {
    const auto* const error = fetch.error();
    if (error == nullptr || error->as<URLError>()->code != URLError::cancelled) _exit(4);
  }
  _exit(3);
}

[[noreturn]] void exitWithRequestsUnderWay() {
  std::atexit(checkUnderWay);
  underWay = new std::vector<Future<HTTPResult>>;
  SilentServer silent;
  URLSession session;
  for (int i = 0; i < 20; ++i) underWay->push_back(session.fetch({.url = silent.url()}));
  if (!silent.asked.wait(10)) _exit(5);
  std::exit(0);  // NOLINT(concurrency-mt-unsafe)
}

TEST(NetworkProcessDeathTest, ExitEndsWhatIsUnderWay) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(exitWithRequestsUnderWay(), testing::ExitedWithCode(3), "");
}

bool isForkedChild = false;
/// After the library's own end, and before a leak checker that could not stop the threads which
/// hold what the child has copied.
[[maybe_unused]] const int registered = std::atexit([] {
  if (isForkedChild) _exit(3);
});

TEST(NetworkProcessDeathTest, AForkedChildExitsAtOnce) {
  GTEST_FLAG_SET(death_test_style, "fast");
  const HTTPServer server([](const ServedRequest&) -> ServedAnswer { return {}; });
  URLSession session;
  ASSERT_EQ(codeOf(session.fetch({.url = server.url()})), 200);
  const auto start = std::chrono::steady_clock::now();
  const auto leave = [] {
    isForkedChild = true;
    std::exit(3);  // NOLINT(concurrency-mt-unsafe)
  };
  EXPECT_EXIT(leave(), testing::ExitedWithCode(3), "");
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
  EXPECT_EQ(codeOf(session.fetch({.url = server.url()})), 200) << "the parent works on";
}

/// The connections that a program which the app starts would inherit.
std::set<int> inherited() {
  std::set<int> open;
  for (int descriptor = 0; descriptor < 1024; ++descriptor) {
    sockaddr address{};
    socklen_t size = sizeof address;
    if (getsockname(descriptor, &address, &size) != 0 || address.sa_family != AF_INET) continue;
    if ((fcntl(descriptor, F_GETFD) & FD_CLOEXEC) == 0) open.insert(descriptor);
  }
  return open;
}

TEST(NetworkProcess, LeavesNoConnectionToProgramsThatTheHostStarts) {
  const auto before = inherited();
  SilentServer silent;
  URLSession session;
  const auto pending = session.fetch({.url = silent.url()});
  ASSERT_TRUE(silent.asked.wait());
  EXPECT_EQ(inherited(), before);
}

TEST(NetworkProcess, IsNotEndedByAServerThatStopsReading) {
  struct sigaction before {};
  struct sigaction after {};
  struct sigaction byDefault {};  // which ends the process
  sigaction(SIGPIPE, &byDefault, &before);
  const ScriptedServer server([](Connection& connection) {
    connection.readHead();
    connection.reset();
  });
  URLSession session;
  for (int i = 0; i < 20; ++i) {
    const URLRequest request{
        .url = server.url(), .method = "POST", .body = Data(std::string(4'000'000, 'x'))};
    EXPECT_EQ(codeOf(session.fetch(request)), URLError::networkConnectionLost);
  }
  sigaction(SIGPIPE, &before, &after);
  EXPECT_EQ(after.sa_handler, SIG_DFL) << "the host's signals are its own";
}

TEST(URLSessionConnection, IsClosedWhenAnAnswerComesThatNobodyAskedFor) {
  Signal goesOn, left;
  std::atomic<int> connections{0};
  const ScriptedServer server([&](Connection& connection) {
    const bool isFirst = connections++ == 0;
    connection.readHead();
    connection.send("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
    if (!isFirst) return;
    EXPECT_TRUE(goesOn.wait());
    connection.send("HTTP/1.1 408 Request Timeout\r\nContent-Length: 0\r\n\r\n");
    EXPECT_EQ(connection.readHead(), "");
    left.tell();
  });
  URLSession session;
  EXPECT_EQ(codeOf(session.fetch({.url = server.url()})), 200);
  goesOn.tell();
  ASSERT_TRUE(left.wait());
  EXPECT_EQ(codeOf(session.fetch({.url = server.url()})), 200);
}

}  // namespace
}  // namespace orvo::test
