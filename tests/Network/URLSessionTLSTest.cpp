#include <OrvoAPI/Network/URLSession.h>
#include <openssl/ssl.h>
#include <support/HTTP2Frame.h>
#include <support/Nginx.h>
#include <tests/support/HTTPServer.h>
#include <tests/support/Outcome.h>
#include <tests/support/ScriptedServer.h>
#include <tests/support/Test.h>
#include <tests/support/Zone.h>

#include <filesystem>

namespace orvo::test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kTLSLimit = 300ms;

class URLSessionTLS : public testing::Test {
 protected:
  /// What came of a request with a token, and what the server heard of it.
  struct Exchange {
    int code = 0;
    std::string heard;
  };
  Exchange with(const std::function<std::string(Connection&)>& hear) {
    Exchange exchange;
    const ScriptedServer server([&](Connection& connection) { exchange.heard = hear(connection); });
    URLSession session({.certificateAuthorityFile = authority_.file()});
    exchange.code =
        codeOf(session.fetch({.url = secure(server), .headers = {{"Authorization", kToken}}}));
    return exchange;
  }
  static URL secure(const ScriptedServer& server) {
    return *URL::parse("https://127.0.0.1:" + std::to_string(server.port()) + "/private");
  }
  Exchange with(const Certificate& certificate, int newestVersion = TLS1_3_VERSION) {
    return with([&](Connection& connection) {
      return answerSecurely(connection, certificate, newestVersion);
    });
  }

  const CertificateAuthority authority_;
};

TEST_F(URLSessionTLS, OpensTwoConnectionsAtOnceToAHostThatMayMultiplex) {
  Signal asked;
  const ScriptedServer server([&](Connection& connection) {
    if (connection.readHead().starts_with("GET")) asked.tell();
    connection.waitForClose();
  });
  URLSession session;
  for (int i = 0; i < 5; ++i) (void)session.fetch({.url = secure(server)});
  (void)session.fetch({.url = server.url()});
  EXPECT_TRUE(asked.wait()) << "without TLS there is nothing to wait for";
  EXPECT_TRUE(eventually([&] { return server.connections() >= 3; }));
  EXPECT_EQ(server.connections(), 3);
  session.invalidateAndCancel();
}

TEST_F(URLSessionTLS, TakesItsTimeToConnect) {
  Signal asked;
  Signal released;
  const ScriptedServer slow([&](Connection& connection) {
    asked.tell();
    if (released.wait()) answerSecurely(connection, authority_.issue(), TLS1_3_VERSION);
  });
  URLSession session({.certificateAuthorityFile = authority_.file()});
  const auto fetch = session.fetch({.url = secure(slow)});
  ASSERT_TRUE(asked.wait());
  URLSession::networkChanged();  // that is about older connections
  // Another fetch measures the time.
  const ScriptedServer silent([](Connection& connection) { connection.waitForClose(); });
  EXPECT_EQ(codeOf(URLSession().fetch({.url = silent.url(), .timeoutInterval = kTLSLimit})),
            URLError::timedOut);
  EXPECT_FALSE(fetch.didComplete()) << "the time-out is a minute";
  released.tell();
  EXPECT_EQ(codeOf(fetch), 200);
}

TEST(URLSessionHTTP2, TakesEachByteForASignOfLife) {
  const std::string slow(300, 'x');
  const Nginx nginx("location / { limit_rate 100; return 200 '" + slow + "'; }");
  URLSession session({.certificateAuthorityFile = nginx.certificateFile()});
  const auto url = *URL::parse("https://127.0.0.1:" + std::to_string(nginx.http2Port));
  const auto start = Clock::now();
  EXPECT_EQ(bodyOf(session.fetch({.url = url, .timeoutInterval = 1500ms})), slow);
  EXPECT_GT(Clock::now() - start, 1500ms) << "the server was too fast to tell";
}

TEST_F(URLSessionTLS, TakesEachByteThatIsSentForASignOfLifeToo) {
  using namespace std::string_literals;
  constexpr std::size_t kSize = 5;
  const ScriptedServer server([&](Connection& connection) {
    SecureHTTP2 client(connection, authority_.issue());
    const auto nothingAtFirst = "\0\4\0\0\0\0"s;  // as a stream's window
    client.send(frame(4, 0, 0, nothingAtFirst) + frame(4, 1, 0, ""));
    client.hear("\1\5\0\0\0\1"s);
    client.send(frame(1, 5, 1, "\x88"));
    client.hear("\1\4\0\0\0\3"s);
    for (std::size_t sent = 0; sent < kSize; ++sent) {
      std::this_thread::sleep_for(kTLSLimit / 3);
      client.send(frame(8, 0, 3, "\0\0\0\1"s));
    }
    client.hear("\0\1\0\0\0\3"s);  // the end of the body
    client.send(frame(1, 5, 3, "\x88"));
    connection.waitForClose();
  });
  URLSession session({.certificateAuthorityFile = authority_.file()});
  const auto url = secure(server);
  ASSERT_EQ(codeOf(session.fetch({.url = url})), 200) << "to share its connection";
  EXPECT_EQ(codeOf(session.fetch({.url = url,
                                  .method = "POST",
                                  .body = Data(std::string(kSize, 'x')),
                                  .timeoutInterval = kTLSLimit})),
            200);
}

