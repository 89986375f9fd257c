#include <OrvoAPI/HTTP/URLInterceptor.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <OrvoAPI/Testing/HTTPArchive.h>
#include <tool/Arguments.h>
#include <tool/ErrorReport.h>
#include <tool/Files.h>
#include <tool/Present.h>
#include <tool/ValueCheck.h>
#include <tool/WrittenDate.h>
#include <tool/har/Traffic.h>

#include <cstdlib>
#include <ctime>
#include <deque>
#include <map>
#include <mutex>

namespace orvo::tool {

namespace {

using ArchiveEntry = HTTPArchive::Entry;

/// The method and the address, without its scheme.
std::string requestName(const std::string& method, const URL& url) {
  const auto text = url.withoutFragment().text();
  return method + " " + text.substr(text.find("://") + 3);
}

/// Answers every request as the recorded run was answered: equal ones in turn, the last answer for
/// ever.
class Replay final : public URLInterceptor {
 public:
  Replay(std::string file, std::vector<ArchiveEntry> entries) : file_(std::move(file)) {
    for (auto& entry : entries) {
      auto name = requestName(entry.method, entry.url);
      entries_[std::move(name)].push_back(std::move(entry));
    }
  }

  bool intercept(const URLRequest& request,
                 const std::shared_ptr<InterceptedRequest>& intercepted) override {
    const auto name = requestName(request.method, request.url);
    const auto entry = take(name);
    if (!entry) {
      intercepted->fail({URLError::unknown, file_ + " has no answer to " + name});
    } else if (entry->error) {
      intercepted->fail(*entry->error);
    } else {
      intercepted->respond(
          {.url = request.url, .statusCode = entry->statusCode, .headers = entry->headers},
          entry->body);
    }
    return true;
  }

 private:
  std::optional<ArchiveEntry> take(const std::string& name) {
    const std::lock_guard guard(mutex_);
    const auto found = entries_.find(name);
    if (found == entries_.end()) return std::nullopt;
    auto& inTurn = found->second;
    if (inTurn.size() == 1) return inTurn.front();
    auto next = std::move(inTurn.front());
    inTurn.pop_front();
    return next;
  }

  const std::string file_;
  std::mutex mutex_;
  std::map<std::string, std::deque<ArchiveEntry>> entries_;
};

/// The zone must be one of the system's, or a rule: no other file is opened for it.
void setZone(const std::string& zone) {
  constexpr std::size_t kLongest = 64;
  const bool isHarmless = !zone.empty() && zone.size() <= kLongest && zone[0] != '/' &&
                          zone[0] != ':' && zone.find("..") == std::string::npos;
  if (!isHarmless) return;
  setenv("TZ", zone.c_str(), 1);
  tzset();
}

/// The run that was recorded, as the tool's options and the present.
void restore(const std::string& file, const JSONObject& document, GlobalOptions& options) {
  const auto log = document.object("log");
  const auto run = log ? log->object("_orvo") : std::nullopt;
  if (!run) throw WrongUsage(file + ": it was not made by orvo --record");
  const auto text = [&run](const char* key) { return std::string(run->string(key).value_or("")); };
  const auto api = baseURL(text("api")), resources = baseURL(text("resources"));
  const auto environment = environmentNamed(text("environment"));
  const auto client = caseNamed<Client>(text("client"));
  const auto moment = writtenDate(text("date"), Date());
  if (!api || !resources || !environment || !client || !moment) {
    throw WrongUsage(file + ": log._orvo does not say which run was recorded");
  }
  setZone(text("timeZone"));
  holdPresent(*moment);
  options.api = api;
  options.resources = resources;
  options.environment = *environment;
  options.client = *client;
  options.source = options.clientSource = file;
  options.bootstrap.context.clock = presentClock();
}

}  // namespace

void addTrafficOptions(std::vector<Parameter>& options, WrittenTraffic& written) {
  options.push_back({.name = "--record",
                     .description = "Write all that is sent and answered into a file, as an HTTP "
                                    "Archive without tokens",
                     .values = files(),
                     .target = &written.record,
                     .excludes = {"--replay"}});
  options.push_back(
      {.name = "--replay",
       .description = "Answer from such a file, without a network, as if it were then",
       .values = files(),
       .target = &written.replay,
       .excludes = {"--environment", "--api", "--profile", "--demo", "--client"}});
}

void replay(const std::string& file, GlobalOptions& options) {
  const Data content(requireRegularFile(file, HTTPArchive::kMaximumSize));
  const auto document = JSONDataParser::object(content);
  if (const auto* error = document.error()) throw WrongUsage(file + ": " + explanation(*error));
  auto archive = HTTPArchive::parse(*document.value());
  if (const auto* error = archive.error()) throw WrongUsage(file + ": " + explanation(*error));
  restore(file, *document.value(), options);
  options.bootstrap.session.protocolClasses = {
      std::make_shared<Replay>(file, std::move(archive.value()->entries))};
}

}  // namespace orvo::tool
