#include "RunTool.h"

#include <gtest/gtest.h>
#include <tests/support/Document.h>
#include <tests/support/Zone.h>
#include <tool/Arguments.h>
#include <tool/ErrorReport.h>
#include <tool/Parse.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>

namespace orvo::tool {
namespace {

JSONObjects fixture(const std::string& kind) {
  std::ifstream file(ORVO_FIXTURES "/" + kind + ".json");
  return JSONDataParser::array(Data(std::string(std::istreambuf_iterator<char>(file), {}))).force();
}

ParseArguments arguments(const JSONObject& with) {
  ParseArguments arguments;
  for (const auto& [key, value] : with) {
    const std::string text(value.string().value_or(""));
    if (key == "playlist-id") {
      arguments.playlistID = text;
    } else if (key == "collection-id") {
      arguments.collectionID = text;
    } else if (key == "include") {
      arguments.include = VideoParser::parse(*value.object()).force();
    } else if (key == "environment") {
      arguments.environment = environmentNamed(text).value();
    } else if (key == "start" || key == "end") {
      (key == "start" ? arguments.start : arguments.end) = date(text).value();
    } else {
      EXPECT_TRUE(key == "query" || key == "label") << key << " is no argument";
      (key == "query" ? arguments.query : arguments.label) = text;
    }
  }
  return arguments;
}

/// A document that is a text stands for the body as it is.
std::string bodyOf(const JSONValue& document) {
  return std::string(document.string() ? *document.string() : document.text());
}

/// What `orvo parse` prints.
std::string printed(const std::string& kind, const std::string& body,
                    const ParseArguments& arguments) {
  const auto result = parseDocument(kind, body, arguments);
  return (result.failed() ? errorJson(*result.error(), Secrets::shown)
                          : demo::Json::object({{"ok", *result.value()}}))
      .text();
}

std::string minified(const std::string& json) {
  return JSONDataParser::value(Data(json)).force().text();
}

/// fixtures/<kind>.json lists situations: `why` each is there; `with`, what `orvo parse` is given
/// besides the document; `document`, or `documents` that all read the same; `reads`, what is
/// printed, with every field; `prints`, what goes to the console meanwhile.
class Parse : public testing::TestWithParam<std::string> {};

TEST_P(Parse, ReadsDocumentsAsTheFixtureSays) {
  const Zone zone("UTC");
  for (const JSONObject& situation : fixture(GetParam())) {
    SCOPED_TRACE(situation.string("why").value());
    const auto with = situation.object("with");
    std::vector<JSONValue> documents;
    if (const auto document = situation.value("document")) documents.push_back(*document);
    if (const auto several = situation.array("documents")) {
      for (const JSONValue& document : *several) documents.push_back(document);
    }
    EXPECT_FALSE(documents.empty());
    for (const JSONValue& document : documents) {
      const CapturedConsole console;
      const auto answer =
          printed(GetParam(), bodyOf(document), with ? arguments(*with) : ParseArguments{});
      EXPECT_EQ(minified(answer), situation.value("reads").value().text()) << document.text();
      EXPECT_EQ(console.lines, situation.string("prints").value_or(""));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, Parse, testing::ValuesIn(parseKinds()), [](const auto& test) {
  std::string name = test.param;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
});

// The runs of the tool itself: its options, its streams and its exit status.
TEST(ParseCommand, AnswersAsTheFixturesSay) {
  const std::string path = testing::TempDir() + "orvo-included-video";
  for (const std::string kind : {"configuration", "session", "video", "content-item", "playlist",
                                 "search-results", "system-view", "linear-program-guide"}) {
    for (const JSONObject& situation : fixture(kind)) {
      const auto document = situation.value("document");
      if (!document) continue;
      SCOPED_TRACE(kind + ": " + std::string(situation.string("why").value()));
      std::vector<std::string> words{"parse", kind};
      if (const auto with = situation.object("with")) {
        for (const auto& [option, value] : *with) {
          std::ofstream(path) << bodyOf(value);
          words.push_back("--" + std::string(option));
          words.push_back(option == "include" ? path : bodyOf(value));
        }
      }
      const ToolRun run = runTool(words, bodyOf(*document));
      const auto reads = situation.object("reads").value();
      EXPECT_EQ(minified(run.output), reads.asValue().text());
      EXPECT_EQ(run.error, situation.string("prints").value_or(""));
      EXPECT_EQ(run.status, reads.value("ok") ? 0 : 1);
    }
  }
  std::remove(path.c_str());
  EXPECT_EQ(runTool({"parse", "playlist", "--include", path}, "{}").status, 2);
  const ToolRun malformed = runTool({"parse", "page"}, "{\"id\": ");
  EXPECT_EQ(malformed.output.find(R"({"error":{"kind":"reader","message":")"), 0U);
  EXPECT_EQ(malformed.status, 1);
}

}  // namespace
}  // namespace orvo::tool
