#include <OrvoAPI/Network/URLSession.h>
#include <demo/DemoService.h>
#include <tests/Tool/Fixtures.h>
#include <tests/support/HTTPServer.h>
#include <tests/support/Test.h>
#include <tool/drift/Shape.h>

#include <filesystem>

namespace orvo::tool {
namespace {

/// The demo service behind a server that changes what it says.
class ChangingService {
 public:
  ChangingService() {
    EXPECT_TRUE(demo_.start());
    std::filesystem::remove_all(folder_);
  }
  ~ChangingService() { std::filesystem::remove_all(folder_); }
  ChangingService(const ChangingService&) = delete;
  ChangingService& operator=(const ChangingService&) = delete;

  /// In the documents beneath the path one text stands for another from now on; a text without
  /// another is that of a status.
  void change(const std::string& path, const std::string& from, const std::string& to = "") {
    path_ = path;
    from_ = from;
    to_ = to;
  }
  ToolRun run(const std::string& action, bool inJson = false) {
    std::vector<std::string> words{"--api",       server_.url("/v3/").text(),
                                   "--resources", server_.url("/").text(),
                                   "drift",       action,
                                   folder_,       "--requests",
                                   "24"};
    if (inJson) words.emplace_back("--json");
    return runTool(words);
  }

 private:
  [[nodiscard]] test::ServedAnswer answer(const std::string& target, std::string_view token) const {
    const bool isMeant = !path_.empty() && target.starts_with(path_);
    if (isMeant && to_.empty()) return {.status = std::stoi(from_)};
    URLRequest request{.url = *URL::parse(demo_.baseURL() + target.substr(4))};
    if (!token.empty()) request.headers.add("Authorization", std::string(token));
    const auto got = session_->fetch(request).wait(kPatience).force();
    const std::string body(got.body.view());
    return {.status = got.response.statusCode, .body = isMeant ? replaced(body, from_, to_) : body};
  }

