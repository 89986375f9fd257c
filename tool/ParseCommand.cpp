#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <tool/Arguments.h>
#include <tool/Commands.h>
#include <tool/ErrorReport.h>
#include <tool/Files.h>
#include <tool/JsonLines.h>
#include <tool/Parse.h>
#include <tool/RepeatedKeys.h>
#include <tool/Text.h>
#include <tool/ValueCheck.h>
#include <unistd.h>

namespace orvo::tool {

namespace {

struct WrittenParse {
  std::string kind{};
  std::string file{};
  ParseArguments arguments{};
  std::string include{};
  std::string start{};
  std::string end{};
};

/// More than any answer that the library reads.
constexpr std::size_t kLargestDocument = std::size_t{64} << 20;

Video readVideo(const std::string& path) {
  const auto video = JSONDataParser::object(Data(readFile(path, kLargestDocument)))
                         .map([](const JSONObject& json) { return VideoParser::parse(json); });
  if (const AnyError* error = video.error()) throw WrongUsage(path + ": " + explanation(*error));
  return *video.value();
}

/// Says which members stand twice in the document, if it is one; whether there are any.
bool reportRepeatedKeys(const Tool& tool, const std::string& kind, const std::string& body) {
  constexpr std::size_t kMost = 100;
  if (JSONDataParser::value(Data(body)).failed()) return false;
  const auto paths = repeatedKeys(body, kMost);
  if (tool.options().json && !paths.empty()) {
    const auto json = Json::list(paths, [](const std::string& path) { return Json(path); });
    printJsonLine(Json::object({{"report", Json::object({{"repeated", json}})}}));
    return true;
  }
  for (const std::string& path : paths) {
    const std::string text = kind + ": " + path + " stands there again, and only the first counts";
    printDiagnostic(escaped("orvo: " + text) + "\n");
  }
  return !paths.empty();
}

int runParse(Tool& tool, const WrittenParse& written) {
  ParseArguments arguments = written.arguments;
  arguments.environment = tool.options().environment;
  if (!written.start.empty()) arguments.start = *date(written.start);
  if (!written.end.empty()) arguments.end = *date(written.end);
  if (!written.include.empty()) arguments.include = readVideo(written.include);
  const std::string body = written.file.empty() || written.file == "-"
                               ? readDescriptor(STDIN_FILENO, "standard input", kLargestDocument)
                               : readFile(written.file, kLargestDocument);
  const auto& losses = tool.options().losses;
  const bool repeats = losses != nullptr && reportRepeatedKeys(tool, written.kind, body);
  const LossWatch watch;
  const auto result = parseDocument(written.kind, body, arguments);
  const auto lost = watch.losses(written.kind);
  // People are not told that nothing was left out when something was.
  const bool isSaid = repeats && lost.empty() && !tool.options().json;
  if (losses != nullptr && !isSaid) losses->add(lost);
  if (losses != nullptr) losses->addSent("", Data(body));
  if (const Json* model = result.value()) return tool.answer(Json::object({{"ok", *model}}));
  // Whoever asks for a parse has the document: nothing in it is a secret from them.
  tool.answer(errorJson(*result.error(), Secrets::shown));
  return 1;
}

std::vector<Parameter> options(WrittenParse& written) {
  ParseArguments& arguments = written.arguments;
  return {{.name = "--playlist-id",
           .description = "video: the playlist that it was listed in",
           .values = {.name = "ID"},
           .target = &arguments.playlistID},
          {.name = "--collection-id",
           .description = "content-item: the collection that it was listed in",
           .values = {.name = "ID"},
           .target = &arguments.collectionID},
          {.name = "--query",
           .description = "search-collection, search-results: what was searched for",
           .target = &arguments.query},
          {.name = "--label",
           .description = "system-view: the title that the configuration gives it",
           .target = &arguments.label},
          {.name = "--include",
           .description = "playlist: a document of the video to put in front",
           .values = files(),
           .target = &written.include},
          {.name = "--start",
           .description = "linear-program-guide: the start of the range asked for",
           .values = dates(),
           .target = &written.start},
          {.name = "--end",
           .description = "linear-program-guide: the end of the range asked for",
           .values = dates(),
           .target = &written.end}};
}

}  // namespace

void addParseCommand(Commands& commands) {
  const auto written = std::make_shared<WrittenParse>();
  commands.push_back({.name = "parse",
                      .description = "What the library reads in one of the service's documents",
                      .details = "Prints \"ok\" with every field that was read, or \"error\" with "
                                 "the first thing that is missing or wrong, as JSON. With "
                                 "--report it says what of the document cannot be used, too.",
                      .arguments = {{.name = "KIND",
                                     .description = "What the document is",
                                     .values = anyOf(parseKinds()),
                                     .target = &written->kind,
                                     .required = true},
                                    {.name = "FILE",
                                     .description = "The document; standard input without it, or "
                                                    "for -",
                                     .values = files(),
                                     .target = &written->file}},
                      .options = options(*written),
                      .examples = {"echo 2017-05-01T12:00:00Z | orvo parse iso8601-date",
                                   "echo '[\"a\", \"b\"]' | orvo parse string-array"},
                      .statuses = {{"1",
                                    "The document is not what it should be, or the output could "
                                    "not be written"}},
                      .usesService = false,
                      .run = [written](Tool& tool) { return runParse(tool, *written); }});
}

}  // namespace orvo::tool
