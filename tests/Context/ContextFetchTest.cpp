#include <OrvoAPI/Network/DefaultNetworkProvider.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "tests/Context/StubbedContext.h"
#include "tests/support/HTTPServer.h"
#include "tests/support/Signal.h"

namespace orvo {
namespace {

using namespace std::chrono_literals;
using Kind = SearchCollection::ResultsKind;

const Date kStart(1'493'632'800'000);  // 2017-05-01T10:00:00Z
const Date kEnd(1'493'719'200'500);
const ListFetchOptions kPage{.page = PageRequest{.offset = 20, .limit = 10}};
const Video kIncluded{.id = "v&1", .title = "T", .shortDescription = "S"};

/// A collection, a list of search results or a page of the guide: all that is not told by its path.
constexpr std::string_view kListBody =
    R"({"id": "c", "type": "generic", "label": "L", "short_label": "L", "items": [],
        "collections": [], "meta": {"total": 1, "limit": 1, "offset": 0}})";

test::ServedAnswer documentFor(const test::ServedRequest& request) {
  const std::string_view target = request.target;
  if (target.starts_with("/v3/products/")) return {.body = std::string(kVideoBody)};
  if (target.starts_with("/v3/search/suggest")) return {.body = R"(["a"])"};
  return {.body = target.starts_with("/lineup") ? "[]" : std::string(kListBody)};
}

/// Notes the requests on their way to the network.
class Recorder final : public NetworkDataProvider {
 public:
  explicit Recorder(std::shared_ptr<SessionProvider> session) : network_(std::move(session)) {}
  Future<HTTPResult> fetch(const URLRequest& request) override {
    const std::lock_guard guard(mutex_);
    last_ = request;
    return network_.fetch(request);
  }
  [[nodiscard]] URLRequest last() {
    const std::lock_guard guard(mutex_);
    return *last_;
  }

 private:
  DefaultNetworkProvider network_;
  std::mutex mutex_;
  std::optional<URLRequest> last_;  // guarded by mutex_
};

/// A context of a real server.
struct ServedContext {
  test::HTTPServer server{documentFor};
  std::shared_ptr<SessionProvider> session = std::make_shared<StubSessionProvider>("token");
  std::shared_ptr<Recorder> network = std::make_shared<Recorder>(session);
  std::shared_ptr<Context> context = makeContext(
      server.url("/v3/"), configurationBody(server.url("/live?q=1").text()), session, network);
};

/// Waits for the future; whether it succeeded.
using Outcome = std::function<bool()>;

template <class T>
Outcome outcome(const Future<T>& future) {
  const auto ended = std::make_shared<test::Signal>();
  future.onComplete([ended](const auto&) { ended->tell(); });
  return [future, ended] { return ended->wait() && future.didSucceed(); };
}

enum class Cached { no, yes };
constexpr auto kIgnoring = CachePolicy::reloadIgnoringLocalCacheData;
constexpr auto kStandard = CachePolicy::useProtocolCachePolicy;

struct RequestCase {
  std::string target;
  std::function<Outcome(const Context&)> fetch;
  Cached cached;
  std::chrono::milliseconds timeout = 10s;
  CachePolicy policy = kIgnoring;
  std::string token = "token";
};

