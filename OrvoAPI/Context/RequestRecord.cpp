#include <OrvoAPI/Context/RequestLogInternal.h>
#include <OrvoAPI/Context/RequestRecordInternal.h>
#include <OrvoAPI/HTTP/StagesInternal.h>
#include <OrvoAPI/Queues/QueueLabels.h>
#include <OrvoAPI/Queues/SerialQueue.h>

#include <algorithm>
#include <exception>
#include <utility>

namespace orvo::detail {

constexpr std::string_view kMask = "***";

/// Hides what tells one of the tokens, which live longer. Not synchronised.
class Mask {
 public:
  Mask(std::string_view token, std::string_view other) : tokens_{token, other} {}

  [[nodiscard]] bool isEmpty() const { return tokens_[0].empty() && tokens_[1].empty(); }

  void text(std::string& text) const {
    if (tells(text)) text = kMask;
  }
  /// Only the tokens, where they are written plainly, else the whole.
  void words(std::string& text) const {
    for (const auto token : tokens_) {
      if (token.empty()) continue;
      for (auto at = text.find(token); at != std::string::npos;
           at = text.find(token, at + kMask.size())) {
        text.replace(at, token.size(), kMask);
      }
    }
    if (tells(text)) text = kMask;
  }
  /// Segment by segment; the whole when a token lies across some.
  void path(std::string& path) const {
    if (isStreamPath(path)) path = kMask;
    if (!tells(path)) return;
    std::string masked;
    for (std::size_t begin = 0; begin <= path.size();) {
      const auto end = std::min(path.find('/', begin), path.size());
      const auto segment = path.substr(begin, end - begin);
      if (begin > 0) masked += '/';
      masked += tells(segment) ? kMask : segment;
      begin = end + 1;
    }
    path = tells(masked) || masked == path ? kMask : masked;
  }

 private:
  /// As it is written, and decoded.
  [[nodiscard]] bool tells(std::string_view text) const {
    const auto holds = [this](std::string_view plain) {
      return std::any_of(tokens_.begin(), tokens_.end(), [plain](std::string_view token) {
        return !token.empty() && plain.find(token) != std::string_view::npos;
      });
    };
    return holds(text) || (text.find('%') != std::string_view::npos && holds(decoded(text)));
  }
  [[nodiscard]] static std::string decoded(std::string_view text) {
    const auto digit = [](char c) {
      return c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10;  // of a valid URL
    };
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
      const bool isEscape = text[i] == '%' && i + 2 < text.size();
      plain += isEscape ? static_cast<char>(digit(text[i + 1]) * 16 + digit(text[i + 2])) : text[i];
      if (isEscape) i += 2;
    }
    return plain;
  }

  std::array<std::string_view, 2> tokens_;
};

namespace {

std::shared_ptr<DispatchQueue> reportQueue(const ContextOptions& options) {
  if (options.reportQueue != nullptr) return options.reportQueue;
  // One after another, of all contexts: an observer that blocks holds one worker, and not all of
  // them. Reports may come as long as the process lives.
  static const auto* const queue =
      new std::shared_ptr(SerialQueue::make(std::string(ServiceDomainPrefix) + ".reports"));
  return *queue;
}

}  // namespace

RequestReporter::RequestReporter(const ContextOptions& options,
                                 std::shared_ptr<SessionProvider> sessionProvider)
    : onReport_(options.onReport),
      logger_(options.logsRequests ? options.logger : nullptr),
      queue_(reportQueue(options)),
      sessionProvider_(std::move(sessionProvider)) {}

std::shared_ptr<const RequestReporter> RequestReporter::make(
    const ContextOptions& options, std::shared_ptr<SessionProvider> sessionProvider) {
  if (options.onReport == nullptr && !options.logsRequests) return nullptr;
  return std::shared_ptr<const RequestReporter>(
      new RequestReporter(options, std::move(sessionProvider)));
}

void RequestReporter::tell(const RequestReport& report, const Mask& mask) const {
  if (onReport_ != nullptr) {
    try {
      onReport_(report);
    } catch (...) {
      // The fetch is none of its business.
    }
  }
  if (logger_ == nullptr) return;
  auto line = requestLine(report);
  mask.words(line);
  logger_->log(line, report.error ? LogLevel::warning : LogLevel::info, "network", "requests");
}

RecordRef RequestReporter::begin(const Subject& subject) const noexcept {
  try {
    return RecordRef::adopt(new RequestRecord(shared_from_this(), subject));
  } catch (const std::bad_alloc&) {
    return {};
  }
}

RequestRecord::RequestRecord(std::shared_ptr<const RequestReporter> reporter,
                             const Subject& subject)
    : facts_{.report = {.operation = subject.operation,
                        .identifier = std::string(subject.identifier)},
             .isSecret = subject.isSecret},
      reporter_(std::move(reporter)) {
  facts_.marks[begun] = std::chrono::steady_clock::now();
}

