#include <OrvoAPI/Network/URLSession.h>
#include <gtest/gtest.h>
#include <tests/support/Certificate.h>
#include <tests/support/HTTPServer.h>
#include <tests/support/Outcome.h>
#include <tests/support/ScriptedServer.h>

#include <string>
#include <vector>

namespace orvo::test {
namespace {

using namespace std::chrono_literals;

ServedAnswer greet(const ServedRequest&) { return {.body = "hello"}; }

class URLSessionTLS : public testing::Test {
 protected:
  /// The code of a fetch from a server with this certificate, by a client that trusts the
  /// authority. What is refused must not have been told anything.
  int codeWith(const CertificateOptions& options) { return codeWith(options, authority_); }
  int codeWith(const CertificateOptions& options, const CertificateAuthority& issuer) {
    const HTTPServer server(greet, issuer.issue(options));
    const auto code = codeOf(fetch(server.url("/secret"), authority_.file()));
    EXPECT_EQ(server.targets(), code == 200 ? "/secret" : "");
    return code;
  }
  static Future<HTTPResult> fetch(const URL& url, const std::string& trusted) {
    URLSession session({.certificateAuthorityFile = trusted});
    return session.fetch({.url = url, .headers = {{"Authorization", "token"}}});
  }

  const CertificateAuthority authority_;
};

TEST_F(URLSessionTLS, RefusesWhatIsNotToBeTrustedEachWithItsCode) {
  EXPECT_EQ(codeWith({}), 200);
  EXPECT_EQ(codeWith({.validTo = -1h}), URLError::serverCertificateHasBadDate);
  EXPECT_EQ(codeWith({.validFrom = 1h, .validTo = 2h}), URLError::serverCertificateNotYetValid);
  EXPECT_EQ(codeWith({.selfSigned = true}), URLError::serverCertificateUntrusted);
  EXPECT_EQ(codeWith({.address = "127.0.0.2"}), URLError::serverCertificateUntrusted);
  EXPECT_EQ(codeWith({}, CertificateAuthority()), URLError::serverCertificateHasUnknownRoot);
}

TEST_F(URLSessionTLS, FailsWhereNoHandshakeIsDone) {
  const auto secure = [](const ScriptedServer& server) {
    return *URL::parse("https://127.0.0.1:" + std::to_string(server.port()) + "/");
  };
  // The last is the head of a handshake by a version of the protocol that is broken.
  for (const auto& said : {std::string(), std::string("220 hello\r\n"),
                           std::string("\x15\x03\x01\x00\x02\x02\x46", 7)}) {
    const ScriptedServer server([&](Connection& connection) { connection.send(said); });
    EXPECT_EQ(codeOf(fetch(secure(server), authority_.file())), URLError::secureConnectionFailed);
  }
}

TEST_F(URLSessionTLS, KeepsItsConnectionsAndRefusesADowngrade) {
  const HTTPServer plain(greet);
  const HTTPServer server(
      [&](const ServedRequest& request) -> ServedAnswer {
        if (request.target != "/down") return {};
        return {302, "stay", {{"Location", plain.url().text()}}};
      },
      authority_.issue());
  URLSession session({.certificateAuthorityFile = authority_.file()});
  EXPECT_EQ(codeOf(session.fetch({.url = server.url("/")})), 200);
  EXPECT_EQ(bodyOf(session.fetch({.url = server.url("/down")})), "stay");
  const auto requests = server.requests();
  EXPECT_EQ(requests[0].clientPort, requests[1].clientPort);
  EXPECT_EQ(plain.targets(), "");
}

}  // namespace
}  // namespace orvo::test
