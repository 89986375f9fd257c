#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "tests/Context/StubbedContext.h"

namespace orvo {
namespace {

using namespace std::chrono_literals;

const Date kStart(1'493'632'800'000);  // 2017-05-01T10:00:00Z
const Date kEnd(1'493'719'200'500);
const ListFetchOptions kPage{.page = PageRequest{.offset = 20, .limit = 10}};

struct RequestCase {
  std::string name;
  std::function<void(const Context&)> fetch;
  std::string url;
  std::chrono::milliseconds timeout;
  CachePolicy policy;
  bool authed = true;
};

TEST(ContextFetch, SendsTheStatedRequests) {
  using Kind = SearchCollection::ResultsKind;
  const auto ignoring = CachePolicy::reloadIgnoringLocalCacheData;
  const auto standard = CachePolicy::useProtocolCachePolicy;
  const std::string base = "https://api.example/v3/";
  const Video included{.id = "v&1", .title = "T", .shortDescription = "S"};
  const std::vector<RequestCase> cases{
      {"page", [](auto& c) { (void)c.fetchPage("a/b"); }, base + "products/a/b", 10s, ignoring},
      {"video", [](auto& c) { (void)c.fetchVideo("a?x=1"); }, base + "products/a?x=1", 10s,
       ignoring},
      {"item", [](auto& c) { (void)c.fetchContentItem("a"); }, base + "products/a", 10s, ignoring},
      {"view", [](auto& c) { (void)c.fetchSystemView("a", "L"); }, base + "products/a", 15s,
       ignoring},
      {"collection", [](auto& c) { (void)c.fetchItemCollection("a"); }, base + "collections/a", 10s,
       ignoring},
      {"collection page", [](auto& c) { (void)c.fetchItemCollection("a?x=1", kPage); },
       base + "collections/a?x=1&offset=20&limit=10", 10s, ignoring},
      {"playlist", [](auto& c) { (void)c.fetchPlaylist("playlists::a", kPage); },
       base + "playlists/playlists::a?offset=20&limit=10", 60s, standard},
      {"including", [&](auto& c) { (void)c.fetchPlaylist("a", included); },
       base + "playlists/a?includes=v%261", 60s, standard},
      {"search", [](auto& c) { (void)c.fetchSearchResults("a b+\xC3\xA4"); },
       base + "search?q=a%20b%2B%C3%A4", 10s, ignoring},
      {"search kind", [](auto& c) { (void)c.fetchSearchCollection("a", Kind::top, kPage); },
       base + "search?q=a&collection_type=top_results&offset=20&limit=10", 10s, ignoring},
      {"suggestions", [](auto& c) { (void)c.fetchSearchSuggestions(""); },
       base + "search/suggest?q=", 10s, ignoring},
      {"guide", [](auto& c) { (void)c.fetchLinearProgramGuide("not sent", kStart, kEnd, kPage); },
       base + "epg?start_time=2017-05-01T10:00:00.000Z&end_time=2017-05-02T10:00:00.000Z"
              "&offset=20&limit=10",
       60s, standard},
      {"lineup", [](auto& c) { (void)c.fetchLineup(url("http://other.example/l?d=1")); },
       "http://other.example/l?d=1", 10s, ignoring, false},
      {"ads", [](auto& c) { (void)c.fetchVideoAdMetadata("v 1"); },
       "https://hls.example/live/v%201/token/playlist.json?q=1", 10s, ignoring}};
  for (const auto& [name, fetch, text, timeout, policy, authed] : cases) {
    StubbedContext stubbed;
    fetch(*stubbed.context);
    ASSERT_EQ(stubbed.requests(), 1U) << name;
    const auto request = stubbed.network->request(0);
    EXPECT_EQ(request.url.text(), text) << name;
    EXPECT_EQ(request.method, "GET") << name;
    EXPECT_EQ(request.timeoutInterval, timeout) << name;
    EXPECT_EQ(request.cachePolicy, policy) << name;
    EXPECT_EQ(request.headers.contains("Authorization"), authed) << name;
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

TEST(ContextCache, NoCacheNeitherReadsNorWrites) {
  StubbedContext stubbed;
  const auto fresh = stubbed.context->fetchPage("p", {.noCache = true});
  stubbed.answer(200, kPageBody);
  (void)fresh.wait(kPatience).force();
  const auto cached = stubbed.context->fetchPage("p");
  EXPECT_EQ(stubbed.requests(), 2U);
  stubbed.answer(200, kPageBody);
  (void)cached.wait(kPatience).force();
  (void)stubbed.context->fetchPage("p", {.noCache = true});
  EXPECT_EQ(stubbed.requests(), 3U);
}

TEST(ContextCache, AFailedFetchStoresNothing) {
  StubbedContext stubbed;
  const auto broken = stubbed.context->fetchPage("p");
  stubbed.answer(200, R"({"id": "p"})");
  (void)errorOf(broken);
  const auto refused = stubbed.context->fetchPage("p");
  stubbed.answer(500, kPageBody);
  (void)errorOf(refused);
  (void)stubbed.context->fetchPage("p");
  EXPECT_EQ(stubbed.requests(), 3U);
}

TEST(ContextCache, EqualFetchesInFlightAreNotShared) {
  StubbedContext stubbed;
  (void)stubbed.context->fetchPage("p");
  (void)stubbed.context->fetchPage("p");
  EXPECT_EQ(stubbed.requests(), 2U);
}

// The stored value is what the first caller asked for; a later one must not see his playlist.
TEST(ContextCache, AHitCarriesThePlaylistThatThisCallerNamed) {
  StubbedContext stubbed;
  const auto first = stubbed.context->fetchVideo("v", {.playlistID = "one"});
  stubbed.answer(200, kVideoBody);
  const auto stored = first.wait(kPatience).force();
  const auto other =
      stubbed.context->fetchVideo("v", {.playlistID = "two"}).wait(kPatience).force();
  const auto none = stubbed.context->fetchVideo("v").wait(kPatience).force();
  const auto same = stubbed.context->fetchVideo("v", {.playlistID = "one"}).wait(kPatience).force();
  EXPECT_EQ(other->playlistID, "two");
  EXPECT_EQ(none->playlistID, std::nullopt);
  EXPECT_EQ(same, stored);
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

TEST(ContextFetch, ASearchForOneKindTakesTheFirstSuchCollectionOrAnEmptyOne) {
  using Kind = SearchCollection::ResultsKind;
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

}  // namespace
}  // namespace orvo
