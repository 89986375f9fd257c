#include <OrvoAPI/Network/URLSession.h>
#include <OrvoAPI/Parsing/JSONReaderError.h>
#include <OrvoAPI/Testing/HTTPArchive.h>
#include <OrvoAPI/Testing/StubInterceptor.h>
#include <tests/support/Outcome.h>

#include <filesystem>
#include <fstream>

namespace orvo::test {
namespace {

/// An entry as browsers write one, with members that nobody needs.
std::string entry(const std::string& url, const std::string& response,
                  const std::string& method = "GET") {
  return R"({"_initiator": {}, "startedDateTime": "x", "time": 1.5, "request": {"method": ")" +
         method + R"(", "url": ")" + url + R"(", "headers": []}, "response": )" + response + "}";
}
std::string answer(int status, const std::string& content, const std::string& more = "") {
  return R"({"status": )" + std::to_string(status) + R"(, "content": )" + content + more + "}";
}
Data archive(const std::string& entries) {
  return Data(R"({"log": {"version": "1.2", "pages": [], "entries": [)" + entries + "]}}");
}

const std::string kBrowsers =
    entry("https://h.example/v3/a?b=c%20d#e",
          answer(200, R"({"size": 2, "text": "{}"})",
                 R"(, "headers": [{"name": ":status", "value": "200"}, {"name": "X", "value": "y"},
                    {"name": "content-encoding", "value": "br"}], "redirectURL": null)")) +
    "," + entry("https://h.example/v3/a?b=c%20d", answer(204, R"({"size": 0})"), "OPTIONS") + "," +
    entry("https://h.example/v3/a?b=c%20d", answer(503, R"({"size": 4, "text": "busy"})")) + "," +
    entry("https://h.example/old", answer(301, R"({"size": 9})", R"(, "redirectURL": "/i.png")")) +
    "," +
    entry("https://h.example/i.png",
          answer(200, R"({"size": 4, "text": "iVD/AA==", "encoding": "base64"})")) +
    "," + entry("https://h.example/lost", R"({"status": 0, "_error": "net::ERR_FAILED"})") + "," +
    entry("https://h.example/unsaved", answer(200, R"({"size": 7})")) + "," +
    entry("data:image/png;base64,AA", answer(200, "{}")) + "," +
    entry("https://h.example/a b", answer(200, "{}"));

/// What of the file is wrong.
std::string faultOf(const Data& file) {
  const auto read = HTTPArchive::parse(file);
  const auto* const error = read.error() ? read.error()->as<HTTPArchive::Error>() : nullptr;
  return error != nullptr ? error->message : "another error, or none";
}

TEST(HTTPArchive, RefusesWhatIsNone) {
  const std::vector<std::pair<std::string, std::string>> broken{
      {entry("https://h", "[]"), "log.entries[0].response is no object"},
      {kBrowsers + ", 1", "HTTP Archive.log.entries is no list of objects"},
      {kBrowsers + R"(, {"request": {}, "response": {}})", "log.entries[9].request.url is no text"},
      {entry("https://h", R"({"status": "200"})"), "log.entries[0].response.status is no status"},
      {entry("https://h", R"({"status": 1000})"), "log.entries[0].response.status is no status"},
      {entry("https://h", answer(200, R"({"text": 1})")),
       "log.entries[0].response.content.text is no text"},
      {entry("https://h", answer(200, R"({"text": "?", "encoding": "base64"})")),
       "log.entries[0].response.content.text is no base64"},
      {entry("https://h", answer(200, R"({"text": "A", "encoding": "base64"})")),
       "log.entries[0].response.content.text is no base64"},
      {entry("https://h", answer(200, R"({"text": "A", "encoding": "zip"})")),
       "log.entries[0].response.content.encoding is not known"},
      {entry("https://h", answer(200, "{}", R"(, "headers": [{"name": "n"}])")),
       "log.entries[0].response.headers[].value is no text"},
      {entry("https://h", answer(200, "{}", R"(, "redirectURL": 1)")),
       "log.entries[0].response.redirectURL is no text"}};
  for (const auto& [entries, fault] : broken) EXPECT_EQ(faultOf(archive(entries)), fault);
  EXPECT_EQ(faultOf(Data("{}")), "HTTP Archive.log is no object");
  EXPECT_EQ(faultOf(Data(std::string(HTTPArchive::kMaximumSize + 1, ' '))),
            "more than 67108864 bytes");
  const auto deep = HTTPArchive::parse(archive(std::string(5000, '[')));
  EXPECT_EQ(deep.error()->as<JSONReaderError>()->code, JSONReaderError::Code::tooDeep);
  EXPECT_THROW((void)HTTPArchive::read("/nonexistent/x.har"), std::runtime_error);
  EXPECT_THROW((void)HTTPArchive::read("/"), std::runtime_error);
}

TEST(HTTPArchive, AnswersForTheNetworkAsABrowserHasSeenIt) {
  const auto file = testing::TempDir() + "browser.har";
  std::ofstream(file) << archive(kBrowsers).view();
  const auto stub = std::make_shared<StubInterceptor>();
  stub->answerFromArchive(file);
  stub->answerOthers("none");
  std::filesystem::remove(file);
  URLSession session({.protocolClasses = {stub}});
  const auto fetched = [&](const std::string& target) {
    return session.fetch({.url = *URL::parse("http://other.example" + target)});
  };
  const auto first = valueOf(fetched("/v3/a?b=c%20d"));
  EXPECT_EQ(first.body.view(), "{}");
  EXPECT_EQ(first.response.headers, (HTTPHeaders{{"X", "y"}, {"content-encoding", "br"}}))
      << "the body is decoded";
  EXPECT_EQ(codeOf(fetched("/v3/a?b=c%20d")), 503) << "in turn, without the browser's own request";
  EXPECT_EQ(bodyOf(fetched("/v3/a?b=c%20d")), "busy") << "for ever";
  EXPECT_EQ(bodyOf(fetched("/v3/a?b=other")), "none");
  EXPECT_EQ(bodyOf(fetched("/old")), std::string_view("\x89P\xFF\0", 4)) << "after the redirect";
  EXPECT_NE(bodyOf(fetched("/lost")).find("net::ERR_FAILED"), std::string::npos);
  EXPECT_NE(bodyOf(fetched("/unsaved")).find("lacks its body"), std::string::npos);
}

}  // namespace
}  // namespace orvo::test