TEST_F(URLSessionTLS, ComputesInNoGroupThatWouldTakeSeconds) {
  const auto certificate = authority_.issue({.isRSA = true});
  for (const auto& [group, code] : {std::pair("ffdhe4096", URLError::networkConnectionLost),
                                    std::pair("ffdhe6144", URLError::secureConnectionFailed)}) {
    const auto end = with([&, group = group](Connection& connection) {
      agreeInGroup(connection, certificate, group);
      return std::string();
    });
    EXPECT_EQ(end.code, code) << group;
  }
}

TEST_F(URLSessionTLS, TellsNothingToWhomItDoesNotTrust) {
  const CertificateAuthority stranger;
  for (const int version : {TLS1_2_VERSION, TLS1_3_VERSION}) {
    const auto trusted = with(authority_.issue(), version);
    EXPECT_EQ(trusted.code, 200);
    EXPECT_NE(trusted.heard.find(kToken), std::string::npos) << "the server is no witness";
    for (const auto& [certificate, code] :
         {std::pair(authority_.issue({.validTo = -1h}), URLError::serverCertificateHasBadDate),
          std::pair(authority_.issue({.validFrom = 1h, .validTo = 2h}),
                    URLError::serverCertificateNotYetValid),
          std::pair(authority_.issue({.selfSigned = true}), URLError::serverCertificateUntrusted),
          std::pair(authority_.issue({.address = "127.0.0.2"}),
                    URLError::serverCertificateUntrusted),
          std::pair(stranger.issue(), URLError::serverCertificateHasUnknownRoot)}) {
      const auto refused = with(certificate, version);
      EXPECT_EQ(refused.code, code);
      EXPECT_EQ(refused.heard, "") << code;
    }
  }
  const auto old = with(authority_.issue(), TLS1_1_VERSION);
  EXPECT_EQ(old.code, URLError::secureConnectionFailed);
  EXPECT_EQ(old.heard, "");
}

TEST_F(URLSessionTLS, TellsNothingWhereNoHandshakeIsDone) {
  using namespace std::string_literals;
  // Takes a version that was not offered.
  const auto hello =
      "\x16\x03\x02\x00\x2a\x02\x00\x00\x26\x03\x02"s + std::string(32, 'r') + "\x00\xc0\x13\x00"s;
  for (const auto& said : {""s, "220 hello\r\n"s, hello, hello.substr(0, 20),
                           "\x15\x03\x01\x00\x02\x02\x46"s /* no such version */}) {
    const auto failed = with([&](Connection& connection) {
      connection.send(said);
      connection.finish();
      return connection.waitForClose();
    });
    EXPECT_EQ(failed.code, URLError::secureConnectionFailed) << said;
    EXPECT_EQ(failed.heard.front(), '\x16') << "a handshake begins so";
    EXPECT_EQ(failed.heard.find(kToken), std::string::npos);
    EXPECT_EQ(failed.heard.find("/private"), std::string::npos);
  }
}

TEST_F(URLSessionTLS, KeepsItsConnectionsAndRefusesADowngrade) {
  const ScriptedServer plain([](Connection& connection) { connection.waitForClose(); });
  const HTTPServer server(
      [&](const ServedRequest& request) -> ServedAnswer {
        if (request.target != "/down") return {};
        return {302, "stay", {{"Location", plain.url().text()}}};
      },
      authority_.issue());
  const HTTPServer up([&](const ServedRequest&) -> ServedAnswer {
    return {302, "", {{"Location", server.url("/").text()}}};
  });
  const Variable file("SSL_CERT_FILE", authority_.file());
  URLSession session;
  EXPECT_EQ(codeOf(session.fetch({.url = up.url()})), 200);
  const URLRequest down{.url = server.url("/down"), .headers = {{"Authorization", kToken}}};
  EXPECT_EQ(bodyOf(session.fetch(down)), "stay");
  const auto requests = server.requests();
  EXPECT_EQ(requests[0].clientPort, requests[1].clientPort);
  EXPECT_EQ(plain.connections(), 0);
}

enum Outcome { nothingWritten, keysWritten, notFetched };

/// Fetches over TLS in a process whose environment names a file for the keys.
Outcome fetch(bool writesKeyLog) {
  const CertificateAuthority authority;
  const HTTPServer server([](const ServedRequest&) { return ServedAnswer(); }, authority.issue());
  const std::filesystem::path file = authority.file() + ".keys";
  setenv("SSLKEYLOGFILE", file.c_str(), 1);
  URLSession session({.certificateAuthorityFile = authority.file(), .writesKeyLog = writesKeyLog});
  if (codeOf(session.fetch({.url = server.url()})) != 200) return notFetched;
  const bool isEmpty = !exists(file) || is_empty(file);
  remove(file);
  return isEmpty ? nothingWritten : keysWritten;
}

TEST(URLSessionKeyLogDeathTest, IsWrittenOnlyIfTheAppSaysSo) {
  // libcurl looks at the environment once in a process.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::_Exit(fetch(false)), testing::ExitedWithCode(nothingWritten), "");
  EXPECT_EXIT(std::_Exit(fetch(true)), testing::ExitedWithCode(keysWritten), "");
}

}  // namespace
}  // namespace orvo::test
