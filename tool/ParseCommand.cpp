#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <fcntl.h>
#include <tool/Arguments.h>
#include <tool/Commands.h>
#include <tool/ErrorReport.h>
#include <tool/Parse.h>
#include <tool/Text.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace orvo::tool {

namespace {

struct WrittenParse {
  std::string kind{};
  ParseArguments arguments{};
  std::string include{};
  std::string start{};
  std::string end{};
};

/// All that comes from the descriptor; nothing with `errno` when it cannot be read.
std::optional<std::string> readAll(int descriptor) {
  std::string content;
  std::array<char, 65536> buffer;
  while (true) {
    const ssize_t count = read(descriptor, buffer.data(), buffer.size());
    if (count == 0) return content;
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return std::nullopt;
    content.append(buffer.data(), static_cast<std::size_t>(count));
  }
}

int wrongFile(const std::string& name, const std::string& reason) {
  printDiagnostic(escaped("orvo: " + name + ": " + reason) + "\n");
  return 2;
}

/// The video in the file; else says why there is none.
std::optional<Video> readVideo(const std::string& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  const auto content = descriptor < 0 ? std::nullopt : readAll(descriptor);
  const int error = errno;
  if (descriptor >= 0) close(descriptor);
  if (!content) {
    wrongFile(path, std::strerror(error));
    return std::nullopt;
  }
  const auto video = JSONDataParser::object(Data(*content)).map([](const JSONObject& json) {
    return VideoParser::parse(json);
  });
  if (const AnyError* failure = video.error()) {
    wrongFile(path, explanation(*failure));
    return std::nullopt;
  }
  return *video.value();
}

int runParse(Tool& tool, const WrittenParse& written) {
  ParseArguments arguments = written.arguments;
  arguments.environment = tool.options().environment;
  if (!written.start.empty()) arguments.start = *date(written.start);
  if (!written.end.empty()) arguments.end = *date(written.end);
  if (!written.include.empty()) {
    arguments.include = readVideo(written.include);
    if (!arguments.include) return 2;
  }
  const auto body = readAll(STDIN_FILENO);
  if (!body) return wrongFile("standard input", std::strerror(errno));
  const auto result = parseDocument(written.kind, *body, arguments);
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
           .values = {.name = "FILE"},
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
                      .description = "Run one parser over a document on standard input",
                      .arguments = {{.name = "KIND",
                                     .description = "What the document is",
                                     .values = anyOf(parseKinds()),
                                     .target = &written->kind,
                                     .required = true}},
                      .options = options(*written),
                      .examples = {"echo 2017-05-01T12:00:00Z | orvo parse iso8601-date",
                                   "echo '[\"a\", \"b\"]' | orvo parse string-array"},
                      .usesService = false,
                      .run = [written](Tool& tool) { return runParse(tool, *written); }});
}

}  // namespace orvo::tool
