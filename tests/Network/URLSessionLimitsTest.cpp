#include <OrvoAPI/HTTP/RequestTimeline.h>
#include <OrvoAPI/Network/URLSession.h>
#include <tests/support/Outcome.h>
#include <tests/support/ScriptedServer.h>
#include <tests/support/Test.h>

namespace orvo::test {
namespace {

constexpr std::chrono::milliseconds kLimit{300};

/// Sends the beginning of an answer, and then some more bytes again and again.
class EndlessServer {
 public:
  EndlessServer(std::string beginning, std::string more)
      : server_([=, this](Connection& connection) {
          connection.readHead();
          connection.send(beginning);
          while (!done_) connection.trickle(more, std::chrono::milliseconds(5));
        }) {}
  EndlessServer(const EndlessServer&) = delete;
  EndlessServer& operator=(const EndlessServer&) = delete;
  ~EndlessServer() { done_ = true; }
  [[nodiscard]] URL url() const { return server_.url(); }

 private:
  std::atomic<bool> done_{false};
  const ScriptedServer server_;
};

const std::string kChunked = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n";
/// A gzip header whose file name does not end, and one whose deflate stream is about to begin.
const std::string kEndlessName("\x1f\x8b\x08\x08\0\0\0\0\0\x03", 10);
const std::string kEmptyBlocks("\x1f\x8b\x08\0\0\0\0\0\0\x03", 10);

TEST(URLSessionLimit, OfSilenceIsRenewedByNothingThatBringsNoByteOfTheBody) {
  const std::string gzip = "HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\n\r\n";
  const std::vector<std::pair<std::string, std::string>> answers = {
      {kChunked + "\r\n5;x=", "y"},
      {gzip + kEndlessName, "n"},
      {gzip + kEmptyBlocks, std::string("\0\0\0\xff\xff", 5)}};
  for (const auto& [beginning, more] : answers) {
    const EndlessServer server(beginning, more);
    EXPECT_EQ(codeOf(URLSession().fetch({.url = server.url(), .timeoutInterval = kLimit})),
              URLError::timedOut)
        << beginning;
  }
}

TEST(URLSessionLimit, EndsTwoAtOnceAndWakesAWorkerForEach) {
  SilentServer silent;
  Signal called;
  Signal ended;
  URLSession session;
  for (int due = 2; due <= 10; due += 2) {
    for (int i = 0; i < 2; ++i) {
      session.fetch({.url = silent.url(), .totalTimeoutInterval = 50ms})
          .onFailure(DispatchQueue::global(), [&, due](const AnyError&) {
            called.tell();
            EXPECT_TRUE(called.wait(due)) << "the other waits for this one's worker";
            ended.tell();
          });
    }
    ASSERT_TRUE(ended.wait(due));
  }
}

TEST(URLSessionLimit, OfTheWholeEndsWhatTricklesForever) {
  for (const std::string beginning : {"X: ", "\r\n"}) {
    const EndlessServer server("HTTP/1.1 200 OK\r\n" + beginning, "b");
    EXPECT_EQ(codeOf(URLSession().fetch({.url = server.url(), .totalTimeoutInterval = kLimit})),
              URLError::timedOut);
  }
}

TEST(URLSessionLimit, OfAHeaderIsFourIntervals) {
  const EndlessServer server("HTTP/1.1 200 OK\r\nX: ", "x");
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(codeOf(URLSession().fetch({.url = server.url(), .timeoutInterval = kLimit})),
            URLError::timedOut);
  EXPECT_GE(std::chrono::steady_clock::now() - start, 4 * kLimit);
}

/// Answers every request with a redirect to itself, in a while.
void redirectSlowly(Connection& connection) {
  while (!connection.readHead().empty()) {
    connection.trickle("HTTP/1.1 302 Found\r\nLocation: ?\r\nContent-Length: 0\r\n\r\n",
                       std::chrono::milliseconds(1));
  }
}

/// A server that says nothing, and a session whose one place there is taken.
struct TakenPlace {
  TakenPlace() { EXPECT_TRUE(silent.asked.wait()); }

