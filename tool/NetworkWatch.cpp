#include <tool/NetworkWatch.h>
#include <tool/OwnRequest.h>
#include <tool/Secrets.h>

#include <algorithm>
#include <utility>

namespace orvo::tool {

namespace {

constexpr int kOrdinary = 200, kFirstRefusal = 400;

}  // namespace

class NetworkWatch::Provider final : public NetworkDataProvider {
 public:
  Provider(std::shared_ptr<NetworkWatch> watch, std::shared_ptr<NetworkDataProvider> network)
      : watch_(std::move(watch)), network_(std::move(network)) {}

  Future<HTTPResult> fetch(const URLRequest& request) override {
    auto future = network_->fetch(request).map([watch = watch_, request](const HTTPResult& answer) {
      watch->answered(request, answer);
      return answer;
    });
    watch_->sent(request, future);
    return future;
  }

 private:
  const std::shared_ptr<NetworkWatch> watch_;
  const std::shared_ptr<NetworkDataProvider> network_;
};

std::shared_ptr<NetworkDataProvider> NetworkWatch::before(
    std::shared_ptr<NetworkDataProvider> network) {
  return std::make_shared<Provider>(shared_from_this(), std::move(network));
}

int NetworkWatch::oddStatus() const {
  const std::lock_guard guard(mutex_);
  return oddStatus_;
}

std::string NetworkWatch::retryAfter() const {
  const std::lock_guard guard(mutex_);
  return retryAfter_;
}

std::vector<RequestReport> NetworkWatch::underWay() const {
  const auto now = std::chrono::steady_clock::now();
  std::vector<RequestReport> reports;
  const std::lock_guard guard(mutex_);
  for (const auto& [report, future] : sent_) {
    if (future.didComplete()) continue;
    reports.push_back(report);
    reports.back().total = now - report.begun;
  }
  return reports;
}

void NetworkWatch::sent(const URLRequest& request, const Future<HTTPResult>& future) {
  RequestReport report{.operation = "",
                       .method = request.method,
                       .path = shownPath(request),
                       .source = RequestReport::Source::network,
                       .begun = std::chrono::steady_clock::now()};
  const std::lock_guard guard(mutex_);
  std::erase_if(sent_, [](const Sent& earlier) { return earlier.future.didComplete(); });
  sent_.push_back({std::move(report), future});
}

void NetworkWatch::answered(const URLRequest& request, const HTTPResult& answer) {
  const int status = answer.response.statusCode;
  if (status < kFirstRefusal && look_) look_(shownPath(request), answer.body);
  const std::lock_guard guard(mutex_);
  if (status != kOrdinary && status < kFirstRefusal) oddStatus_ = status;
  if (status >= kFirstRefusal) retryAfter_ = retryText(answer.response.headers);
}

std::string shownPath(const URLRequest& request) {
  const std::string path(request.url.path());
  // Of a stream, and of what belongs to it, the path tells the token.
  for (const std::string file : {"/playlist.m3u8", "/playlist.json"}) {
    if (path.ends_with(file)) return std::string(kHiddenText) + file;
  }
  KnownSecrets known;
  known.add(request.headers.value("Authorization").value_or(""), std::string(kHiddenText));
  return known.hiddenIn(path);
}

std::string retryText(const HTTPHeaders& headers) {
  constexpr std::size_t kLongest = 40;
  const std::string value(headers.value("Retry-After").value_or("").substr(0, kLongest));
  const bool isSeconds = value.find_first_not_of("0123456789") == std::string::npos;
  if (value.empty()) return "";
  return isSeconds ? "in " + value + " s" : "at " + value;
}

}  // namespace orvo::tool
