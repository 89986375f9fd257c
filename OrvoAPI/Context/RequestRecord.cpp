#include <OrvoAPI/Context/RedactionInternal.h>
#include <OrvoAPI/Context/RequestLogInternal.h>
#include <OrvoAPI/Context/RequestRecordInternal.h>
#include <OrvoAPI/HTTP/StagesInternal.h>
#include <OrvoAPI/Queues/QueueLabels.h>
#include <OrvoAPI/Queues/SerialQueue.h>

#include <algorithm>
#include <exception>
#include <utility>

namespace orvo::detail {

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
      onLoss_(options.onLoss),
      logger_(options.logsRequests ? options.logger : nullptr),
      queue_(reportQueue(options)),
      sessionProvider_(std::move(sessionProvider)) {}

std::shared_ptr<const RequestReporter> RequestReporter::make(
    const ContextOptions& options, std::shared_ptr<SessionProvider> sessionProvider) {
  if (options.onReport == nullptr && options.onLoss == nullptr && !options.logsRequests) {
    return nullptr;
  }
  return std::shared_ptr<const RequestReporter>(
      new RequestReporter(options, std::move(sessionProvider)));
}

void RequestReporter::tell(const RequestReport& report, const Redaction& redaction) const {
  if (onReport_ != nullptr) {
    try {
      onReport_(report);
    } catch (...) {
      // The fetch is none of its business.
    }
  }
  if (logger_ == nullptr) return;
  logger_->log(requestLine(report, redaction), report.error ? LogLevel::warning : LogLevel::info,
               "network", "requests");
}

RecordRef RequestReporter::begin(const Subject& subject) const noexcept {
  if (!isRecording()) return {};
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

void RequestRecord::knows(const std::string& token) noexcept {
  const LockGuard guard(lock_);
  if (isEnded_) return;
  try {
    facts_.tokens[facts_.tokens[0].empty() ? 0 : 1] = token;
  } catch (const std::bad_alloc&) {
    isEnded_ = true;  // what cannot be redacted is not reported
  }
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
  const auto queue = reporter_->queue();  // the job may let go of the last other reference at once
  queue->post(Job(static_cast<JobNode*>(this)));
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
    auto& [token, newToken] = facts->tokens;
    if (token.empty()) token = reporter->currentToken();
    const Redaction redaction(token, newToken);
    hide(*facts, redaction);
    reporter->tell(facts->report, redaction);
  } catch (...) {
    // Without memory for it there is no report; what a logger throws is no better.
  }
  // The app's future may keep the record for long.
  facts->report.error.reset();
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

void RequestRecord::hide(Facts& facts, const Redaction& redaction) {
  auto& report = facts.report;
  redaction.text(report.identifier);
  if (facts.isSecret && facts.isAsked) report.path = Redaction::kHidden;
  redaction.path(report.path);
  for (auto& path : report.redirects) {
    // Whoever knows no token cannot tell whether it is one.
    if (facts.isSecret || redaction.isEmpty()) path = Redaction::kHidden;
    redaction.path(path);
  }
  if (report.error) report.error = redaction.error(*report.error);
}

}  // namespace orvo::detail