const std::vector<RequestCase> kRequests{
    {"/v3/products/a/b", [](auto& c) { return outcome(c.fetchPage("a/b")); }, Cached::yes},
    {"/v3/products/a", [](auto& c) { return outcome(c.fetchPage("a", {.noCache = true})); },
     Cached::no},
    {"/v3/products/a?x=1",
     [](auto& c) { return outcome(c.fetchVideo("a?x=1", {.playlistID = "p"})); }, Cached::yes},
    {"/v3/products/a", [](auto& c) { return outcome(c.fetchVideo("a", {.noCache = true})); },
     Cached::no},
    {"/v3/products/a", [](auto& c) { return outcome(c.fetchContentItem("a")); }, Cached::yes},
    {"/v3/products/a", [](auto& c) { return outcome(c.fetchSystemView("a", "L")); }, Cached::yes,
     15s},
    {"/v3/collections/a", [](auto& c) { return outcome(c.fetchItemCollection("a")); }, Cached::yes},
    {"/v3/collections/a?x=1&offset=20&limit=10",
     [](auto& c) { return outcome(c.fetchItemCollection("a?x=1", kPage)); }, Cached::yes},
    {"/v3/playlists/playlists::a", [](auto& c) { return outcome(c.fetchPlaylist("playlists::a")); },
     Cached::yes, 60s, kStandard},
    {"/v3/playlists/a?offset=20&limit=10",
     [](auto& c) { return outcome(c.fetchPlaylist("a", kPage)); }, Cached::yes, 60s, kStandard},
    {"/v3/playlists/a?includes=v%261",
     [](auto& c) { return outcome(c.fetchPlaylist("a", kIncluded)); }, Cached::yes, 60s, kStandard},
    {"/v3/search?q=a%20b%2B%C3%A4",
     [](auto& c) { return outcome(c.fetchSearchResults("a b+\xC3\xA4")); }, Cached::no},
    {"/v3/search?q=a&collection_type=films",
     [](auto& c) { return outcome(c.fetchSearchCollection("a", Kind::films)); }, Cached::no},
    {"/v3/search?q=a&collection_type=top_results&offset=20&limit=10",
     [](auto& c) { return outcome(c.fetchSearchCollection("a", Kind::top, kPage)); }, Cached::no},
    {"/v3/search/suggest?q=", [](auto& c) { return outcome(c.fetchSearchSuggestions("")); },
     Cached::no},
    {"/v3/epg?start_time=2017-05-01T10:00:00.000Z&end_time=2017-05-02T10:00:00.000Z",
     [](auto& c) { return outcome(c.fetchLinearProgramGuide("not sent", kStart, kEnd)); },
     Cached::yes, 60s, kStandard},
    {"/v3/epg?start_time=2017-05-01T10:00:00.000Z&end_time=2017-05-02T10:00:00.000Z"
     "&offset=20&limit=10",
     [](auto& c) { return outcome(c.fetchLinearProgramGuide("not sent", kStart, kEnd, kPage)); },
     Cached::yes, 60s, kStandard},
    {"/lineup?d=1",
     [](auto& c) {
       return outcome(c.fetchLineup(*URL::parse("/lineup?d=1", c.urlService().baseURL)));
     },
     Cached::yes, 10s, kIgnoring, "(none)"},
    {"/live/v%201/token/playlist.json?q=1",
     [](auto& c) { return outcome(c.fetchVideoAdMetadata("v 1")); }, Cached::no}};

TEST(ContextFetch, SendsEachRequestOverTheWireAndKeepsWhatIsToBeKept) {
  for (const auto& [target, fetch, cached, timeout, policy, token] : kRequests) {
    ServedContext served;
    const auto first = fetch(*served.context);
    const auto second = fetch(*served.context);
    EXPECT_TRUE(first() && second()) << target;
    EXPECT_EQ(served.server.targets(), target + " " + target) << "equal fetches are not shared";
    EXPECT_TRUE(fetch(*served.context)()) << target;
    EXPECT_EQ(served.server.requests().size(), cached == Cached::yes ? 2U : 3U) << target;
    for (const auto& request : served.server.requests()) {
      EXPECT_EQ(request.method, "GET") << target;
      EXPECT_EQ(request.header("Authorization"), token) << target;
      EXPECT_EQ(request.header("Cache-Control"), "(none)") << target;
    }
    EXPECT_EQ(served.network->last().timeoutInterval, timeout) << target;
    EXPECT_EQ(served.network->last().cachePolicy, policy) << target;
  }
}

TEST(ContextFetch, AnIdentifierThatMakesNoURLIsNeverSent) {
  StubbedContext stubbed;
  for (const std::string id : {"a b", "a\n", "\xC3\xA4", "%zz", "a#b"}) {
    const auto error = errorOf(stubbed.context->fetchPage(id));
    const auto* const invalid = caseOf<URLService::Error::invalidInput>(error);
    ASSERT_NE(invalid, nullptr) << id;
    EXPECT_EQ(invalid->input, id);
  }
  EXPECT_TRUE(caseOf<URLService::Error::invalidInput>(
      errorOf(stubbed.context->fetchLineup(url("not/absolute")))));
  EXPECT_EQ(stubbed.requests(), 0U);
}

