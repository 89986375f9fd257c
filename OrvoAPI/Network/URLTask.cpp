#include <OrvoAPI/Network/URLTaskInternal.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <new>
#include <string>
#include <string_view>
#include <utility>

namespace orvo::detail {
namespace {

constexpr unsigned kMaximumRedirects = 20;

bool equalSchemes(std::string_view lhs, std::string_view rhs) {
  return std::equal(lhs.begin(), lhs.end(), rhs.begin(), rhs.end(),
                    [](char a, char b) { return (a | 0x20) == (b | 0x20); });
}

bool isHTTP(const URL& url) {
  return equalSchemes(url.scheme(), "http") || equalSchemes(url.scheme(), "https");
}

/// A token of the protocol's grammar: a method, or the name of a field.
bool isToken(std::string_view text) {
  static constexpr std::string_view kOthers = "!#$%&'*+-.^_`|~";
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           kOthers.find(c) != std::string_view::npos;
  });
}

/// What would put another request on the wire than the one that was meant.
std::optional<URLError> faultOfFields(const URLRequest& request) {
  using namespace std::string_view_literals;
  if (!isToken(request.method)) return URLError{URLError::badURL, "the method is no token"};
  for (const auto field : request.headers) {
    if (!isToken(field.name)) return URLError{URLError::badURL, "a header's name is no token"};
    if (field.value.find_first_of("\r\n\0"sv) != std::string_view::npos) {
      return URLError{URLError::badURL, "a header's value holds a line break or NUL"};
    }
  }
  return std::nullopt;
}

std::optional<URLError> faultOfAddress(const URL& url) {
  if (!url.isAbsolute()) return URLError{URLError::badURL, "the URL is not absolute"};
  if (!isHTTP(url)) return URLError{URLError::unsupportedURL, "the scheme is not http or https"};
  if (url.host().empty()) return URLError{URLError::badURL, "the URL names no host"};
  return std::nullopt;
}

/// Where the answer redirects to, if it does.
std::optional<std::string_view> redirection(const HTTPOutcome& outcome) {
  constexpr std::array kRedirects = {301, 302, 303, 307, 308};
  const auto* const result = std::get_if<HTTPResult>(&outcome);
  if (result == nullptr) return std::nullopt;
  const auto& response = result->response;
  const bool redirects =
      std::find(kRedirects.begin(), kRedirects.end(), response.statusCode) != kRedirects.end();
  return redirects ? response.headers.value("Location") : std::nullopt;
}

/// Never down from https, where what was secret would be sent in the open, nor to what is not HTTP.
bool mayRedirect(const URL& from, const URL& to) {
  return equalSchemes(from.scheme(), to.scheme()) ||
         (equalSchemes(from.scheme(), "http") && equalSchemes(to.scheme(), "https"));
}

URLRequest redirected(const URLRequest& request, const URL& to, int status) {
  URLRequest next = request;
  next.url = to.withoutFragment();
  // Credentials and the name of the host were meant for where they were sent; the delegate adds
  // what the new place is to have.
  next.headers.remove("Authorization");
  next.headers.remove("Host");
  if (to.host() != request.url.host()) next.headers.remove("Cookie");
  const bool seeOther = status == 303 && request.method != "HEAD";
  if (seeOther || (status <= 302 && request.method == "POST")) {
    next.method = "GET";
    next.body = {};
    next.headers.remove("Content-Type");
    next.headers.remove("Content-Length");
    next.headers.remove("Content-Encoding");
  }
  return next;
}

}  // namespace

/// A job with a word that somebody is still to give. Made before it is asked for: handing the word
/// on needs no memory.
template <class Word>
class AwaitedWord final : public JobNode {
 public:
  using Take = void (URLTask::*)(std::optional<Word> word, unsigned number);

  AwaitedWord(std::shared_ptr<URLTask> task, Take take, unsigned number)
      : task_(std::move(task)), take_(take), number_(number) {}

  static void give(std::unique_ptr<AwaitedWord> awaited, std::optional<Word> word,
                   SerialQueue& queue) {
    awaited->word_ = std::move(word);
    queue.post(Job(awaited.release()));
  }
  void run() override {
    const std::unique_ptr<AwaitedWord> self(this);
    ((*task_).*take_)(std::move(word_), number_);
  }
  void drop() noexcept override { delete this; }

 private:
  const std::shared_ptr<URLTask> task_;
  const Take take_;
  const unsigned number_;
  std::optional<Word> word_;
};

namespace {

/// The delegate's word on one redirect, shared by the copies of its completion handler. Safe to use
/// from any thread; refuses when it goes unspoken.
class RedirectDecision {
 public:
  RedirectDecision(std::shared_ptr<URLTask> task, std::shared_ptr<SerialQueue> queue,
                   unsigned redirect)
      : queue_(std::move(queue)),
        word_(std::make_unique<Word>(std::move(task), &URLTask::decide, redirect)) {}
  RedirectDecision(const RedirectDecision&) = delete;
  RedirectDecision& operator=(const RedirectDecision&) = delete;
  ~RedirectDecision() { make(std::nullopt); }

