#include <OrvoAPI/HTTP/URLError.h>
#include <OrvoAPI/Parsing/DateFormatter.h>
#include <soak/FleetService.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <utility>

namespace orvo::soak {
namespace {

using std::chrono::milliseconds;

constexpr int kProgramsOfAPart = 10;
/// Three days of programmes: what a monitor asks for.
constexpr int kProgramsOfARange = 144;

Asked askedBy(std::string_view path) {
  if (path.starts_with("/v3/session")) return Asked::session;
  if (path.starts_with("/v3/configuration")) return Asked::configuration;
  if (path.starts_with("/v3/epg")) return Asked::guide;
  return path.find("/program-") != path.npos ? Asked::video : Asked::screen;
}

std::string_view lastSegment(std::string_view path) { return path.substr(path.rfind('/') + 1); }

std::string configurationDocument() {
  std::ifstream stream(ORVO_FIXTURES "/context-configuration.json");
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace

FleetService::FleetService(FleetTime& time, double perSecond, std::size_t mostWaiting)
    : time_(time),
      queue_(time.queue()),
      perTick_(perSecond * static_cast<double>(FleetQueue::kTick.count()) / 1000),
      mostWaiting_(mostWaiting),
      configuration_(configurationDocument()) {}

Future<HTTPResult> FleetService::fetch(const URLRequest& request) {
  auto call = std::make_shared<Call>(Call{.request = request, .promise = {}});
  auto future = call->promise.future();
  queue_->post([this, call = std::move(call)] { accept(call); });
  return future;
}

void FleetService::setDown(bool isDown) {
  isDown_ = isDown;
  if (!isDown) return;
  for (const auto& call : std::exchange(waiting_, {})) {
    if (std::exchange(call->isOver, true)) continue;
    call->promise.failure(URLError{URLError::networkConnectionLost, "simulated"});
  }
}

void FleetService::close() {
  waiting_.clear();
  limits_.clear();
}

FleetSecond& FleetService::second() {
  const auto index = static_cast<std::size_t>(time_.clock()->elapsed().count() / 1000);
  if (seconds_.size() <= index) seconds_.resize(index + 1);
  return seconds_[index];
}

void FleetService::accept(const CallRef& call) {
  ++second().asked[static_cast<std::size_t>(askedBy(call->request.url.path()))];
  call->came = time_.clock()->elapsed();
  if (isDown_) return refuse(call, 0);
  if (waiting_.size() >= mostWaiting_) return refuse(call, 503);
  waiting_.push_back(call);
  limits_[call->request.timeoutInterval].push_back(call);
  workLater();
}

/// Without a status: there is nobody to connect to.
void FleetService::refuse(const CallRef& call, int status) {
  ++second().refused;
  queue_->postAfter(FleetQueue::kTick, [call, status] {
    if (status == 0)
      return call->promise.failure(URLError{URLError::cannotConnectToHost, "simulated"});
    call->promise.success({{.url = call->request.url, .statusCode = status}, Data()});
  });
}

void FleetService::workLater() {
  if (std::exchange(isWorking_, true)) return;
  queue_->postAfter(FleetQueue::kTick, [this] { work(); });
}

void FleetService::work() {
  isWorking_ = false;
  credit_ += perTick_;
  for (; credit_ >= 1 && !waiting_.empty(); --credit_) {
    const auto call = std::move(waiting_.front());
    waiting_.pop_front();
    if (std::exchange(call->isOver, true)) {
      ++second().late;
    } else {
      answer(*call);
    }
  }
  expire();
  if (!waiting_.empty()) return workLater();
  credit_ = std::min(credit_, perTick_);
}

void FleetService::expire() {
  const auto now = time_.clock()->elapsed();
  for (auto& [limit, calls] : limits_) {
    for (; !calls.empty() && (calls.front()->isOver || calls.front()->came + limit <= now);
         calls.pop_front()) {
      if (std::exchange(calls.front()->isOver, true)) continue;
      calls.front()->promise.failure(URLError{URLError::timedOut, "simulated"});
    }
  }
}

void FleetService::answer(const Call& call) {
  ++second().answered;
  slowest_ = std::max(slowest_, time_.clock()->elapsed() - call.came);
  Data body(document(call.request.url));
  call.promise.success({{.url = call.request.url, .statusCode = 200}, std::move(body)});
}

std::string FleetService::document(const URL& url) {
  const auto id = std::string(lastSegment(url.path()));
  switch (askedBy(url.path())) {
    case Asked::session:
      return R"({"token": "token-)" + std::to_string(++sessions_) + R"("})";
    case Asked::configuration:
      return configuration_;
    case Asked::guide:
      return guide(*url.query());
    case Asked::video:
      return R"({"type": "video", "id": ")" + id + R"(", "title": "T", "short_description": "S"})";
    case Asked::screen:
      break;
  }
  if (url.path().find("/collections/") == url.path().npos)
    return R"({"type": "page", "id": ")" + id + R"(", "title": "T"})";
  return R"({"id": ")" + id + R"(", "label": "T", "short_label": "S", "type": "generic",
      "item_type": "mixed", "contains": "mixed", "items": [],
      "meta": {"total": 8, "limit": 8, "offset": 0}})";
}

/// The part that begins with the programme that is on at the start of the range.
const std::string& FleetService::guide(std::string_view query) {
  const auto start = *epgFromDateFormatter().date(query.substr(query.find('=') + 1, 24));
  const auto first = (start - Date(0)) / kProgramLength;
  auto& text = guides_[first];
  if (!text.empty()) return text;
  text = R"({"meta": {"total": )" + std::to_string(kProgramsOfARange) + R"(, "limit": )" +
         std::to_string(kProgramsOfAPart) + R"(, "offset": 0}, "items": [)";
  for (auto number = first; number < first + kProgramsOfAPart; ++number) {
    const auto begin = Date(0) + number * kProgramLength;
    text += std::string(number == first ? "" : ", ") + R"({"id": "program-)" +
            std::to_string(number) + R"(", "title": "T", "start_time": ")" + to8601(begin) +
            R"(", "end_time": ")" + to8601(begin + kProgramLength) + R"("})";
  }
  return text += "]}";
}

}  // namespace orvo::soak