TEST(ContextFetch, ASearchForOneKindTakesTheFirstSuchCollectionOrAnEmptyOne) {
  constexpr std::string_view body = R"({"collections": [
      {"type": "generic", "collection_type": "shows", "label": "A", "short_label": "A",
       "meta": {"total": 1, "limit": 1, "offset": 0}, "items": []},
      {"type": "generic", "collection_type": "films", "label": "B", "short_label": "B",
       "meta": {"total": 1, "limit": 1, "offset": 0}, "items": []}]})";
  StubbedContext stubbed;
  const auto films = stubbed.context->fetchSearchCollection("q", Kind::films);
  stubbed.answer(200, body);
  EXPECT_EQ(films.wait(kPatience).force()->label, "B");
  const auto events = stubbed.context->fetchSearchCollection("q", Kind::events);
  stubbed.answer(200, body);
  EXPECT_EQ(events.wait(kPatience).force()->label, "events");
  EXPECT_EQ(events.wait(kPatience).force()->query, "q");
}

TEST(ContextCache, ASecondFetchIsServedUntilItsTimeIsOver) {
  StubbedContext stubbed;
  const auto first = stubbed.context->fetchVideo("v");
  stubbed.answer(200, kVideoBody);
  const auto stored = first.wait(kPatience).force();
  stubbed.clock->advance(59'999ms);
  const auto hit = stubbed.context->fetchVideo("v");
  EXPECT_EQ(hit.wait(kPatience).force(), stored);  // the same value, not a copy
  EXPECT_EQ(stubbed.requests(), 1U);
  stubbed.clock->advance(1ms);
  (void)stubbed.context->fetchVideo("v");
  EXPECT_EQ(stubbed.requests(), 2U);
}

TEST(ContextCache, NeitherAFailedNorAnUncachedFetchIsKept) {
  StubbedContext stubbed;
  const auto broken = stubbed.context->fetchPage("p");
  stubbed.answer(200, R"({"id": "p"})");
  (void)errorOf(broken);
  const auto refused = stubbed.context->fetchPage("p");
  stubbed.answer(500, kPageBody);
  (void)errorOf(refused);
  (void)stubbed.context->fetchPage("p", {.noCache = true});
  stubbed.answer(200, kPageBody);
  (void)stubbed.context->fetchPage("p");
  EXPECT_EQ(stubbed.requests(), 4U);
}

// The stored value is what the first caller asked for; a later one must not see his playlist.
TEST(ContextCache, AHitCarriesThePlaylistThatThisCallerNamed) {
  StubbedContext stubbed;
  const auto video = [&](const VideoFetchOptions& options) {
    return stubbed.context->fetchVideo("v", options);
  };
  const auto first = video({.playlistID = "one"});
  stubbed.answer(200, kVideoBody);
  const auto stored = first.wait(kPatience).force();
  EXPECT_EQ(video({.playlistID = "two"}).wait(kPatience).force()->playlistID, "two");
  EXPECT_EQ(video({}).wait(kPatience).force()->playlistID, std::nullopt);
  EXPECT_EQ(video({.playlistID = "one"}).wait(kPatience).force(), stored);
  EXPECT_EQ(stored->playlistID, "one");
}

TEST(ContextCache, AHitCarriesTheTitleThatThisCallerNamed) {
  StubbedContext stubbed;
  const auto first = stubbed.context->fetchSystemView("p", "One");
  stubbed.answer(200, kPageBody);
  EXPECT_EQ(first.wait(kPatience).force()->title, "One");
  EXPECT_EQ(stubbed.context->fetchSystemView("p", "Two").wait(kPatience).force()->title, "Two");
  EXPECT_EQ(first.wait(kPatience).force()->title, "One");
  EXPECT_EQ(stubbed.requests(), 1U);
}

}  // namespace
}  // namespace orvo