  void make(std::optional<URLRequest> request) {
    if (!made_.exchange(true)) Word::give(std::move(word_), std::move(request), *queue_);
  }

 private:
  using Word = AwaitedWord<URLRequest>;

  const std::shared_ptr<SerialQueue> queue_;
  std::unique_ptr<Word> word_;
  std::atomic<bool> made_{false};
};

}  // namespace

/// What an interceptor gets of a task that it may take.
class TaskInterception final : public InterceptedRequest {
 public:
  TaskInterception(std::shared_ptr<URLTask> task, std::shared_ptr<SerialQueue> queue,
                   unsigned offer)
      : queue_(std::move(queue)),
        word_(std::make_unique<Word>(std::move(task), &URLTask::answerIntercepted, offer)) {}
  ~TaskInterception() override {
    if (taken_.load()) answer(std::nullopt);
  }

  void respond(HTTPURLResponse response, Data body) override {
    answer(HTTPOutcome(HTTPResult{std::move(response), std::move(body)}));
  }
  void fail(URLError error) override { answer(HTTPOutcome(std::move(error))); }
  void onCancel(std::function<void()> task) override {
    {
      const LockGuard guard(lock_);
      if (!cancelled_) return onCancel_.swap(task);
    }
    queue_->post(std::move(task));
  }

  void markTaken() { taken_.store(true); }
  /// On the queue.
  void cancel() {
    std::function<void()> task;
    {
      const LockGuard guard(lock_);
      cancelled_ = true;
      task.swap(onCancel_);
    }
    if (task) task();
  }

 private:
  using Word = AwaitedWord<HTTPOutcome>;

  void answer(std::optional<HTTPOutcome> outcome) {
    if (!answered_.exchange(true)) Word::give(std::move(word_), std::move(outcome), *queue_);
  }

  const std::shared_ptr<SerialQueue> queue_;
  std::unique_ptr<Word> word_;
  std::atomic<bool> taken_{false};
  std::atomic<bool> answered_{false};
  Lock lock_;
  bool cancelled_ ORVO_GUARDED_BY(lock_) = false;
  std::function<void()> onCancel_ ORVO_GUARDED_BY(lock_);
};

std::shared_ptr<URLTask> URLTask::make(std::shared_ptr<URLSessionCore> core,
                                       const URLRequest& request) {
  return {new URLTask(std::move(core), request), &URLTask::dispose};
}

URLTask::URLTask(std::shared_ptr<URLSessionCore> core, const URLRequest& request)
    : core_(std::move(core)), request_(request) {}

URLTask::~URLTask() { core_->remove(*this); }

void URLTask::dispose(URLTask* task) noexcept {
  if (!NetworkThread::isCurrent() || task->leavesNothingOfTheApps()) return delete task;
  const auto queue = task->core_->queue;  // once posted, the task may be gone
  queue->post(Job(static_cast<JobNode*>(task)));
}

/// Lets go of its future where others hold that as well; true when nothing else is the app's.
bool URLTask::leavesNothingOfTheApps() noexcept {
  if (!future_.core_->releaseUnlessLast()) return false;
  (void)future_.core_.detach();
  return request_.body.empty() && (!original_ || original_->body.empty());
}

void URLTask::begin() {
  if (core_->measuresRequests) beginTimeline();
  const auto limit = request_.totalTimeoutInterval;
  if (isLimit(limit)) setDeadline(std::chrono::steady_clock::now() + limit);
  if (!core_->add(*this)) return answer(cancelledError());
  if (!core_->interceptors.empty()) {
    core_->queue->post([self = shared_from_this()] { self->take([&] { self->hop(); }); });
    return;
  }
  // Nobody else knows the task yet.
  if (auto fault = faultOfFields(request_)) return answer(*std::move(fault));
  send();
}

void URLTask::cancel() {
  if (!markCancelled()) return;
  NetworkThread::shared().cancel(core_->network, shared_from_this());
  cancellation_.task = shared_from_this();
  core_->queue->post(Job(&cancellation_));
}

/// A step on the session's queue. One that is refused memory ends the task.
template <class Step>
void URLTask::take(Step&& step) {
  try {
    step();
  } catch (const std::bad_alloc&) {
    tellInterceptor();
    if (state_ != State::done) finish(outOfMemory());
  }
}

/// Hands on what came instead of the network's answer, or a redirect of it.
void URLTask::answer(HTTPOutcome outcome) {
  core_->queue->post([self = shared_from_this(), outcome = std::move(outcome)]() mutable {
    if (self->state_ != State::exchanging) return;
    self->take([&] { self->didAnswer(std::move(outcome)); });
  });
}

