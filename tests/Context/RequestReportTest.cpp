#include <OrvoAPI/Testing/StubInterceptor.h>
#include <tests/Context/StubbedContext.h>
#include <tests/support/HTTPServer.h>

namespace orvo {
namespace {

using Source = RequestReport::Source;
using Clock = std::chrono::steady_clock;

/// Collects reports on a queue that the test runs, and checks of each what holds for all.
struct Reports {
  std::shared_ptr<ManualQueue> reportQueue = std::make_shared<ManualQueue>();
  std::vector<RequestReport> all;

  ContextOptions options() {
    return {.logger = std::make_shared<PrintingLogger>(),
            .onReport = [this](const RequestReport& report) { all.push_back(report); },
            .reportQueue = reportQueue};
  }
  RequestReport one() {
    EXPECT_TRUE(reportQueue->waitForJob(kPatience));
    EXPECT_TRUE(reportQueue->runOne());
    const auto report = all.back();
    std::chrono::nanoseconds sum{0};
    for (const auto phase : report.phases) {
      EXPECT_GE(phase.count(), 0);
      sum += phase;
    }
    EXPECT_EQ(sum, report.total);
    EXPECT_LE(report.begun + report.total, Clock::now());
    return report;
  }
};

int codeOf(const RequestReport& report) {
  const auto* const error = report.error ? report.error->as<URLError>() : nullptr;
  return error != nullptr ? error->code : 0;
}

struct ReportedContext : Reports, StubbedContext {
  ReportedContext() {
    auto given = options();
    given.clock = clock;
    context = makeContext(session, network, given);
  }
  std::string summary(const RequestReport& report) {
    return std::string(report.operation) + " " + report.identifier + ": " + report.method + " " +
           report.path + " " + std::string(caseName(report.source)) + " " +
           std::to_string(report.status) + " " + std::to_string(report.bytesDecoded) + " " +
           std::to_string(report.retries) + (report.error ? " failed" : "");
  }
};

TEST(RequestReport, TellsOfAnswersOfTheNetworkAndTheCacheAndOfFailures) {
  ReportedContext reported;
  const auto& context = *reported.context;
  const auto page = context.fetchPage("p?x=1");
  reported.answer(200, kPageBody);
  EXPECT_EQ(reported.summary(reported.one()),
            "fetchPage p?x=1: GET /v3/products/p network 200 30 0");
  const auto hit = context.fetchPage("p?x=1");
  EXPECT_EQ(reported.summary(reported.one()), "fetchPage p?x=1:   cache 0 0 0");
  const auto missing = context.fetchVideo("v");
  reported.answer(404, "none");
  EXPECT_EQ(reported.summary(reported.one()),
            "fetchVideo v: GET /v3/products/v network 404 4 0 failed");
  const auto broken = context.fetchSearchSuggestions("a b");
  reported.answer(200, "{}");
  const auto report = reported.one();
  EXPECT_EQ(reported.summary(report),
            "fetchSearchSuggestions a b: GET /v3/search/suggest network 200 2 0 failed");
  EXPECT_TRUE(caseOf<GeneralError::underlying>(*report.error));
  const auto invalid = context.fetchPage("a b");
  EXPECT_EQ(reported.summary(reported.one()), "fetchPage a b:   none 0 0 0 failed");
}

TEST(RequestReport, CountsTheRenewalAndTellsWhatItEndedWith) {
  ReportedContext reported;
  const auto page = reported.context->fetchPage("p/" + kToken + "/renewed");
  reported.answer(401);
  reported.session->setToken("renewed");
  reported.session->updates.succeed(0, true);
  reported.answer(200, kPageBody);
  EXPECT_EQ(reported.summary(reported.one()),
            "fetchPage ***: GET /v3/products/p/***/*** network 200 30 1");

  const auto refused = reported.context->fetchVideo("v");
  reported.answer(401);
  reported.session->updates.succeed(1, false);
  reported.queue->run();
  const auto report = reported.one();
  EXPECT_EQ(report.status, 401);
  EXPECT_TRUE(caseOf<SessionError::couldNotUpdateSession>(*report.error));
  EXPECT_EQ(report.time(RequestPhase::wait).count(), 0) << "it waited for the renewal";

  const auto lost = reported.context->fetchVideo("v");
  reported.answer(401);
  reported.context = nullptr;
  reported.session->updates.succeed(2, true);
  reported.queue->run();
  EXPECT_EQ(codeOf(reported.one()), URLError::cancelled) << "nobody is left to send it again";
}

TEST(RequestReport, ItsErrorTellsNoToken) {
  ReportedContext reported;
  const auto page = reported.context->fetchPage("a " + kToken);
  const auto report = reported.one();
  EXPECT_EQ(report.error->description(), "invalidInput: a *** (fetchPage ***)");
  const auto missing = reported.context->fetchPage(kToken);
  reported.answer(404);
  const auto error = *reported.one().error;
  EXPECT_TRUE(caseOf<SessionError::unexpectedStatus>(error));
  EXPECT_EQ(error.description(), "unexpectedStatus 404 (fetchPage ***)");
  // A new session that cannot be read.
  const auto refused = reported.context->fetchPage("p");
  reported.answer(401);
  const JSONParseError fault = JSONParseError::unableToParse{"Session", JSONValue()};
  reported.session->updates.fail(0, GeneralError::underlying{fault});
  reported.queue->run();
  EXPECT_FALSE(reported.one().error->is<GeneralError>()) << "it shares the document";
}

TEST(RequestReport, OfAFetchWhoseTokenNeverComesNothingIsLeft) {
  struct Provider : SessionProvider {
    std::string currentToken() const override { return {}; }
    Future<std::string> retrieveSessionToken() override { return Promise<std::string>().future(); }
    Future<bool> updateSession() override { return Future<bool>::succeeded(false); }
  };
  Reports reports;
  auto network = std::make_shared<StubNetworkDataProvider>(reports.reportQueue);
  const std::weak_ptr left = network;
  (void)makeContext(std::make_shared<Provider>(), std::move(network), reports.options())
      ->fetchPage("p");
  EXPECT_EQ(codeOf(reports.one()), URLError::cancelled);
  EXPECT_TRUE(left.expired());
}

TEST(RequestReport, ACancelledFetchIsReportedOnceAndAtOnce) {
  ReportedContext reported;
  const auto page = reported.context->fetchPage("p");
  EXPECT_EQ(reported.requests(), 1U);
  page.cancel();
  const auto report = reported.one();
  EXPECT_EQ(codeOf(report), URLError::cancelled);
  EXPECT_EQ(report.total, report.time(RequestPhase::token) + report.time(RequestPhase::wait));
  reported.answer(200, kPageBody);
  page.cancel();
  EXPECT_FALSE(reported.reportQueue->waitForJob(0ms));
}

TEST(RequestReport, AnObserverThatBlocksOrThrowsChangesNothing) {
  StubbedContext stubbed;
  test::Signal entered, released;
  std::atomic<int> reports = 0;
  const auto context =
      makeContext(stubbed.session, stubbed.network, {.onReport = [&](const RequestReport&) {
                    entered.tell();
                    (void)released.wait();
                    if (++reports == 3) entered.tell();
                    throw std::runtime_error("an observer's");
                  }});
  for (int i = 0; i < 3; ++i) {
    const auto video = context->fetchVideo("v" + std::to_string(i));
    stubbed.answer(200, kVideoBody);
    EXPECT_FALSE(video.wait(kPatience).failed());
    if (i == 0) {
      ASSERT_TRUE(entered.wait());
    }
  }
  EXPECT_EQ(reports, 0);
  released.tell();
  EXPECT_TRUE(entered.wait(4));
  EXPECT_EQ(reports, 3);
}

// What tells the token, as it is or encoded, must not be shown: in a path, in what a redirect leads
// to, nor in what was asked for.
TEST(RequestReport, ShowsNoToken) {
  ReportedContext reported;
  const auto hop = [](std::string_view target) {
    return RequestTimeline::Redirect{
        .hop = {}, .response = {url("http://h/")}, .target = url(target)};
  };
  auto timeline = std::make_shared<RequestTimeline>();
  timeline->redirects = {hop("http://h/a/" + kToken + "?q"), hop("http://h/%73ecret-t%6Fke%6e/b"),
                         hop("http://h/secret-token%2Fc/d"),
                         hop("http://h/other-token/playlist.m3u8"), hop("http://h/c")};
  const auto answer = [&] {
    reported.queue->run();
    reported.network->fetches.succeed(reported.answered++,
                                      {{url("http://h/c"), 500}, Data(), timeline});
    reported.queue->run();
    return reported.one();
  };
  const auto page = reported.context->fetchPage("x/" + kToken + "/y");
  const auto report = answer();
  EXPECT_EQ(report.path, "/v3/products/x/***/y");
  EXPECT_EQ(report.identifier, "***");
  EXPECT_EQ(report.redirects,
            (std::vector<std::string>{"/a/***", "/***/b", "/***/d", "***", "/c"}));
  const auto ads = reported.context->fetchVideoAdMetadata("v");
  const auto secret = answer();
  EXPECT_EQ(secret.path, "***");
  EXPECT_EQ(secret.identifier, "v");
  EXPECT_EQ(secret.redirects, (std::vector<std::string>(5, "***")));
  const auto lineup = reported.context->fetchLineup(url("http://h/l/" + kToken));
  const auto hidden = answer();
  EXPECT_EQ(hidden.identifier, "");
  EXPECT_EQ(hidden.error->description().find(kToken), std::string::npos);
  reported.session->setToken("cut/off");
  const auto across = reported.context->fetchPage("x/cut/off/y");
  EXPECT_EQ(answer().path, "***");
}

struct ListeningLogger final : Logger {
  void log(std::string_view message, LogLevel level, std::string_view subsystem,
           std::string_view category) override {
    lines.push_back(std::string(rawValue(level)) + " " + std::string(subsystem) + " " +
                    std::string(category) + " " + std::string(message));
  }
  std::vector<std::string> lines;  // on the queue of the reports
};

TEST(RequestLog, HasOneLineForEachFetch) {
  StubbedContext stubbed;
  const auto queue = std::make_shared<ManualQueue>();
  const auto logger = std::make_shared<ListeningLogger>();
  const auto make = [&](bool logsRequests) {
    return makeContext(stubbed.session, stubbed.network,
                       {.logger = logger, .logsRequests = logsRequests, .reportQueue = queue});
  };
  /// What was logged since, without its milliseconds.
  const auto logged = [&] {
    EXPECT_TRUE(queue->waitForJob(kPatience));
    queue->run();
    std::string all;
    for (auto line : std::exchange(logger->lines, {})) {
      const auto end = line.find(" ms");
      const auto begin = line.find_last_not_of("0123456789", end - 1) + 1;
      all += line.erase(begin, end - begin) + "\n";
    }
    return all;
  };
  const auto context = make(true);
  const auto page = context->fetchPage("p");
  stubbed.answer(200, kPageBody);
  EXPECT_EQ(logged(),
            "info network requests fetchPage p: GET /v3/products/p: 200,  ms, 30 bytes, "
            "network\n");
  const auto broken = context->fetchPage("a\n" + kToken);
  EXPECT_EQ(logged(),
            "warning network requests fetchPage ***:  ms, 0 bytes, not sent: "
            "invalidInput: a ***\n");
  const auto silent = make(false)->fetchPage("p");
  stubbed.answer(404);
  EXPECT_TRUE(errorOf(silent).is<SessionError>());
  EXPECT_EQ(queue->waiting(), 0U);
}

/// A service whose context reports.
struct ReportedService : Reports {
  std::string flaw;
  std::atomic<bool> isRefused = true;
  std::function<void()> hold = [] {};
  const test::HTTPServer server{[this](const test::ServedRequest& request) -> test::ServedAnswer {
    const std::string_view target = request.target;
    if (target.starts_with("/v3/session")) return {302, "", {{"Location", "/secret-token/s"}}};
    if (target.ends_with("/s")) return {.body = R"({"token": "secret-token"})"};
    if (target.starts_with("/v3/configuration")) return {.body = configurationBody()};
    if (target.ends_with("/moved")) return {302, "", {{"Location", "/secret-token/p"}}};
    if (target.ends_with("/refused") && isRefused.exchange(false)) return {.status = 401};
    if (target.ends_with("/held")) hold();
    return {.body = std::string(kPageBody)};
  }};

