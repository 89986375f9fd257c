#include <tests/Tool/Fixtures.h>
#include <tests/support/Document.h>
#include <tests/support/Test.h>
#include <tests/support/Zone.h>
#include <tool/Arguments.h>
#include <tool/ErrorReport.h>
#include <tool/Parse.h>

namespace orvo::tool {
namespace {

ParseArguments arguments(const JSONObject& with) {
  const auto text = [&](const char* key) { return std::optional<std::string>(with.string(key)); };
  const auto date = [&](const char* key) {
    return tool::date(text(key).value_or("1970-01-01T00:00:00.000Z")).value();
  };
  const auto video = with.object("include");
  return {.playlistID = text("playlist-id"),
          .collectionID = text("collection-id"),
          .query = text("query").value_or(""),
          .label = text("label").value_or(""),
          .environment = environmentNamed(text("environment").value_or("production")).value(),
          .include = video ? std::optional(VideoParser::parse(*video).force()) : std::nullopt,
          .start = date("start"),
          .end = date("end")};
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

/// fixtures/<kind>.json lists situations: `why` each is there; `with`, the options of `orvo parse`
/// and the device's zone; `document`, or `documents` that all read the same; `reads`, what is
/// printed, with every field; `prints`, what goes to the console meanwhile.
class Parse : public testing::TestWithParam<std::string> {};

TEST_P(Parse, ReadsDocumentsAsTheFixtureSays) {
  for (const JSONObject& situation :
       JSONDataParser::array(Data(fixture(GetParam() + ".json"))).force()) {
    SCOPED_TRACE(situation.string("why").value());
    const auto with = situation.object("with").value_or(object("{}"));
    const Zone zone(std::string(with.string("TZ").value_or("UTC")).c_str());
    std::vector<JSONValue> documents;
    if (const auto document = situation.value("document")) documents.push_back(*document);
    if (const auto several = situation.array("documents")) {
      for (const JSONValue& document : *several) documents.push_back(document);
    }
    EXPECT_FALSE(documents.empty());
    for (const JSONValue& document : documents) {
      const CapturedConsole console;
      const auto answer = printed(GetParam(), bodyOf(document), arguments(with));
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

}  // namespace
}  // namespace orvo::tool