void URLTask::answerIntercepted(std::optional<HTTPOutcome> outcome, unsigned offer) {
  // A cancelled task has ended before its interceptor's answer, and one that answered and let the
  // request go by has no say when another takes it.
  if (state_ != State::intercepted || offer != offers_) return;
  if (timeline_ != nullptr) endHop();
  take([&] {
    if (outcome) return didAnswer(*std::move(outcome));
    finish(URLError{URLError::unknown, "the interceptor dropped the request"});
  });
}

void URLTask::decide(std::optional<URLRequest> request, unsigned redirect) {
  if (state_ != State::deciding || redirect != redirects_) return;
  take([&] { didDecide(std::move(request)); });
}

void URLTask::hop() {
  state_ = State::exchanging;
  if (isCancelled()) return finish(cancelledError());
  if (auto fault = faultOfFields(request_)) return finish(*std::move(fault));
  if (!offerToInterceptors()) send();
}

bool URLTask::offerToInterceptors() {
  for (const auto& interceptor : core_->interceptors) {
    const auto interception =
        std::make_shared<TaskInterception>(shared_from_this(), core_->queue, ++offers_);
    interception_ = interception;
    state_ = State::intercepted;
    const auto asked = measured() != nullptr ? std::chrono::steady_clock::now() : NetworkTime();
    if (interceptor->intercept(request_, interception)) {
      if (auto* const hop = measured()) {
        note(*hop, RequestTimeline::Stage::sent, asked);
        hop->isIntercepted = true;
      }
      interception->markTaken();
      core_->watchLimit(deadline());
      return true;
    }
  }
  state_ = State::exchanging;
  return false;
}

void URLTask::send() {
  if (auto fault = faultOfAddress(request_.url)) return answer(*std::move(fault));
  auto refused = NetworkThread::shared().start(core_->network, shared_from_this());
  if (refused) answer(*std::move(refused));
}

void URLTask::endLate() {
  take([&] { giveUp({URLError::timedOut, "the request took too long"}); });
}

void URLTask::endWithoutMemory() { giveUp(outOfMemory()); }

void URLTask::Cancellation::run() { std::exchange(task, nullptr)->giveUp(cancelledError()); }

void URLTask::tellInterceptor() {
  if (state_ != State::intercepted) return;
  try {
    if (const auto interception = interception_.lock()) interception->cancel();
  } catch (const std::bad_alloc&) {
    // The request ends in any case.
  }
}

void URLTask::giveUp(URLError error) {
  tellInterceptor();
  if (isInOthersHands()) finish(std::move(error));
}

void URLTask::exchangeDidEnd(HTTPOutcome outcome) {
  if (!redirection(outcome)) return finish(std::move(outcome));
  if (timeline_ != nullptr) endHop();
  try {
    answer(std::move(outcome));
  } catch (const std::bad_alloc&) {
    finish(outOfMemory());
  }
}

void URLTask::didAnswer(HTTPOutcome&& outcome) {
  const auto location = redirection(outcome);
  if (!location) return finish(std::move(outcome));
  redirect(std::get<HTTPResult>(std::move(outcome)), std::string(*location));
}

void URLTask::redirect(HTTPResult result, std::string_view location) {
  if (isCancelled()) return finish(cancelledError());  // by a cancel that came before the decision
  const auto to = URL::parse(location, request_.url);
  if (!to || (isHTTP(*to) && to->host().empty())) {
    return finish(URLError{URLError::redirectToNonExistentLocation, "the Location is no URL"});
  }
  if (!mayRedirect(request_.url, *to)) return finish(std::move(result));
  if (++redirects_ > kMaximumRedirects) {
    return finish(URLError{URLError::httpTooManyRedirects, "too many redirects"});
  }
  if (!original_) original_ = request_;
  auto followed = redirected(request_, *to, result.response.statusCode);
  state_ = State::deciding;
  redirect_ = std::move(result);
  if (core_->delegate == nullptr) return didDecide(std::move(followed));
  core_->watchLimit(deadline());
  const auto decision =
      std::make_shared<RedirectDecision>(shared_from_this(), core_->queue, redirects_);
  core_->delegate->willPerformHTTPRedirection(
      redirect_->response, followed, *original_,
      [decision](std::optional<URLRequest> request) { decision->make(std::move(request)); });
}

void URLTask::didDecide(std::optional<URLRequest> request) {
  auto refused = *std::exchange(redirect_, std::nullopt);
  if (!request || !mayRedirect(request_.url, request->url)) return finish(std::move(refused));
  request_ = *std::move(request);
  request_.url = request_.url.withoutFragment();
  if (timeline_ != nullptr) noteRedirect(refused.response);
  hop();
}

void URLTask::finish(HTTPOutcome&& outcome) {
  state_ = State::done;
  core_->remove(*this);
  if (timeline_ != nullptr) endTimeline(outcome);
  if (auto* const result = std::get_if<HTTPResult>(&outcome)) {
    future_.core_->settle(Result<HTTPResult>(std::move(*result)));
  } else {
    future_.failure(std::get<URLError>(std::move(outcome)));
  }
}

}  // namespace orvo::detail