  std::shared_ptr<Context> start(URLSessionConfiguration session = {}) {
    auto context =
        valueOf(ContextService::context(server.url("/v3"), url("http://img.example"), Client::iPad,
                                        {.session = std::move(session), .context = options()}));
    // They are posted before the future is completed.
    std::set<std::string_view> own;
    while (reportQueue->waiting() > 0) {
      const auto report = one();
      own.insert(report.operation);
      EXPECT_EQ(report.status, 200);
      EXPECT_EQ(report.identifier, "iPad");
      for (const auto& path : report.redirects) EXPECT_EQ(path, "***") << "no token is known yet";
      EXPECT_EQ(report.protocol, "1.1");
    }
    EXPECT_EQ(own, (std::set<std::string_view>{"fetchConfiguration", "openSession"}));
    return context;
  }
};

TEST(RequestReport, MeasuresTheHopsOfARequest) {
  ReportedService service;
  const auto context = service.start();
  (void)valueOf(context->fetchPage("moved"));
  const auto moved = service.one();
  EXPECT_EQ(moved.redirects, std::vector<std::string>{"/***/p"});
  EXPECT_EQ(moved.path, "/v3/products/moved");
  EXPECT_GT(moved.time(RequestPhase::redirects), 0us);
  EXPECT_TRUE(moved.isConnectionReused);
  EXPECT_EQ(moved.time(RequestPhase::connect), 0us);
  EXPECT_EQ(moved.bytesReceived, kPageBody.size());

  (void)valueOf(context->fetchPage("refused"));
  EXPECT_EQ(service.one().operation, "openSession");
  const auto refused = service.one();
  EXPECT_EQ(refused.retries, 1U);
  EXPECT_GT(refused.time(RequestPhase::renewal), 0us);
}

TEST(RequestReport, PutsTimeWhereItWasSpent) {
  ReportedService service;
  test::Signal asked, released;
  Clock::time_point begun, ended;
  service.hold = [&] {
    begun = Clock::now();
    asked.tell();
    (void)released.wait();
    ended = Clock::now();
  };
  const auto context = service.start({.maximumConnectionsPerHost = 1});
  const auto held = context->fetchPage("held");
  ASSERT_TRUE(asked.wait());
  const auto called = Clock::now();
  const auto waits = context->fetchVideo("v");
  URLSession other;
  (void)other.fetch({.url = service.server.url()}).wait(kPatience);  // time passes
  released.tell();
  (void)valueOf(held);
  (void)waits.wait(kPatience);
  auto first = service.one(), second = service.one();
  // The first answer may take longer to be read.
  if (first.operation != "fetchPage") std::swap(first, second);
  EXPECT_GE(first.time(RequestPhase::wait), ended - begun);
  EXPECT_GT(second.time(RequestPhase::queue), 0us);
  EXPECT_GE(second.time(RequestPhase::token) + second.time(RequestPhase::queue), ended - called);
  EXPECT_EQ(second.time(RequestPhase::connect), 0us);
}

TEST(RequestReport, TellsHowFarAFailedRequestCame) {
  Reports reports;
  const auto start = [&](const URL& api, URLSessionConfiguration session = {}) {
    (void)errorOf(
        ContextService::context(api, url("http://img.example/"), Client::iPad,
                                {.session = std::move(session), .context = reports.options()}));
    std::vector<RequestReport> both{reports.one(), reports.one()};
    if (both[0].operation != "openSession") std::swap(both[0], both[1]);
    return both;
  };
  const auto stub = std::make_shared<StubInterceptor>();
  stub->fail("/v3/session", URLError{URLError::timedOut, ""});
  stub->answerOthers("", {.statusCode = 503});
  const auto stubbed = start(url("http://api.example/v3"), {.protocolClasses = {stub}});
  EXPECT_EQ(stubbed[0].source, Source::interceptor);
  EXPECT_EQ(codeOf(stubbed[0]), URLError::timedOut);
  EXPECT_EQ(stubbed[1].status, 503);

  const auto nowhere = start(url("http://127.0.0.1:1/v3/"));
  EXPECT_EQ(codeOf(nowhere[0]), URLError::cannotConnectToHost);
  EXPECT_EQ(nowhere[0].source, Source::network);
  EXPECT_EQ(nowhere[0].time(RequestPhase::wait), 0us);
  EXPECT_EQ(nowhere[0].time(RequestPhase::redirects), 0us);

  (void)errorOf(ContextService::context(url("v3"), url("http://img.example/"), Client::iPad,
                                        {.context = reports.options()}));
  EXPECT_EQ(reports.one().operation, "fetchConfiguration");
}

}  // namespace
}  // namespace orvo
