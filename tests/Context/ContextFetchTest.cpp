#include <tests/Context/StubbedContext.h>

namespace orvo {
namespace {

using Kind = SearchCollection::ResultsKind;

const Date kStart(1'493'632'800'000);  // 2017-05-01T10:00:00Z
const Date kEnd(1'493'719'200'500);
const ListFetchOptions kPage{.page = ListPartRequest{.offset = 20, .limit = 10}};
const Video kIncluded{.id = "v&1", .title = "T", .shortDescription = "S"};

/// A collection, a list of search results or a part of the guide: all that is not told by its path.
constexpr std::string_view kListBody =
    R"({"id": "c", "type": "generic", "label": "L", "short_label": "L", "items": [],
        "collections": [], "meta": {"total": 1, "limit": 1, "offset": 0}})";

std::string_view documentFor(std::string_view target) {
  if (target.starts_with("products/")) return kVideoBody;
  if (target.starts_with("search/suggest")) return R"(["a"])";
  return target.starts_with("lineup") ? "[]" : kListBody;
}

/// Waits for an answer; whether it was a success.
using Outcome = std::function<bool()>;
/// A fetch that is yet to be sent.
using Deferred = std::function<Outcome()>;

template <class Fetch>
Deferred deferred(Fetch fetch) {
  return [fetch = std::move(fetch)]() -> Outcome {
    return [future = fetch()] { return !future.wait(kPatience).failed(); };
  };
}

enum class Cached { no, yes };
constexpr auto kIgnoring = CachePolicy::reloadIgnoringLocalCacheData;
constexpr auto kStandard = CachePolicy::useProtocolCachePolicy;

/// Capabilities where there are any: they do nothing but defer the fetch.
struct RequestCase {
  std::string target;
  std::function<Deferred(const Context&)> fetch;
  Cached cached;
  std::chrono::milliseconds timeout = 10s;
  CachePolicy policy = kIgnoring;
  std::vector<std::string_view> tokens = {kToken};
};

const std::vector<RequestCase> kRequests{
    {"products/a/b", [](auto& c) { return deferred(c.pageFetchCapability("a/b")); }, Cached::yes},
    {"products/a", [](auto& c) { return deferred(c.pageFetchCapability("a", {.noCache = true})); },
     Cached::no},
    {"products/a?x=1",
     [](auto& c) { return deferred(c.videoFetchCapability("a?x=1", {.playlistID = "p"})); },
     Cached::yes},
    {"products/a", [](auto& c) { return deferred(c.videoFetchCapability("a", {.noCache = true})); },
     Cached::no},
    {"products/a", [](auto& c) { return deferred(c.contentItemCapability("a")); }, Cached::yes},
    {"products/a", [](auto& c) { return deferred(c.systemViewCapability("a", "L")); }, Cached::yes,
     15s},
    {"collections/b",
     [](auto& c) {
       return deferred(c.collectionFetchCapabilities({"a", "b"})[1]);
     },
     Cached::yes},
    {"collections/a?x=1&offset=20&limit=10",
     [](auto& c) { return deferred([&c] { return c.fetchItemCollection("a?x=1", kPage); }); },
     Cached::yes},
    {"playlists/playlists::a",
     [](auto& c) { return deferred(c.playlistCapability("playlists::a")); }, Cached::yes, 60s,
     kStandard},
    {"playlists/a?offset=20&limit=10",
     [](auto& c) { return deferred([&c] { return c.fetchPlaylist("a", kPage); }); }, Cached::yes,
     60s, kStandard},
    {"playlists/a?includes=v%261",
     [](auto& c) { return deferred([&c] { return c.fetchPlaylist("a", kIncluded); }); },
     Cached::yes, 60s, kStandard},
    {"search?q=a%20b%2B%C3%A4%26c%3Dd%3B",
     [](auto& c) { return deferred(c.searchCapability("a b+\xC3\xA4&c=d;")); }, Cached::no},
    {"search?q=a&collection_type=top_results&offset=20&limit=10",
     [](auto& c) {
       return deferred([&c] { return c.fetchSearchCollection("a", Kind::top, kPage); });
     },
     Cached::no},
    {"search/suggest?q=", [](auto& c) { return deferred(c.searchSuggestionsCapability("")); },
     Cached::no},
    {"epg?start_time=2017-05-01T10:00:00.000Z&end_time=2017-05-02T10:00:00.000Z"
     "&offset=20&limit=10",
     [](auto& c) { return deferred(c.linearProgramGuideCapability(kStart, kEnd, kPage)); },
     Cached::yes, 60s, kStandard},
    {"lineup?d=1",
     [](auto& c) {
       return deferred(
           c.lineupCapability({.url = *URL::parse("lineup?d=1", c.urlService().baseURL)}));
     },
     Cached::yes,
     10s,
     kIgnoring,
     {}},
    {"live/v%201/" + kToken + "/playlist.json?q=1",
     [](auto& c) { return deferred(c.videoAdMetadataCapability("v 1")); }, Cached::no}};

