#include <OrvoAPI/Testing/StubInterceptor.h>
#include <tests/Context/StubbedContext.h>
#include <tests/support/ScriptedServer.h>

namespace orvo {
namespace {

struct StubbedService {
  std::shared_ptr<StubInterceptor> stub = std::make_shared<StubInterceptor>();

  StubbedService() { stub->answerOthers("", {.statusCode = 404}); }

  void succeed() {
    stub->answer("/v3/session", R"({"token": "secret-token"})");
    stub->answer("/v3/configuration/tvos/v1", configurationBody());
    stub->answer("/v3/products/p", kPageBody);
  }
  [[nodiscard]] Future<std::shared_ptr<Context>> start(
      std::string_view api = "http://api.example/v3/") const {
    return ContextService::context(url(api), url("http://img.example/"), Client::appleTV,
                                   {.session = {.protocolClasses = {stub}},
                                    .context = {.logger = std::make_shared<PrintingLogger>()}});
  }
  /// What the start fails with, without the wrapping.
  [[nodiscard]] AnyError failure() const {
    const auto error = errorOf(start());
    const auto* const wrapper = caseOf<GeneralError::underlying>(error);
    return wrapper != nullptr ? wrapper->error : error;
  }
};

TEST(ContextService, OpensASessionAndLoadsTheConfiguration) {
  StubbedService service;
  service.succeed();
  const auto context = service.start().wait(kPatience).force();
  EXPECT_EQ(context->sessionProvider()->currentToken(), kToken);
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

TEST(ContextService, HandsItsOptionsOnToAllThatComesLater) {
  const auto clock = std::make_shared<ManualClock>(Date(0), 13h);
  const test::HTTPServer server([](const test::ServedRequest& request) -> test::ServedAnswer {
    if (request.target.starts_with("/v3/session")) return {.body = R"({"token": "secret-token"})"};
    if (request.target.starts_with("/v3/configuration")) return {.body = configurationBody()};
    return {.body =
                request.target.ends_with("/p") ? std::string(kPageBody) : std::string(5000, ' ')};
  });
  const auto context =
      valueOf(ContextService::context(server.url("/v3/"), url("http://img.example/"), Client::iPad,
                                      {.session = {.maximumBodySize = 4096},
                                       .context = {.clock = clock, .displayScale = 2},
                                       .environment = Environment::qa}));
  EXPECT_EQ(context->environment(), Environment::qa);
  EXPECT_EQ(url(Environment::qa).text(), ORVO_QA_URL);
  EXPECT_EQ(context->resourceHost().displayScale, 2);
  EXPECT_EQ(context->resourceHost().baseURL.text(), "http://img.example/");
  const auto requestsFor = [&](const std::string& target, std::size_t before) {
    (void)context->fetchPage(target).wait(kPatience);
    return server.requests().size() - before;
  };
  EXPECT_EQ(errorOf(context->fetchPage("large")).as<URLError>()->code,
            URLError::dataLengthExceedsMaximum);
  EXPECT_EQ(requestsFor("p", 3), 1U) << "the token is new";
  clock->advance(299s);
  EXPECT_EQ(requestsFor("p", 4), 0U);
  clock->advance(1s);
  EXPECT_EQ(requestsFor("p", 4), 1U);
  clock->advance(12h);
  EXPECT_EQ(requestsFor("p", 5), 2U) << "and a session";
  EXPECT_TRUE(server.targets().find("configuration/ios/v1") != std::string::npos);
}

/// Passes requests on and keeps what becomes of each.
struct Wiretap final : NetworkDataProvider {
  std::shared_ptr<NetworkDataProvider> network;
  std::vector<std::pair<URLRequest, Future<HTTPResult>>>& seen;

  Wiretap(std::shared_ptr<NetworkDataProvider> tapped, decltype(seen) into)
      : network(std::move(tapped)), seen(into) {}
  Future<HTTPResult> fetch(const URLRequest& request) override {
    return seen.emplace_back(request, network->fetch(request)).second;
  }
};

TEST(ContextService, SendsEverythingThroughWhatStandsBeforeTheNetwork) {
  StubbedService service;
  service.stub->answer("/v3/products/p", "", {.statusCode = 401});
  service.succeed();
  std::vector<std::pair<URLRequest, Future<HTTPResult>>> seen;
  BootstrapOptions options{.session = {.protocolClasses = {service.stub}, .measuresRequests = true},
                           .wrapNetwork = [&](auto network) {
                             return std::make_shared<Wiretap>(std::move(network), seen);
                           }};
  const auto start = [&] {
    return ContextService::context(url("http://api.example/v3/"), url("http://img.example/"),
                                   Client::appleTV, options);
  };
  (void)valueOf(valueOf(start())->fetchPage("p"));
  std::string summary;
  for (const auto& [request, answer] : seen) {
    summary += std::string(request.url.path().substr(3)) + " " +
               std::to_string(test::codeOf(answer)) +
               (request.headers.contains("Authorization") ? " with a token; " : "; ");
    EXPECT_NE(valueOf(answer).timeline, nullptr);
  }
  EXPECT_EQ(summary,
            "/session 200; /configuration/tvos/v1 200; /products/p 401 with a token; /session 200; "
            "/products/p 200 with a token; ");

  options.wrapNetwork = [](const auto&) { return nullptr; };
  EXPECT_EQ(valueOf(valueOf(start())->fetchPage("p"))->title, "Server") << "as if there were none";
  options.wrapNetwork = [calls = 0](const auto& network) mutable {
    if (++calls > 1) throw std::runtime_error("full");
    return network;
  };
  EXPECT_TRUE(caseOf<GeneralError::underlying>(errorOf(start())));
  struct Thrower final : NetworkDataProvider {
    Future<HTTPResult> fetch(const URLRequest&) override { throw std::runtime_error("empty"); }
  };
  options.wrapNetwork = [](const auto&) { return std::make_shared<Thrower>(); };
  EXPECT_NE(errorOf(start()).description().find("empty"), std::string::npos);
}

TEST(ContextService, AFailureOfTheSessionComesBeforeOneOfTheConfiguration) {
  StubbedService list;
  list.stub->answer("/v3/session", "[]");
  list.stub->answer("/v3/configuration/tvos/v1", "", {.statusCode = 503});
  EXPECT_TRUE(caseOf<JSONParseError::unexpectedType>(list.failure()));

  StubbedService unavailable;
  unavailable.stub->answer("/v3/session", R"({"token": "secret-token"})");
  unavailable.stub->answer("/v3/configuration/tvos/v1", "", {.statusCode = 400});
  EXPECT_EQ(*caseOf<Response::Error::badStatus>(unavailable.failure()),
            Response::Error::badStatus{400});

  StubbedService lost;
  lost.stub->fail("/v3/session", URLError{URLError::cannotFindHost, ""});
  const auto error = errorOf(lost.start());
  EXPECT_EQ(error.as<URLError>()->code, URLError::cannotFindHost) << "unwrapped";
  EXPECT_EQ(error.context()->description(), "openSession appleTV");
}

TEST(ContextService, ABaseThatNothingResolvesAgainstFailsUnsent) {
  const StubbedService service;
  const auto error = errorOf(service.start("v3/"));
  EXPECT_EQ(caseOf<URLService::Error::invalidInput>(error)->input, "appleTV");
  EXPECT_EQ(error.context()->note, "the base URL is relative");
  EXPECT_TRUE(service.stub->requests().empty());
}

TEST(ContextService, AddsTheSlashThatABaseLacks) {
  StubbedService service;
  service.succeed();
  const auto context = valueOf(
      ContextService::context(url("http://api.example/v3?x=1"), url("http://img.example/i"),
                              Client::appleTV, {.session = {.protocolClasses = {service.stub}}}));
  EXPECT_EQ(context->urlService().baseURL.text(), "http://api.example/v3/?x=1");
  EXPECT_EQ(context->resourceHost().baseURL.text(), "http://img.example/i/");
  EXPECT_EQ(service.stub->requests()[0].url.path(), "/v3/session");
}

// The error keeps the document for whoever looks at it, but no log line must show a token.
TEST(ContextService, ARejectedSessionDocumentIsKeptButNotDescribed) {
  const StubbedService service;
  service.stub->answer("/v3/session", R"({"tokens": "secret-token"})");
  const auto error = errorOf(service.start());
  const auto inner = caseOf<GeneralError::underlying>(error)->error;
  const auto* const details = caseOf<JSONParseError::unableToParse>(inner);
  ASSERT_NE(details, nullptr);
  EXPECT_EQ(details->type, "Session");
  EXPECT_EQ(std::get<JSONValue>(details->value).object()->string("tokens"), kToken);
}

TEST(ContextService, CancellingReachesTheSessionsRequestOnly) {
  test::Signal asked, sessionLeft, otherLeft;
  const test::ScriptedServer server([&](test::Connection& connection) {
    const bool isSession = connection.readHead().starts_with("GET /v3/session");
    asked.tell();
    connection.waitForClose();
    (isSession ? sessionLeft : otherLeft).tell();
  });
  const auto start = ContextService::context(server.url("/v3/"), server.url(), Client::appleTV);
  ASSERT_TRUE(asked.wait(2));
  start.cancel();
  EXPECT_TRUE(sessionLeft.wait());
  EXPECT_FALSE(otherLeft.told());
}

/// Drops the last reference to a context inside a callback that runs on the queue.
void releaseOn(const std::shared_ptr<DispatchQueue>& queue) {
  StubbedService service;
  service.succeed();
  auto context = service.start().wait(kPatience).force();
  const std::weak_ptr<Context> gone = context;
  const auto page = context->fetchPage("p");
  test::Signal released;
  page.onSuccess(queue, [&released, last = std::move(context)](const Shared<Page>&) mutable {
    last.reset();
    released.tell();
  });
  ASSERT_TRUE(released.wait());
  // The thread that completed the start may hold the value for a moment longer.
  EXPECT_TRUE(test::eventually([&] { return gone.expired(); }));
}

TEST(ContextLifetime, MayEndInACallbackOnEachOfTheLibrarysThreads) {
  releaseOn(DispatchQueue::global());
  releaseOn(MainQueue::shared());
  releaseOn(detail::inlineQueue());  // on the thread that completes the fetch
}

const URLService kService{.baseURL = url("https://api.example/v3/"),
                          .resourceURL = url("https://images.example/")};

std::string streamText(const std::string& id, const std::string& token) {
  return kService.videoURL(id)(token).text();
}

// A stray character in what a server names must not stop the app.
TEST(URLService, EncodesWhatAPathCannotHold) {
  EXPECT_EQ(streamText("a b?c#d", "\xC3\xA4%41%zz[\n"),
            "a%20b%3Fc%23d/%C3%A4%41%25zz%5B%0A/playlist.m3u8");
  EXPECT_EQ(streamText("a/b", "c/d=="), "a/b/c/d==/playlist.m3u8");
  EXPECT_EQ(streamText("urn:1", "t:2@x"), "urn:1/t:2@x/playlist.m3u8");
  EXPECT_EQ(streamText("", ""), "//playlist.m3u8");
  EXPECT_EQ(streamText(std::string(2 << 20, 'x'), "t").size(), (2U << 20) + 16);

  const auto base = url("https://video.example/hls/?k=v");
  for (const std::string id : {"1:2", "//a:b", "@@//", ":"}) {
    const auto relative = kService.videoURL(id)("t");
    EXPECT_TRUE(URL::parse(relative.text())) << relative.text();
    const auto absolute = base.appendingPathComponent(relative.text());
    EXPECT_TRUE(URL::parse(absolute.text())) << absolute.text();
    EXPECT_TRUE(absolute.path().ends_with("/t/playlist.m3u8")) << absolute.text();
  }
}

}  // namespace
}  // namespace orvo