void RequestRecord::release() noexcept {
  if (holders_.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  bool isEnded = false;
  {
    const LockGuard guard(lock_);
    isEnded = isEnded_;
  }
  if (isEnded) {
    delete this;
    return;
  }
  retain();
  abandon();
  release();
}

void RequestRecord::asks(const URLRequest& request) noexcept {
  const LockGuard guard(lock_);
  facts_.isAsked = true;
  try {
    facts_.report.method = request.method;
    facts_.report.path = std::string(request.url.path());
  } catch (const std::bad_alloc&) {
  }
}

void RequestRecord::knows(const Future<std::string>& token) noexcept {
  const LockGuard guard(lock_);
  if (!isEnded_) facts_.tokens[facts_.tokens[0] ? 1 : 0] = token;
}

void RequestRecord::willSend() noexcept {
  const auto now = std::chrono::steady_clock::now();
  const LockGuard guard(lock_);
  if (isEnded_) return;
  if (++facts_.sends == 1) facts_.marks[firstSent] = now;
  facts_.marks[lastSent] = now;
}

void RequestRecord::didAnswer(const Result<HTTPResult>& result) noexcept {
  const auto now = std::chrono::steady_clock::now();
  const LockGuard guard(lock_);
  // A token that was not to be had was never asked for an answer.
  if (isEnded_ || facts_.marks[lastSent] == Time()) return;
  facts_.marks[done] = facts_.marks[handedOver] = now;
  if (const auto* const answer = result.value()) {
    facts_.report.status = answer->response.statusCode;
    facts_.report.bytesDecoded = answer->body.size();
    facts_.timeline = answer->timeline;
  } else if (const auto* const error = result.error()->as<URLError>()) {
    facts_.timeline = error->timeline;
  }
}

void RequestRecord::willRenew() noexcept {
  const LockGuard guard(lock_);
  if (isEnded_) return;
  facts_.marks[lastSent] = facts_.marks[done] = facts_.marks[handedOver] = Time();
  facts_.timeline = nullptr;
}

void RequestRecord::didHandOver() noexcept {
  const auto now = std::chrono::steady_clock::now();
  const LockGuard guard(lock_);
  if (!isEnded_) facts_.marks[handedOver] = now;
}

void RequestRecord::abandon() noexcept {
  const AnyError cancelled = URLError{URLError::cancelled, "cancelled"};
  end(&cancelled);
}

void RequestRecord::end(const AnyError* error) noexcept {
  const auto now = std::chrono::steady_clock::now();
  {
    const LockGuard guard(lock_);
    if (std::exchange(isEnded_, true)) return;
    facts_.marks[ended] = now;
    if (error != nullptr) facts_.report.error = *error;
  }
  retain();
  reporter_->queue()->post(Job(static_cast<JobNode*>(this)));
}

void RequestRecord::forget() noexcept {
  const LockGuard guard(lock_);
  isEnded_ = true;
}

void RequestRecord::run() {
  const auto held = RecordRef::adopt(this);
  const auto reporter = std::move(reporter_);  // the app's: it goes here, on its queue
  Facts* facts = nullptr;
  {
    const LockGuard guard(lock_);
    facts = &facts_;  // nobody else touches them after the end
  }
  try {
    complete(*facts);
    const auto& tokens = facts->tokens;
    const auto* const token = tokens[0] ? tokens[0]->value() : nullptr;
    const auto* const newToken = tokens[1] ? tokens[1]->value() : nullptr;
    std::string current;
    if (token == nullptr && reporter->sessionProvider_ != nullptr) {
      current = reporter->sessionProvider_->currentToken();
    }
    const Mask mask(token != nullptr ? std::string_view(*token) : std::string_view(current),
                    newToken != nullptr ? std::string_view(*newToken) : std::string_view());
    hide(*facts, mask);
    reporter->tell(facts->report, mask);
  } catch (...) {
    // Without memory for it there is no report; what a logger throws is no better.
  }
  facts->timeline = nullptr;
  facts->tokens = {};
}

/// Works out what the timeline says.
void RequestRecord::complete(Facts& facts) {
  auto& report = facts.report;
  auto& marks = facts.marks;
  using Source = RequestReport::Source;
  if (facts.sends > 0) report.source = Source::network;
  if (facts.sends > 1) report.retries = facts.sends - 1;
  if (!facts.isAsked && !report.error) report.source = Source::cache;
  if (facts.timeline != nullptr) {
    const auto& [redirects, hop] = *facts.timeline;
    for (const auto& redirect : redirects) report.redirects.emplace_back(redirect.target.path());
    if (hop.isIntercepted) report.source = Source::interceptor;
    report.bytesReceived = hop.bytesReceived;
    report.isConnectionReused = hop.isConnectionReused;
    report.protocol = hop.protocol;
    std::copy(hop.times.begin(), hop.times.end(), marks.begin() + hopBegun);
    if (redirects.empty()) marks[hopBegun] = marks[lastSent];
  } else if (marks[lastSent] != Time()) {
    marks[sent] = marks[lastSent];
    marks[firstByte] = marks[done];
  }
  measure(facts);
}

void RequestRecord::measure(Facts& facts) {
  auto& report = facts.report;
  auto& marks = facts.marks;
  report.begun = marks[begun];
  report.total = marks[ended] - marks[begun];
  if (!facts.isAsked) {
    report.phases[static_cast<std::size_t>(RequestPhase::handOver)] = report.total;
    return;
  }
  settleStages(marks, marks[ended]);
  for (std::size_t i = 0; i < report.phases.size(); ++i) {
    report.phases[i] = marks[i + 1] - marks[i];
  }
}

void RequestRecord::hide(Facts& facts, const Mask& mask) {
  auto& report = facts.report;
  mask.text(report.identifier);
  if (facts.isSecret && facts.isAsked) report.path = kMask;
  mask.path(report.path);
  for (auto& path : report.redirects) {
    // Whoever knows no token cannot tell whether it is one.
    if (facts.isSecret || mask.isEmpty()) path = kMask;
    mask.path(path);
  }
}

}  // namespace orvo::detail
