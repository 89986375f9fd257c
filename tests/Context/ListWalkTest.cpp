#include <tests/Context/StubbedContext.h>

namespace orvo {
namespace {

constexpr auto kLast = std::numeric_limits<std::int64_t>::max();

/// One part without items; it reads as any of the four kinds.
std::string body(const PagingMeta& meta) {
  const auto part = R"("type": "generic", "collection_type": "films", "label": "L",
      "short_label": "L", "items": [], "meta": {"total": )" +
                    std::to_string(meta.total) + R"(, "limit": )" + std::to_string(meta.limit) +
                    R"(, "offset": )" + std::to_string(meta.offset) + "}";
  return R"({"id": "c", "collections": [{)" + part + "}], " + part + "}";
}

/// The collection "c" of a context whose requests the test answers.
struct Walked {
  StubbedContext stubbed{};
  ListWalk<ItemCollection> walk{stubbed.context, stubbed.context->collectionCapability("c")};

  void answer(const PagingMeta& meta) { stubbed.answer(200, body(meta)); }
  /// The next part, which the server answers with; null at the end.
  Shared<ItemCollection> next(const PagingMeta& meta) {
    const auto part = walk.next();
    answer(meta);
    return part.wait(kPatience).force();
  }
  /// Null without asking the server.
  Shared<ItemCollection> end() {
    const auto part = walk.next();
    stubbed.queue->run();
    return part.wait(kPatience).force();
  }
  /// Runs the queue until the condition holds.
  template <class Condition>
  void runUntil(Condition condition) {
    while (!condition() && stubbed.queue->waitForJob(kPatience)) stubbed.queue->run();
  }
};

template <class T>
void expectTwoParts(StubbedContext& stubbed, ListWalk<T> walk, const std::string& first) {
  const auto one = walk.next();
  EXPECT_EQ(stubbed.requested(), first);
  stubbed.answer(200, body({.total = 3, .limit = 2, .offset = 0}));
  EXPECT_EQ(one.wait(kPatience).force()->meta.offset, 0);
  EXPECT_FALSE(walk.ended());
  const auto two = walk.next();
  const auto mark = first.find('?') == std::string::npos ? "?" : "&";
  EXPECT_EQ(stubbed.requested(), first + mark + "offset=2&limit=2");
  stubbed.answer(200, body({.total = 3, .limit = 2, .offset = 2}));
  EXPECT_EQ(two.wait(kPatience).force()->meta.offset, 2);
  EXPECT_TRUE(walk.ended());
}

TEST(ListWalk, FollowEachKindOfListToItsEnd) {
  StubbedContext stubbed;
  const auto& context = stubbed.context;
  expectTwoParts(stubbed, ListWalk(context, context->collectionCapability("c")), "collections/c");
  expectTwoParts(stubbed, ListWalk(context, context->playlistCapability("c")), "playlists/c");
  const auto films = SearchCollection::ResultsKind::films;
  expectTwoParts(stubbed, ListWalk(context, context->searchCapability("q", films)),
                 "search?q=q&collection_type=films");
  expectTwoParts(stubbed,
                 ListWalk(context, context->linearProgramGuideCapability(Date(0), Date(1000))),
                 "epg?start_time=1970-01-01T00:00:00.000Z&end_time=1970-01-01T00:00:01.000Z");
}

// The context stops the process when offset and limit add up beyond 64 bits, so the walk looks
// first.
TEST(ListWalk, EndWithAPartThatNoneCanFollow) {
  for (const PagingMeta meta : {PagingMeta{.total = 0, .limit = 20, .offset = 0},
                                PagingMeta{.total = kLast, .limit = 0, .offset = 0},
                                PagingMeta{.total = kLast, .limit = -1, .offset = 5},
                                PagingMeta{.total = kLast, .limit = 1, .offset = kLast},
                                PagingMeta{.total = kLast, .limit = kLast, .offset = 1}}) {
    Walked walked;
    EXPECT_EQ(walked.next(meta)->meta, meta);
    EXPECT_EQ(walked.end(), nullptr);
    EXPECT_EQ(walked.stubbed.requests(), 1U);
  }
}

TEST(ListWalk, EndBeforeAPartWhoseOffsetDoesNotGrow) {
  for (const std::int64_t offset : {10, 9, -10}) {
    Walked walked;
    EXPECT_NE(walked.next({.total = 30, .limit = 10, .offset = 10}), nullptr);
    EXPECT_EQ(walked.next({.total = 30, .limit = 10, .offset = offset}), nullptr) << offset;
    EXPECT_EQ(walked.stubbed.requested(), "collections/c?offset=20&limit=10");
    EXPECT_EQ(walked.end(), nullptr);
    EXPECT_EQ(walked.stubbed.requests(), 2U);
  }
}

TEST(ListWalk, CallsBeforeThePartCameMoveTheWalkOnce) {
  Walked walked;
  const std::vector calls{walked.walk.next(), walked.walk.next()};
  EXPECT_EQ(walked.stubbed.requests(), 2U);
  for (const auto& call : calls) {
    walked.answer({.total = 20, .limit = 10, .offset = 0});
    EXPECT_EQ(call.wait(kPatience).force()->meta.offset, 0);
  }
  (void)walked.walk.next();
  EXPECT_EQ(walked.stubbed.requested(), "collections/c?offset=10&limit=10");
}

TEST(ListWalkForEach, EndsWithTheTaskOrAnErrorAndCanGoOn) {
  Walked walked;
  const auto& queue = walked.stubbed.queue;
  const auto enough = walked.walk.forEach(queue, [](const auto&) { return false; });
  walked.answer({.total = 50, .limit = 10, .offset = 0});
  walked.runUntil([&] { return enough.didComplete(); });
  EXPECT_EQ(*enough.value(), false);

  const auto thrown = walked.walk.forEach(
      queue, [](const auto&) { throw AnyError(GeneralError::elementNotFound{}); });
  walked.answer({.total = 50, .limit = 10, .offset = 10});
  walked.runUntil([&] { return thrown.didComplete(); });
  EXPECT_TRUE(caseOf<GeneralError::elementNotFound>(*thrown.error()));

  const auto failed = walked.walk.forEach(queue, [](const auto&) { ADD_FAILURE(); });
  walked.stubbed.answer(404);
  walked.runUntil([&] { return failed.didComplete(); });
  EXPECT_TRUE(caseOf<SessionError::unexpectedStatus>(*failed.error()));
  (void)walked.walk.next();
  EXPECT_EQ(walked.stubbed.requested(), "collections/c?offset=20&limit=10");
}

TEST(ListWalkForEach, ACancelEndsItWhetherAPartIsUnderWayOrBeingShown) {
  for (const bool fromTask : {true, false}) {
    Walked walked;
    Future<bool> all;
    int calls = 0;
    const auto held = std::make_shared<int>();
    all = walked.walk.forEach(walked.stubbed.queue, [&, held](const auto&) {
      ++calls;
      if (fromTask) all.cancel();
    });
    walked.stubbed.queue->run();  // sends the request
    if (!fromTask) all.cancel();
    walked.answer({.total = 50, .limit = 10, .offset = 0});
    walked.runUntil([&] { return held.use_count() == 1; });
    EXPECT_EQ(calls, fromTask ? 1 : 0);
    EXPECT_FALSE(all.didComplete());
    EXPECT_EQ(walked.stubbed.requests(), 1U);
    EXPECT_EQ(errorOf(walked.walk.next()).as<URLError>()->code, URLError::cancelled);
  }
}

TEST(ListWalkForEach, GoesWithAFetchThatNobodyCompletes) {
  StubbedContext stubbed;
  const auto held = std::make_shared<int>();
  auto source = std::make_unique<Promise<Shared<ItemCollection>>>(stubbed.queue);
  const auto all = ListWalk(stubbed.context, [&] {
                     return source->future();
                   }).forEach(stubbed.queue, [held](const auto&) {});
  EXPECT_EQ(held.use_count(), 2);
  source.reset();
  EXPECT_EQ(held.use_count(), 1);
  EXPECT_FALSE(all.didComplete());
}

/// Answers at once, with one part of a list after another.
struct ListServer final : NetworkDataProvider {
  Future<HTTPResult> fetch(const URLRequest& request) override {
    return Future<HTTPResult>::completed(
        HTTPResult{.response = {.url = request.url, .statusCode = 200},
                   .body = Data(body({.total = kParts, .limit = 1, .offset = offset++}))});
  }
  static constexpr int kParts = 10'000;
  std::int64_t offset = 0;  // one request follows the other
};

TEST(ListWalkForEach, TenThousandPartsThatAreThereAtOnceDoNotNest) {
  const auto context =
      makeContext(std::make_shared<StubSessionProvider>(), std::make_shared<ListServer>());
  int parts = 0;
  const auto all =
      ListWalk(context, context->collectionCapability("c")).forEach([&](const auto&) { ++parts; });
  EXPECT_EQ(all.wait(kPatience).force(), true);
  EXPECT_EQ(parts, ListServer::kParts);
}

}  // namespace
}  // namespace orvo
