#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <openssl/ssl.h>
#include <openssl/x509_vfy.h>
#include <soak/FaultyServer.h>
#include <tests/Tool/Fixtures.h>
#include <tests/support/ScriptedServer.h>
#include <tool/doctor/TLSCheck.h>
#include <unistd.h>

#include <fstream>
#include <map>

namespace orvo::tool {
namespace {

using test::CertificateAuthority;
using test::Connection;
using test::ScriptedServer;

/// What the doctor finds out: of each step whether it is good, what there is and what to do.
struct Findings {
  explicit Findings(const std::string& line) : run(runLine(line)) {
    const auto document = JSONDataParser::object(Data(run.output)).force();
    isWell = document.boolean("ok").value_or(false);
    const auto checks = document.array("checks").value();
    for (const auto& value : checks) {
      const auto check = *value.object();
      std::string text(*check.string("outcome"));
      text.append(": ").append(*check.string("detail"));
      if (const auto advice = check.string("advice")) text.append("; ").append(*advice);
      of[std::string(*check.string("name"))] = text;
    }
  }

  const ToolRun run;
  bool isWell = false;
  std::map<std::string, std::string> of;
};

std::string doctor(const std::string& api, const std::string& before = "", int patience = 1) {
  return before + " orvo doctor --json --patience " + std::to_string(patience) + " --api " + api;
}

bool has(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST(Doctor, IsSatisfiedWithAGoodService) {
  const Findings found("orvo --demo doctor --json");
  EXPECT_TRUE(found.isWell);
  EXPECT_EQ(found.run.status, 0);
  EXPECT_EQ(found.of.size(), 10U);
  for (const auto& [name, text] : found.of) EXPECT_TRUE(text.starts_with("good: ")) << name << text;
  EXPECT_EQ(found.run.error, "");
}

/// What is said of the session when a server makes each of these faults.
const std::map<std::string, std::string>& complaints() {
  static const std::string broken = "the document cannot be read";
  static const std::string cut = "cuts its answers off";
  static const std::string endless = "has no end";
  static const std::map<std::string, std::string> all{
      {"none", broken},
      {"chunked", broken},
      {"gzip", broken},
      {"interim", broken},
      {"trickle", broken},
      {"early close", broken},
      {"redirect", broken},
      {"redirect loop", "redirects in a circle"},
      {"reset", cut},
      {"close", cut},
      {"wrong length", cut},
      {"broken chunk", cut},
      {"wrong encoding", "is not compressed as it says"},
      {"garbage", "does not speak HTTP"},
      {"stall", "answers too slowly"},
      {"endless header", endless},
      {"endless body", endless},
      {"bomb", endless}};
  return all;
}

TEST(Doctor, EndsAStepWithItsPatience) {
  const ScriptedServer server([](Connection& connection) {
    for (std::string head; !(head = connection.readHead()).empty();) {
      const bool isSession = has(head, "/session"), isConfiguration = has(head, "/configuration");
      const std::string body = isSession         ? R"({"token":"secret-token"})"
                               : isConfiguration ? fixture("context-configuration.json")
                                                 : std::string(30, ' ') + "{}";
      connection.send("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) +
                      "\r\n\r\n");
      if (isSession || isConfiguration) {
        connection.send(body);
      } else {
        connection.trickle(body, 100ms);
      }
    }
  });
  const Findings found(doctor(server.url().text(), "", 2));
  EXPECT_TRUE(found.of.at("configuration").starts_with("good: ")) << found.run.output;
  EXPECT_TRUE(has(found.of.at("page"), "bad: the whole answer did not come in time"));
  EXPECT_TRUE(has(found.of.at("page"), "; the service answers too slowly"));
  EXPECT_EQ(found.of.at("stream"), "skipped: there is no page");
}

TEST(Doctor, TellsWhatToDoAboutEachFaultOfAServer) {
  const auto& server = *new soak::FaultyServer(4);  // its threads never end
  for (std::size_t i = 0; i < soak::faults().size(); ++i) {
    const std::string name = soak::faults()[i].name;
    // Only one of them waits; an answer without end takes its time.
    const Findings found(
        doctor("http://127.0.0.1:" + std::to_string(server.port()) + "/" + std::to_string(i) + "/",
               "", name == "stall" ? 1 : 30));
    EXPECT_EQ(found.run.status, 1) << name;
    EXPECT_TRUE(found.of.at("connection").starts_with("good: 127.0.0.1 port")) << name;
    EXPECT_TRUE(found.of.at("session").starts_with("bad: ")) << name;
    EXPECT_TRUE(has(found.of.at("session"), complaints().at(name)))
        << name << ": " << found.of.at("session");
    EXPECT_TRUE(found.of.at("configuration").starts_with("bad: ")) << name;
    EXPECT_EQ(found.of.at("page"), "skipped: there is no session");
  }
}

/// What is said of TLS, by whom only this authority is trusted.
std::string tls(const CertificateAuthority& authority, const ScriptedServer::Script& script) {
  const ScriptedServer server(script);
  const Findings found(doctor("https://127.0.0.1:" + std::to_string(server.port()) + "/",
                              "SSL_CERT_FILE=" + authority.file()));
  const bool isGood = found.of.at("TLS").starts_with("good: ");
  EXPECT_NE(isGood, found.of.at("session") == "skipped: there is no secure connection");
  return found.of.at("TLS");
}

TEST(Doctor, TellsWhatIsWrongWithACertificate) {
  const CertificateAuthority authority;
  const CertificateAuthority stranger;
  const auto with = [&](const test::Certificate& certificate, int version = TLS1_3_VERSION) {
    return tls(authority, [&, version](Connection& connection) {
      answerSecurely(connection, certificate, version);
    });
  };
  const std::string good = with(authority.issue({.validTo = 24h * 40}));
  EXPECT_TRUE(good.starts_with("good: TLSv1.3, issued by Test authority")) << good;
  EXPECT_TRUE(good.ends_with("(for 39 days)")) << good;
  EXPECT_TRUE(has(with(authority.issue(), TLS1_2_VERSION), "good: TLSv1.2"));
  EXPECT_TRUE(has(with(authority.issue()), "; the certificate ends soon: have it renewed"));
  EXPECT_TRUE(has(with(authority.issue({.validTo = -1h})), "bad: the certificate was good until "));
  EXPECT_TRUE(has(with(authority.issue({.validFrom = 1h, .validTo = 2h})), "is not good before"));
  EXPECT_TRUE(has(with(authority.issue({.selfSigned = true})), "signed by nobody but itself"));
  EXPECT_TRUE(has(with(authority.issue({.address = "127.0.0.2"})),
                  "bad: the certificate is for another name: 127.0.0.2; "));
  EXPECT_TRUE(has(with(stranger.issue()), "nobody here knows who issued the certificate: Test"));
  EXPECT_TRUE(has(with(authority.issue(), TLS1_1_VERSION), "no version of TLS from 1.2 on"));
}

TEST(Doctor, TellsWhichFileNamesNoAuthorities) {
  const ScriptedServer server([](Connection& connection) { connection.waitForClose(); });
  const std::string line = doctor("https://127.0.0.1:" + std::to_string(server.port()) + "/");
  for (const auto& [file, complaint] : {std::pair("ff", "ff, which is no regular file"),
                                        std::pair("/", "/, which is no regular file"),
                                        std::pair("nothing", "nothing, which is not there"),
                                        std::pair("/proc/version", "no certificates can be")}) {
    const Findings found("cd $(mktemp -d); mkfifo ff; SSL_CERT_FILE=" + std::string(file) + line +
                         "; rm -r $PWD");
    EXPECT_TRUE(has(found.of.at("TLS"), complaint)) << found.of.at("TLS");
  }
  const auto refused = runLine("SSL_CERT_FILE=/ orvo views --api https://127.0.0.1:1/");
  EXPECT_TRUE(has(refused.error, "SSL_CERT_FILE names /, which is no regular file"));
}

TEST(Doctor, TellsWhatItKnowsWhenItIsInterrupted) {
  const std::string asked = testing::TempDir() + "orvo-asked-" + std::to_string(getpid());
  std::atomic<bool> isAsked = false;
  const ScriptedServer server([&](Connection& connection) {
    const bool isFirst = !connection.readHead().empty() && !isAsked.exchange(true);
    if (isFirst) std::ofstream(asked) << "now" << std::endl;
    connection.waitForClose();
  });
  const Findings found("set -m; mkfifo " + asked + "; $" +
                       doctor(server.url().text(), "", 60).substr(1) + " & read line < " + asked +
                       "; kill -INT $!; wait $!; rm " + asked);
  EXPECT_TRUE(found.of.at("connection").starts_with("good: ")) << found.run.error;
  EXPECT_FALSE(found.of.contains("session"));
}

TEST(Doctor, TellsWhyNoHandshakeIsDone) {
  using namespace std::string_literals;
  const CertificateAuthority authority;
  const auto hello =
      "\x16\x03\x02\x00\x2a\x02\x00\x00\x26\x03\x02"s + std::string(32, 'r') + "\x00\xc0\x13\x00"s;
  for (const auto& [said, complaint] :
       {std::pair(""s, "closed during the handshake"), std::pair("220 hello\r\n"s, "speak TLS"),
        std::pair("HTTP/1.1 400 Bad Request\r\n\r\n"s, "speak TLS"),
        std::pair(hello, "no version of TLS"),
        std::pair(hello.substr(0, 20), "closed during the handshake"),
        std::pair("\x15\x03\x01\x00\x02\x02\x46"s, "no version of TLS")}) {
    const std::string text = tls(authority, [said = said](Connection& connection) {
      connection.send(said);
      connection.finish();
      connection.waitForClose();
    });
    EXPECT_TRUE(text.starts_with("bad: ") && has(text, complaint)) << text;
  }
  EXPECT_TRUE(has(tls(authority, [](Connection& connection) { connection.waitForClose(); }),
                  "does not answer the handshake"));
}

TEST(Doctor, TellsOfProxiesAndPagesForPeople) {
  const test::HTTPServer pages([](const test::ServedRequest& request) -> test::ServedAnswer {
    const bool isProxied = request.target.starts_with("http://");
    return {isProxied ? 403 : 200,
            "<html>",
            {{"Via", "1.1 cache.test"}, {"Content-Type", "text/html"}}};
  });
  const std::string proxied = doctor("http://api.test/", "http_proxy=" + pages.url().text());
  EXPECT_EQ(Findings(proxied).of.at("session"),
            "bad: status 403, from a proxy or from the service behind it (1.1 cache.test); the "
            "service refuses this device or this address; if it is the proxy, have it let the "
            "service's host pass, or name it in no_proxy");
  const ScriptedServer closed("HTTP/1.1 407 Who are you\r\n\r\n");
  const Findings tunnel(doctor("https://api.test/", "https_proxy=" + closed.url().text()));
  EXPECT_TRUE(has(tunnel.of.at("name"), "(the proxy that https_proxy names)"));
  EXPECT_TRUE(has(tunnel.of.at("TLS"),
                  "does not let it pass: it answers \"HTTP/1.1 407 Who are you\"; the proxy wants "
                  "a name and a password"));
  const test::HTTPServer wrong([](const test::ServedRequest&) -> test::ServedAnswer {
    return {200, "\n <!doctype html>", {{"Date", "Sun, 06 Nov 1994 08:49:37 GMT"}}};
  });
  const Findings web(doctor(wrong.url().text()));
  EXPECT_TRUE(has(web.of.at("session"), "bad: a web page answers instead of the service; "));
  EXPECT_TRUE(has(web.of.at("clock"), " years ahead of the service's; set the device's clock, or"));
}

TEST(Doctor, TellsTheStatusOfAnErrorThatComesWithAPage) {
  const std::map<int, std::string> advices{{403, "the service refuses this device"},
                                           {404, "there is no such thing"},
                                           {429, "too many requests"},
                                           {502, "the service is out of order"}};
  for (const auto& [status, advice] : advices) {
    const test::HTTPServer server([status = status](const auto&) -> test::ServedAnswer {
      return {status, "<html>", {{"Content-Type", "text/html"}}};
    });
    const auto session = Findings(doctor(server.url().text())).of.at("session");
    EXPECT_TRUE(session.starts_with("bad: status " + std::to_string(status) + "; " + advice))
        << session;
  }
}

TEST(Doctor, NoticesAClockThatWasNeverSet) {
  EXPECT_EQ(clockAdvice(Date(0)), "the device's clock says 1970: set it");
  EXPECT_EQ(clockAdvice(Clock::system()->now()), "");
  Handshake handshake{.certificate = CertificateFacts{.validFrom = Date(1'700'000'000'000)},
                      .verdict = X509_V_ERR_CERT_NOT_YET_VALID};
  EXPECT_EQ(tlsFinding(handshake, "a", Date(3'600'000)).advice,
            "the device's clock says 1970: set it");
}

}  // namespace
}  // namespace orvo::tool
