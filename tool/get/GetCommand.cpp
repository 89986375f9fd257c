#include <OrvoAPI/Network/SessionError.h>
#include <tool/Commands.h>
#include <tool/OwnRequest.h>
#include <tool/Text.h>
#include <tool/get/ApiPath.h>
#include <tool/get/TokenMask.h>

namespace orvo::tool {

namespace {

struct WrittenGet {
  std::string path{};
  bool head = false;
};

constexpr std::string_view kOperation = "get";
constexpr int kUnauthorized = 401;
constexpr int kFirstRefusal = 400;

/// The answer, and what must not be shown of it.
struct Got {
  HTTPResult answer;
  TokenMask mask{};
};

/// Asks as a fetch of the library's does: with the session's token, and once more with that of a
/// new session when it is refused.
Result<Got> get(Tool& tool, const Context& context, const URL& url, const std::string& path) {
  const auto named = [&](const AnyError& error) {
    return Failure{error.withContext({std::string(kOperation), path})};
  };
  SessionProvider& session = *context.sessionProvider();
  TokenMask mask;
  for (bool isRenewed = false;; isRenewed = true) {
    const auto token = tool.wait(session.retrieveSessionToken(), "opening a session");
    if (const AnyError* error = token.error()) return named(*error);
    mask.add(*token.value());
    const URLRequest request{.url = url,
                             .headers = {{"Authorization", *token.value()}},
                             .cachePolicy = CachePolicy::reloadIgnoringLocalCacheData,
                             .timeoutInterval = std::chrono::seconds(10)};
    auto answer = fetch(tool, *context.networkDataProvider(), request,
                        {kOperation, path, mask.text(url.path())}, "fetching");
    if (const AnyError* error = answer.error()) return Failure{*error};
    if (answer.value()->response.statusCode != kUnauthorized || isRenewed) {
      mask.learnFrom(answer.value()->body.view());
      // On its way a redirect may have brought another.
      mask.add(session.currentToken());
      return Got{*std::move(answer.value()), std::move(mask)};
    }
    const auto updated = tool.wait(session.updateSession(), "opening a session");
    if (const AnyError* error = updated.error()) return named(*error);
    if (!*updated.value()) return named(SessionError::couldNotUpdateSession{});
  }
}

/// The text line by line, as a terminal may show it.
std::string shown(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of("\n\t"), text.size());
    out += escaped(text.substr(0, end));
    if (end < text.size()) out += text[end];
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return out.ends_with('\n') || out.empty() ? out : out + "\n";
}

Json headersJson(const Got& got) {
  Json headers = Json::array();
  for (const auto& [name, value] : got.answer.response.headers) {
    headers.push(Json::object(
        {{"name", got.mask.text(name)}, {"value", got.mask.headerValue(name, value)}}));
  }
  return headers;
}

std::string headText(const Got& got) {
  std::string text = "HTTP " + std::to_string(got.answer.response.statusCode) + "\n";
  for (const auto& [name, value] : got.answer.response.headers) {
    text.append(got.mask.text(name)).append(": ").append(got.mask.headerValue(name, value)) += '\n';
  }
  return text + "\n";
}

int answer(const Tool& tool, const WrittenGet& written, const Got& got) {
  const std::string body = got.mask.body(got.answer.body.view());
  if (tool.options().json) {
    Json document = Json::object({{"status", got.answer.response.statusCode}});
    if (written.head) document.set("headers", headersJson(got));
    document.set("body", body);
    return tool.answer(document);
  }
  const std::string text = (written.head ? headText(got) : "") + body;
  print(standardOutput().isTerminal ? shown(text) : text);
  return 0;
}

int runGet(Tool& tool, const WrittenGet& written) {
  const auto base = tool.apiBase();
  if (const AnyError* error = base.error()) return tool.fail(*error);
  const URL url = apiAddress(written.path, *base.value());
  const auto context = tool.context();
  if (const AnyError* error = context.error()) return tool.fail(*error);
  const auto got = get(tool, **context.value(), url, written.path);
  if (const AnyError* error = got.error()) return tool.fail(*error);
  const int status = got.value()->answer.response.statusCode;
  const bool failed = status >= kFirstRefusal;
  // What a service says beside its refusal is worth reading, but no answer for programs.
  if (!failed || !tool.options().json) answer(tool, written, *got.value());
  if (!failed) return 0;
  const AnyError error = SessionError::unexpectedStatus{status};
  return tool.fail(error.withContext({std::string(kOperation), written.path}));
}

}  // namespace

void addGetCommand(Commands& commands) {
  const auto written = std::make_shared<WrittenGet>();
  commands.push_back(
      {.name = "get",
       .description = "What the service sends for a path of its API, as it is",
       .details =
           "The request is one that the library would send, with the session's token. In the body "
           "tokens are ***, and so is who is named in an address; on a terminal what it would obey "
           "is shown as an escape; all else comes as it was sent, byte for byte. An answer with a "
           "status of 400 or above is "
           "printed, too.",
       .arguments = {{.name = "PATH",
                      .description =
                          "What follows the API's base URL, with its query; it cannot lead "
                          "out of the base",
                      .target = &written->path,
                      .required = true}},
       .options = {{.name = "-i",
                    .description = "Print the status and the header fields first",
                    .target = &written->head}},
       .examples = {"orvo --demo get products/welcome", "orvo --demo get 'search?q=night' -i",
                    "orvo --demo get products/welcome | orvo parse video"},
       .synonyms = {"curl", "fetch", "raw"},
       .statuses = {{"1",
                     "The request failed, or was answered with a status of 400 or above; or the "
                     "output could not be written"}},
       .run = [written](Tool& tool) { return runGet(tool, *written); }});
}

}  // namespace orvo::tool