  SilentServer silent;
  URLSession session{{.maximumConnectionsPerHost = 1}};
  const Future<HTTPResult> first = session.fetch({.url = silent.url()});
};

TEST(URLSessionLimit, OfTheWholeCountsTheWaitForAPlaceAndRedirects) {
  TakenPlace place;
  auto& session = place.session;
  EXPECT_EQ(codeOf(session.fetch({.url = place.silent.url(), .totalTimeoutInterval = kLimit})),
            URLError::timedOut);
  const ScriptedServer redirecting(redirectSlowly);
  EXPECT_EQ(codeOf(session.fetch({.url = redirecting.url(), .totalTimeoutInterval = kLimit})),
            URLError::timedOut);
  session.invalidateAndCancel();
}

TEST(URLSessionLimit, OfBytesOnTheWireIsFourTimesTheBodyAndWhatItBrings) {
  const ScriptedServer server([](Connection& connection) {
    connection.readHead();
    connection.send(kChunked + "\r\n5;x=");
    for (int i = 0; i < 64; ++i) connection.send(std::string(1U << 20, 'y'));
    connection.waitForClose();
  });
  URLSession session({.maximumBodySize = 1U << 20});
  EXPECT_EQ(codeOf(session.fetch({.url = server.url()})), URLError::dataLengthExceedsMaximum);
}

TEST(URLSessionFault, OfALengthThatAStrictReaderRefuses) {
  constexpr int kBad = URLError::badServerResponse, kTooLong = URLError::dataLengthExceedsMaximum;
  const std::vector<std::pair<std::string, int>> lengths = {{"4", 200},
                                                            {"4, 4", 200},
                                                            {"4\r\nContent-Length: 4", 200},
                                                            {"4, 5", kBad},
                                                            {"5, 4", kBad},
                                                            {"5\r\nContent-Length: 4", kBad},
                                                            {"4\r\nContent-Length: 5", kBad},
                                                            {"-4", kBad},
                                                            {"+4", kBad},
                                                            {"4x", kBad},
                                                            {"0x4", kBad},
                                                            {"4 4", kBad},
                                                            {"4,", kBad},
                                                            {"", kBad},
                                                            {"9223372036854775808", kTooLong},
                                                            {"99999999999999999999999", kTooLong}};
  URLSession session;
  for (const auto& [length, code] : lengths) {
    const ScriptedServer server("HTTP/1.1 200 OK\r\nContent-Length: " + length + "\r\n\r\nbody");
    EXPECT_EQ(codeOf(session.fetch({.url = server.url()})), code) << length;
  }
}

TEST(URLSessionFault, OfMoreThanOneCoding) {
  const std::string coded = "HTTP/1.1 200 OK\r\nContent-Encoding: gzip", empty = "\r\n\r\n";
  const std::vector<std::pair<std::string, int>> answers = {
      {coded + ", zstd" + empty, URLError::cannotDecodeRawData},
      {coded + "\r\ncontent-encoding: GZIP" + empty, URLError::cannotDecodeRawData},
      {coded + "\r\nTransfer-Encoding: br" + empty, URLError::cannotDecodeRawData},
      {"HTTP/1.1 103 Hints\r\nContent-Encoding: br\r\n\r\n" + coded + empty,
       URLError::cannotDecodeRawData},
      {coded + ", Identity\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n", 200}};
  for (const auto& [answer, code] : answers) {
    const ScriptedServer server(answer);
    EXPECT_EQ(codeOf(URLSession().fetch({.url = server.url()})), code) << answer;
  }
}

TEST(URLSessionFault, OfAHeaderThatIsTooLongToBeSentIsTheRequests) {
  const ScriptedServer server("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
  const std::string token(60U << 20, 't');
  EXPECT_EQ(
      codeOf(URLSession().fetch({.url = server.url(), .headers = {{"Authorization", token}}})),
      URLError::badURL);
}

TEST(URLSessionCancel, TakesARequestOutOfTheLineAtOnce) {
  Signal released;
  TakenPlace place;
  std::shared_ptr<const char> body(new char[1 + Data::kPadding](), [&](const char* bytes) {
    delete[] bytes;
    released.tell();
  });
  place.session
      .fetch({.url = place.silent.url(), .method = "PUT", .body = Data(std::move(body), 1)})
      .cancel();
  EXPECT_TRUE(released.wait());
  EXPECT_FALSE(place.first.didComplete());
  place.session.invalidateAndCancel();
}

TEST(URLSessionNetworkChange, KeepsConnectionsForWhatIsUnderWayOnly) {
  Signal asked;
  Signal changed;
  const ScriptedServer server([&](Connection& connection) {
    for (auto head = connection.readHead(); !head.empty(); head = connection.readHead()) {
      asked.tell();
      if (head.starts_with("GET /slow") && !changed.wait()) return;
      connection.send("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
    }
  });
  URLSession session;
  const auto slow = session.fetch({.url = server.url("/slow")});
  ASSERT_TRUE(asked.wait());
  EXPECT_EQ(codeOf(session.fetch({.url = server.url()})), 200);
  EXPECT_EQ(codeOf(session.fetch({.url = server.url()})), 200);
  EXPECT_EQ(server.connections(), 2);
  URLSession::networkChanged();
  EXPECT_EQ(codeOf(session.fetch({.url = server.url()})), 200);
  EXPECT_EQ(server.connections(), 3);
  changed.tell();
  EXPECT_EQ(codeOf(slow), 200);
  EXPECT_EQ(codeOf(session.fetch({.url = server.url()})), 200);
  EXPECT_EQ(server.connections(), 3);
  URLSession::networkChanged();
  EXPECT_EQ(codeOf(session.fetch({.url = server.url()})), 200);
  EXPECT_EQ(server.connections(), 4) << "it changes more than once";
}

TEST(URLSessionConnections, HaveNamesResolvedAnewWhenTheHostMayHaveMoved) {
  using Stage = RequestTimeline::Stage;
  std::atomic<bool> answers = true;
  const ScriptedServer server([&](Connection& connection) {
    connection.readHead();
    if (answers) connection.send("HTTP/1.0 204 None\r\n\r\n");
  });
  const auto url = *URL::parse("http://localhost:" + std::to_string(server.port()));
  URLSession session({.measuresRequests = true});
  const auto isResolved = [&] {
    const auto hop = valueOf(session.fetch({.url = url})).timeline->last;
    return hop.at(Stage::resolving) < hop.at(Stage::resolved);
  };
  EXPECT_TRUE(isResolved());
  EXPECT_FALSE(isResolved());
  URLSession::networkChanged();
  EXPECT_TRUE(isResolved());
  (void)isResolved();
  EXPECT_FALSE(isResolved());
  answers = false;
  EXPECT_EQ(codeOf(session.fetch({.url = url})), URLError::networkConnectionLost);
  answers = true;
  EXPECT_TRUE(isResolved()) << "it was lost";
}

}  // namespace
}  // namespace orvo::test
