// The JSON reader and every parser: the first line names the kind of the document that follows.

#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <OrvoAPI/Platform/ConsoleSink.h>
#include <fuzz/FuzzTarget.h>
#include <tool/ErrorReport.h>
#include <tool/ModelJson.h>
#include <tool/Parse.h>

#include <algorithm>

using namespace orvo;

namespace {

const tool::ParseArguments kArguments{.playlistID = "playlist",
                                      .collectionID = "collection",
                                      .query = "query",
                                      .label = "label",
                                      .include = Video{.id = "included", .title = "Included"},
                                      .start = Date(0),
                                      .end = Date(86'400'000)};

std::string outcomeText(const Result<demo::Json>& outcome) {
  if (const auto* const error = outcome.error()) {
    fuzz::require(!error->description().empty(), "every error describes itself");
    return tool::explanation(*error) + tool::errorJson(*error).text();
  }
  return outcome.value()->text();
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const auto kinds = [] {
    setConsoleSink([](std::string_view) {});
    return tool::parseKinds();
  }();
  auto body = fuzz::text(bytes, size);
  const auto kind = fuzz::takePiece(body);
  if (std::find(kinds.begin(), kinds.end(), kind) == kinds.end()) return -1;

  const auto outcome = tool::parseDocument(kind, body, kArguments);
  const auto text = outcomeText(outcome);
  fuzz::require(text == outcomeText(tool::parseDocument(kind, body, kArguments)),
                "the same document gives the same result");
  if (outcome.failed()) return 0;
  const auto reread = JSONDataParser::value(Data(text));
  fuzz::require(!reread.failed() && tool::toJson(*reread.value()).text() == text,
                "what is written reads back the same");
  return 0;
}