TEST(ContextFetch, SendsEachRequestWhenItIsCalledAndKeepsWhatIsToBeKept) {
  for (const auto& [target, capability, cached, timeout, policy, tokens] : kRequests) {
    StubbedContext stubbed;
    const auto fetch = capability(*stubbed.context);
    EXPECT_EQ(stubbed.requests(), 0U) << target;
    const auto first = fetch();
    const auto second = fetch();
    EXPECT_EQ(stubbed.requests(), 2U) << target << ": equal fetches are not shared";
    EXPECT_EQ(stubbed.requested(), target);
    const auto request = stubbed.network->request(1);
    EXPECT_EQ(request.method, "GET") << target;
    EXPECT_EQ(request.headers.values("Authorization"), tokens) << target;
    EXPECT_EQ(request.timeoutInterval, timeout) << target;
    EXPECT_EQ(request.cachePolicy, policy) << target;
    for (int i = 0; i < 2; ++i) stubbed.answer(200, documentFor(target));
    EXPECT_TRUE(first() && second()) << target;
    (void)fetch();
    EXPECT_EQ(stubbed.requests(), cached == Cached::yes ? 2U : 3U) << target;
  }
}

TEST(ContextFetch, AnIdentifierThatMakesNoURLIsNeverSent) {
  StubbedContext stubbed;
  for (const std::string id : {"a b", "a\n", "\xC3\xA4", "%zz", "a#b"}) {
    const auto error = errorOf(stubbed.context->fetchPage(id));
    EXPECT_EQ(caseOf<URLService::Error::invalidInput>(error)->input, id);
  }
  EXPECT_TRUE(caseOf<URLService::Error::invalidInput>(
      errorOf(stubbed.context->fetchLineup(url("not/absolute")))));
  EXPECT_EQ(stubbed.requests(), 0U);
}