  demo::DemoService demo_{{}};
  const std::shared_ptr<URLSession> session_ = std::make_shared<URLSession>();
  std::string path_, from_, to_;
  const std::string folder_ = testing::TempDir() + "orvo-drift-" + std::to_string(getpid());
  const test::HTTPServer server_{[this](const auto& request) {
    return answer(request.target, request.headers.value("Authorization").value_or(""));
  }};
};

TEST(DriftCommand, SaysWhatHasChangedAndWhatTheLibraryLosesByIt) {
  ChangingService service;
  const auto learned = service.run("learn");
  EXPECT_EQ(learned.status, 0) << learned.error;
  const auto same = service.run("check");
  EXPECT_EQ(same.status, 0) << same.error;
  EXPECT_EQ(same.output, "no drift\n");

  const auto check = [&](int status, const std::string& line, const std::string& other = "") {
    const auto run = service.run("check");
    EXPECT_EQ(run.status, status) << run.output << run.error;
    EXPECT_NE(run.output.find(line + "\n"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find(other), std::string::npos) << run.output;
  };
  service.change("/v3/products", "\"subheading\"", "\"subtitle\"");
  check(3, "loses  video subheading is missing", "       video subtitle is new: string\n");
  service.change("/v3/epg", "\"title\"", "\"name\"");
  check(3, "loses  guide items[].title is lost: missing");
  service.change("/v3/products", "\"short_description\"", "\"words\"");
  check(3, "loses  video short_description is missing");
  service.change("/v3/products", "\"title\":", "\"a\\u001bb\":{\"c\":true},\"title\":");
  check(4, "       video [\"a\uFFFDb\"] is new: object");

  service.change("/v3/epg", "503");
  const auto broken = service.run("check");
  EXPECT_EQ(broken.status, 1);
  EXPECT_EQ(broken.output, "no drift seen, but only a part was compared: 1 request failed\n");
  EXPECT_NE(broken.error.find("503"), std::string::npos);
  EXPECT_NE(service.run("check", true).output.find(R"("failedRequests":1,"drift":[])"),
            std::string::npos);
  service.change("/v3/products", "\"subheading\"", "\"subtitle\"");
  EXPECT_EQ(service.run("learn").status, 0);
  EXPECT_EQ(service.run("check").status, 0) << "both forms are known";
}

TEST(DriftCommand, TakesNoOtherDocumentInThePlaceOfOneThatFails) {
  ChangingService service;
  EXPECT_EQ(service.run("learn").status, 0);
  for (const std::string path :
       {"/v3/products", "/v3/collections", "/v3/collections/f", "/v3/playlists", "/v3/search"}) {
    service.change(path, "503");
    const auto run = service.run("check");
    EXPECT_TRUE(run.output.starts_with("no drift seen, but only a part was compared: "))
        << path << run.output << run.error;
    EXPECT_EQ(run.status, 1) << path << run.error;
  }
}

TEST(DriftShape, KeepsNoTextsAndComparesWhatThereIsEnoughOf) {
  const auto learned = [](const std::string& body) {
    Shape shape;
    shape.learn(JSONDataParser::value(Data(body)).force());
    return shape;
  };
  const auto shape = learned(R"({"type": "secret words", "code": "live", "id": "secret",
                                "list": [{"a": 1, "b": null}, {"a": 2}]})");
  EXPECT_EQ(shape.places.at("code").words, std::set<std::string>{"live"});
  EXPECT_TRUE(shape.places.at("type").words.empty());
  EXPECT_TRUE(shape.places.at("id").words.empty());
  EXPECT_EQ(shape.places.at("list[]").objects, 2U);
  const auto lines = [&](const std::string& body) {
    std::string text;
    for (const auto& [document, path, what, loses] :
         differences({{"d", shape}}, {{"d", learned(body)}})) {
      text += path + " " + what + "; ";
    }
    return text;
  };
  EXPECT_EQ(lines(R"({"type": "t", "code": "gone", "id": 7, "list": [{"a": 1}, {"c": {"d": 1}}]})"),
            "code has a new word: gone; id is number, and was string; "
            "list[].a is missing in 1 of 2, and never was; list[].c is new: object; ");
  EXPECT_EQ(lines(R"({"type": "t", "code": "live", "id": "i", "list": []})"), "");
  EXPECT_EQ(generalPath("a[12].b[3]"), "a[].b[]");
}

TEST(DriftShape, TakesKeysThatAreDataForOnePlace) {
  const auto drift = [](const std::string& then, const std::string& now) {
    Shape was, is;
    was.learn(JSONDataParser::value(Data(then)).force());
    is.learn(JSONDataParser::value(Data(now)).force());
    is.learn(shortLists(JSONDataParser::value(Data(now)).force()));
    std::string text;
    for (const auto& [document, path, what, loses] : differences({{"d", was}}, {{"d", is}})) {
      text += path + " " + what + "; ";
    }
    return text;
  };
  for (const auto& [key, other] :
       {std::pair("film-long-thaw", "film-night"), std::pair("2026-11-24", "2026-11-25"),
        std::pair("7", "8"), std::pair("a b", "c d"), std::pair("k1234", "k9876")}) {
    const auto map = [](const std::string& name, const std::string& member) {
      return R"({"m": {")" + name + R"(": {")" + member + R"(": 1}}})";
    };
    EXPECT_EQ(drift(map(key, "a"), map(other, "a")), "") << key;
    EXPECT_EQ(drift(map(key, "a"), map(other, "b")), "m{}.a is missing; m{}.b is new: number; ");
    EXPECT_EQ(drift(map("name", "a"), map(key, "a")), "");
  }
  EXPECT_EQ(drift(R"({"m": {"v1": 1, "v2": 2, "v3": 3}})", R"({"m": {"v4": 1, "v5": 2, "v6": 3}})"),
            "");
  EXPECT_EQ(drift(R"({"grey_100": 1, "x-y": "a", "b": 2})", R"({"grey_100": 1, "b": 2})"),
            "x-y is missing; ");
  std::string many;
  for (char c = 'a'; c < 'm'; ++c) many += std::string(R"(, ")") + c + R"(": 1)";
  EXPECT_EQ(drift(R"({"z": 1})", R"({"z": 1)" + many + "}"),
            "a is new: number; b is new: number; c is new: number;  is new: number: 9 more "
            "members; ");
  const std::string meta = R"({"meta": {"total": 9, "limit": 3, "offset": 0}, "items": [)";
  EXPECT_EQ(drift(meta + "1, 2, 3, 4, 5]}", meta + "]}"),
            "items is empty, though meta.total is not 0; ");
  EXPECT_EQ(drift(R"({"x": [1, 2, 3, 4, 5]})", R"({"x": []})"),
            "x is empty wherever it is, and was not; ");
}

}  // namespace
}  // namespace orvo::tool
