#pragma once

#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <tests/support/HTTPServer.h>
#include <tests/support/Test.h>
#include <tool/ModelJson.h>

#include <fstream>
#include <iterator>

namespace orvo::tool {

/// What a run of the tool left behind.
struct ToolRun {
  /// The exit status; that of a run which a signal has ended is negative.
  int status = 0;
  std::string output;
  std::string error;
};

/// Runs a line of bash, for which `orvo` (and `$orvo`) is the tool, without a locale and in UTC:
/// with its output into files, or on a terminal of that many columns.
[[nodiscard]] ToolRun runLine(const std::string& line, int columns = 0,
                              const std::string& input = "");

/// Runs the tool without a locale, without a terminal and without colours. Nothing here may hold a
/// single quote.
[[nodiscard]] ToolRun runTool(const std::vector<std::string>& arguments,
                              const std::string& input = "");

inline std::string replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

/// What a fixture holds.
inline std::string fixture(const std::string& name) {
  std::ifstream stream(ORVO_FIXTURES "/" + name, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// The documents of the service that transcripts and drawings are made from.
inline JSONObject serviceDocuments() {
  return JSONDataParser::object(Data(fixture("service.json"))).force();
}

/// Expects the text of a fixture; with ORVO_UPDATE in the environment, writes it.
inline void expectFixture(const std::string& name, const std::string& text) {
  EXPECT_EQ(text, fixture(name)) << name;
  if (std::getenv("ORVO_UPDATE") != nullptr) std::ofstream(ORVO_FIXTURES "/" + name) << text;
}

/// The service in documents and transcripts, and (there as `$api`) the options that name it.
inline const std::string kHost = "http://service";
inline const std::string kOptions = "--api http://service/v3/ --resources http://service/r/";

/// A service of few documents, each at the target that is its key: with the query, or else at the
/// path with any. A number is the status of an answer without a body; a text is a body as it is, or
/// the target of the document to answer with.
class DocumentService {
 public:
  [[nodiscard]] std::string base() const { return server_.url("").text(); }
  [[nodiscard]] std::size_t requests() const { return server_.requests().size(); }
  /// What was asked for since, sorted, without the configuration: that and the session are asked
  /// for at the same time.
  [[nodiscard]] std::string targets(std::size_t since) const {
    const auto requests = server_.requests();
    std::multiset<std::string> sorted;
    for (std::size_t i = since; i < requests.size(); ++i) {
      if (requests[i].target.find("/configuration/") == std::string::npos)
        sorted.insert(requests[i].target);
    }
    std::string text;
    for (const auto& target : sorted) text += " " + target;
    return text;
  }

 private:
  /// `host` as the request names it: the server may not exist yet when the first one comes.
  [[nodiscard]] test::ServedAnswer answer(const std::string& target, std::string_view host) const {
    auto found = documents_.value(target);
    if (!found) found = documents_.value(target.substr(0, target.find('?')));
    if (!found) return {.status = 404};
    if (const auto status = found->integer()) return {.status = static_cast<int>(*status)};
    const auto text = found->string();
    if (text && text->starts_with('/')) return answer(std::string(*text), host);
    return {.body = replaced(text ? std::string(*text) : toJson(*found).text(), kHost,
                             "http://" + std::string(host))};
  }

  const JSONObject documents_ = serviceDocuments();
  const test::HTTPServer server_{[this](const auto& request) {
    return answer(request.target, request.headers.value("Host").value_or(""));
  }};
};

}  // namespace orvo::tool