TEST(ContextFetch, EachFailureSaysWhatWasAskedFor) {
  StubbedContext stubbed;
  const auto& context = *stubbed.context;
  const auto said = [](const auto& future) {
    const auto error = errorOf(future);
    return error.context() != nullptr ? error.context()->description() : "nothing";
  };
  const auto missing = context.fetchItemCollection("c");
  stubbed.answer(404);
  EXPECT_EQ(said(missing), "fetchItemCollection c");
  const auto unreadable = context.fetchSearchSuggestions("q");
  stubbed.answer(200, "{}");
  EXPECT_EQ(said(unreadable), "fetchSearchSuggestions q");
  EXPECT_TRUE(caseOf<GeneralError::underlying>(errorOf(unreadable)));
  const auto lost = context.fetchLineup(url("http://h/l?q"));
  stubbed.queue->run();
  stubbed.network->fetches.fail(2, URLError{URLError::timedOut, "late"});
  stubbed.queue->run();
  EXPECT_EQ(said(lost), "fetchLineup /l");
  EXPECT_EQ(errorOf(lost).as<URLError>()->code, URLError::timedOut);
  EXPECT_EQ(said(context.fetchVideo("a b")), "fetchVideo a b");
  const auto mapped = context.fetchPage("a b").map([](const auto& page) { return page->id; });
  EXPECT_EQ(said(mapped), "fetchPage a b");
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

// The stored value is what the first caller asked for; a later one must not see that.
TEST(ContextCache, AHitCarriesThePlaylistOrTitleThatThisCallerNamed) {
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

  const auto view = stubbed.context->fetchSystemView("p", "One");
  stubbed.answer(200, kPageBody);
  EXPECT_EQ(view.wait(kPatience).force()->title, "One");
  EXPECT_EQ(stubbed.context->fetchSystemView("p", "Two").wait(kPatience).force()->title, "Two");
  EXPECT_EQ(view.wait(kPatience).force()->title, "One");
  EXPECT_EQ(stubbed.requests(), 2U);
}

TEST(RequestPipeline, TakesAStatusBelow400ForASuccess) {
  StubbedContext stubbed;
  for (const int status : {100, 399, 400}) {
    const auto page = stubbed.context->fetchPage("a", {.noCache = true});
    stubbed.answer(status, kPageBody);
    EXPECT_EQ(page.wait(kPatience).failed(), status == 400) << status;
  }
}

TEST(RequestPipeline, RenewsTheSessionOnceWhenATokenIsRefused) {
  StubbedContext stubbed;
  auto& renewals = stubbed.session->updates;
  const auto refused = [&] {
    const auto page = stubbed.context->fetchPage("a", {.noCache = true});
    stubbed.answer(401);
    return page;
  };
  const auto twice = refused();
  stubbed.session->setToken(kToken + "-2");
  renewals.succeed(0, true);
  EXPECT_EQ(stubbed.requests(), 2U);
  EXPECT_EQ(stubbed.network->request(1).headers.value("Authorization"), kToken + "-2");
  stubbed.answer(401);
  EXPECT_EQ(errorOf(twice).description(), "unexpectedStatus 401 (fetchPage a)");
  EXPECT_EQ(renewals.count(), 1U);

  const auto inVain = refused();
  renewals.succeed(1, false);
  stubbed.queue->run();
  EXPECT_NE(caseOf<SessionError::couldNotUpdateSession>(errorOf(inVain)), nullptr);
  const auto failed = refused();
  renewals.fail(2, URLError{URLError::timedOut, "silent"});
  EXPECT_EQ(stubbed.requests(), 4U) << "nothing is sent again";
  EXPECT_EQ(errorOf(failed).as<URLError>()->code, URLError::timedOut);
}

TEST(RequestPipeline, ALineupWaitsForTheTokenThatItDoesNotCarry) {
  StubbedContext stubbed;
  stubbed.session->holdTokens();
  const auto lineup = stubbed.context->fetchLineup(url("https://lineups.example/today"));
  EXPECT_EQ(stubbed.requests(), 0U);
  stubbed.session->retrievals.fail(0, SessionError::unexpectedStatus{500});
  stubbed.queue->run();
  EXPECT_EQ(caseOf<SessionError::unexpectedStatus>(errorOf(lineup))->status, 500) << "unwrapped";
}

TEST(ContextLifetime, CancellingAFetchReachesNothingUpstream) {
  StubbedContext stubbed;
  const auto video = stubbed.context->fetchVideo("v");
  stubbed.queue->run();
  video.cancel();
  EXPECT_FALSE(stubbed.network->fetches.isCancelled(0));
  EXPECT_EQ(errorOf(video).as<URLError>()->code, URLError::cancelled);
}

TEST(ContextCapabilityDeathTest, AnOffsetBeyond64BitsStopsTheProcess) {
  StubbedContext stubbed;
  Playlist playlist{.id = "p", .label = ""};
  playlist.meta = {.total = 1, .limit = 1, .offset = std::numeric_limits<std::int64_t>::max()};
  EXPECT_DEATH((void)stubbed.context->nextFetchCapability(playlist), "beyond 64 bits");
}

TEST(ContextCapability, AVideoLeadsToItsPlaylist) {
  StubbedContext stubbed;
  const auto& context = *stubbed.context;
  Video video{.id = "v", .title = "T", .shortDescription = "S"};
  const auto alone = context.playlistCapability(video)().wait(kPatience).force();
  EXPECT_EQ(stubbed.requests(), 0U);
  EXPECT_EQ(alone->id + alone->label + alone->shortLabel, "TT");
  EXPECT_EQ(alone->meta, (PagingMeta{.total = 1, .limit = 1, .offset = 0}));
  EXPECT_EQ(alone->items, std::vector{video});

  video.deepLinkPlaylistID = "deep";
  (void)context.playlistCapability(video)();
  EXPECT_EQ(stubbed.requested(), "playlists/deep?includes=v");
  video.playlistID = "own";
  (void)context.playlistCapability(video)();
  EXPECT_EQ(stubbed.requested(), "playlists/own?includes=v");

  EXPECT_FALSE(context.nextPlaylistCapability(video));
  video.nextPlaylistID = "next";
  (void)(*context.nextPlaylistCapability(video))();
  EXPECT_EQ(stubbed.requested(), "playlists/next");
}

TEST(ContextCapability, AVideosIdentifierLeadsToThePlaylistOfTheFetchedVideo) {
  StubbedContext stubbed{.callbackQueue = DispatchQueue::global()};
  const auto playlist = stubbed.context->playlistCapability("v", "list")();
  ASSERT_TRUE(stubbed.network->fetches.waitForCount(1));
  stubbed.answer(200, kVideoBody);
  ASSERT_TRUE(stubbed.network->fetches.waitForCount(2));
  EXPECT_EQ(stubbed.requested(), "playlists/list?includes=v");
  stubbed.answer(200, R"({"id": "list", "label": "L", "short_label": "L",
                          "meta": {"total": 0, "limit": 0, "offset": 0}, "items": []})");
  EXPECT_EQ(playlist.wait(kPatience).force()->items.front().playlistID, "list");
}

TEST(ContextCapability, TheConfigurationsListsComeWithTheirFetch) {
  StubbedContext stubbed;
  const auto views = stubbed.context->systemViews();
  ASSERT_EQ(views.size(), 2U);
  EXPECT_EQ(views[0].name + views[0].label + views[0].id, "discoverDiscoverd");
  EXPECT_EQ(views[1].name, "channels");
  (void)views[1].fetch();
  EXPECT_EQ(stubbed.requested(), "products/c");

  const auto events = stubbed.context->upcomingEventsCapability();
  EXPECT_EQ(events.label, "Soon");
  (void)events.fetch();
  EXPECT_EQ(stubbed.requested(), "playlists/playlists::soon") << "the identifier unchanged";
}

TEST(Context, BuildsStreamAddressesWithTheCurrentToken) {
  StubbedContext stubbed;
  EXPECT_EQ(stubbed.context->videoURL("v").text(),
            "https://hls.example/live/v/" + kToken + "/playlist.m3u8?q=1");
  stubbed.session->setToken("t/2 ");
  // A path cannot hold a space; an identifier from the network must not stop the process.
  EXPECT_EQ(stubbed.context->videoURL("a b").text(),
            "https://hls.example/live/a%20b/t/2%20/playlist.m3u8?q=1");
}

}  // namespace
}  // namespace orvo
