#include <OrvoAPI/HTTP/RequestTimeline.h>
#include <fmt/format.h>
#include <tool/Files.h>
#include <tool/JsonLines.h>
#include <tool/Output.h>
#include <tool/Present.h>
#include <tool/Text.h>
#include <tool/ValueCheck.h>
#include <tool/Wording.h>
#include <tool/har/Recorder.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <utility>

namespace orvo::tool {

namespace {

/// What is recorded at most, in bytes and in requests: as much as a replay reads again.
constexpr std::size_t kMostBytes = std::size_t{24} << 20;
constexpr std::size_t kMostExchanges = 10'000;
/// What an entry has beside what was sent and answered.
constexpr std::size_t kEntryBytes = 1024;

std::size_t bytesOf(const HTTPHeaders& headers) {
  std::size_t bytes = 0;
  for (const auto& [name, value] : headers) bytes += name.size() + value.size() + 32;
  return bytes;
}

std::size_t bytesOf(const HTTPResult& answer) {
  std::size_t bytes = bytesOf(answer.response.headers) + answer.body.size();
  if (answer.timeline == nullptr) return bytes;
  for (const auto& [hop, response, target] : answer.timeline->redirects) {
    bytes += kEntryBytes + bytesOf(response.headers) + 2 * target.text().size();
  }
  return bytes;
}

/// The device's, as `TZ` names it everywhere.
std::string zoneAt(Date moment) {
  const char* const variable = std::getenv("TZ");
  std::error_code error;
  const std::string place = variable != nullptr
                                ? std::string(variable)
                                : std::filesystem::read_symlink("/etc/localtime", error).string();
  const std::string_view mark = "zoneinfo/";
  const std::size_t at = place.find(mark);
  if (at != std::string::npos) return place.substr(at + mark.size());
  if (!place.empty() && place[0] != '/') return place.substr(place[0] == ':' ? 1 : 0);
  // One that nobody has named: as far ahead as it is now.
  const std::time_t seconds = moment.millisecondsSince1970() / 1000;
  std::tm parts{};
  localtime_r(&seconds, &parts);
  const auto minutes = std::abs(parts.tm_gmtoff) / 60;
  return fmt::format("REC{}{:02}:{:02}", parts.tm_gmtoff < 0 ? '+' : '-', minutes / 60,
                     minutes % 60);
}

}  // namespace

class Recorder::Watch final : public NetworkDataProvider {
 public:
  Watch(std::shared_ptr<Recorder> recorder, std::shared_ptr<NetworkDataProvider> network)
      : recorder_(std::move(recorder)), network_(std::move(network)) {}

  [[nodiscard]] Future<HTTPResult> fetch(const URLRequest& request) override {
    Exchange exchange{.request = request,
                      .date = presentClock()->now(),
                      .begun = std::chrono::steady_clock::now()};
    auto future = network_->fetch(request);
    recorder_->begin(std::move(exchange), future);
    return future;
  }

 private:
  const std::shared_ptr<Recorder> recorder_;
  const std::shared_ptr<NetworkDataProvider> network_;
};

Recorder::Recorder(std::string file, bool speaksJson, std::vector<std::string> words)
    : file_(std::move(file)),
      speaksJson_(speaksJson),
      run_{.moment = present(), .timeZone = zoneAt(present()), .words = std::move(words)} {
  requireReplaceable(file_);
}

std::shared_ptr<NetworkDataProvider> Recorder::before(
    std::shared_ptr<NetworkDataProvider> network) {
  return std::make_shared<Watch>(shared_from_this(), std::move(network));
}

void Recorder::serves(const ServiceChoice& service) {
  const std::lock_guard guard(mutex_);
  run_.service = service;
  isServed_ = true;
}

bool Recorder::hasRoom(std::size_t bytes) {
  if (bytes > kMostBytes - bytes_) return false;
  bytes_ += bytes;
  return true;
}

void Recorder::begin(Exchange exchange, const Future<HTTPResult>& future) {
  std::size_t number = 0;
  {
    const std::lock_guard guard(mutex_);
    const auto& request = exchange.request;
    const auto bytes = kEntryBytes + 2 * request.url.text().size() + bytesOf(request.headers);
    if (isWritten_ || exchanges_.size() >= kMostExchanges || !hasRoom(bytes)) {
      ++leftOut_;
      return;
    }
    number = exchanges_.size();
    exchanges_.push_back(std::move(exchange));
    pending_.emplace_back(future);
  }
  future.onComplete([self = shared_from_this(), number](const auto& result) {
    const std::lock_guard guard(self->mutex_);
    self->end(number, result);
  });
}

void Recorder::end(std::size_t number, const Result<HTTPResult>& result) {
  auto& exchange = exchanges_[number];
  if (isWritten_ || exchange.result) return;
  exchange.ended = std::chrono::steady_clock::now();
  pending_[number].reset();
  const auto* const answer = result.value();
  if (answer == nullptr || hasRoom(bytesOf(*answer))) {
    exchange.result = result;
    return;
  }
  ++leftOut_;
  exchange.leftOut = std::max<std::size_t>(answer->body.size(), 1);
  exchange.result = HTTPResult{
      .response = {.url = answer->response.url, .statusCode = answer->response.statusCode},
      .timeline = answer->timeline};
}

bool Recorder::write() noexcept {
  const std::lock_guard guard(mutex_);
  if (isWritten_ || !isServed_) return true;
  try {
    // Whoever waited for a result may have gone on before its callback came here.
    for (std::size_t number = 0; number < pending_.size(); ++number) {
      const auto future = pending_[number];
      if (future && future->result() != nullptr) end(number, *future->result());
    }
    isWritten_ = true;
    pending_.clear();
    replaceFile(file_, archiveText(run_, exchanges_));
    if (leftOut_ == 0) return true;
    say("report",
        file_ + " was full: it lacks " + countText(static_cast<std::int64_t>(leftOut_), "answer"));
    return true;
  } catch (const std::exception& error) {
    isWritten_ = true;
    say("error", error.what());
    return false;
  }
}

void Recorder::say(const char* kind, const std::string& text) const {
  if (!speaksJson_) return printDiagnostic("orvo: " + escaped(text) + "\n");
  const Json error = Json::object({{"kind", "other"}, {"message", text}});
  printJsonLine(Json::object({{kind, kind == std::string_view("error") ? error : Json(text)}}));
}

}  // namespace orvo::tool
