#pragma once

#include <OrvoAPI/Base/Date.h>
#include <OrvoAPI/Context/Environment.h>
#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Model/Video.h>
#include <demo/Json.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvo::tool {

/// What parsers need besides the document.
struct ParseArguments {
  std::optional<std::string> playlistID = {};
  std::optional<std::string> collectionID = {};
  std::string query = {};
  std::string label = {};
  Environment environment = Environment::production;
  std::optional<Video> include = {};
  Date start = {};
  Date end = {};
};

/// The kinds of documents, in the order in which they are listed.
[[nodiscard]] std::vector<std::string> parseKinds();

/// Runs the parser of that kind over a document and returns the model's JSON. The kind is one of
/// `parseKinds`.
[[nodiscard]] Result<demo::Json> parseDocument(std::string_view kind, std::string_view body,
                                               const ParseArguments& arguments);

}  // namespace orvo::tool
