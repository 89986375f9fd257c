#pragma once

#include <OrvoAPI/Futures/Future.h>
#include <OrvoAPI/HTTP/HTTPURLResponse.h>
#include <OrvoAPI/HTTP/NetworkThreadInternal.h>
#include <OrvoAPI/HTTP/URLInterceptor.h>
#include <OrvoAPI/HTTP/URLRequest.h>
#include <OrvoAPI/HTTP/URLSessionConfiguration.h>
#include <OrvoAPI/Network/URLSessionDelegate.h>
#include <OrvoAPI/Queues/Job.h>
#include <OrvoAPI/Queues/SerialQueue.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace orvo::detail {

class URLTask;

/// What a URL session and its tasks have in common; the last of them to go closes the connections.
/// Thread-safe.
class URLSessionCore final : public std::enable_shared_from_this<URLSessionCore>, private JobNode {
 public:
  [[nodiscard]] static std::shared_ptr<URLSessionCore> make(
      URLSessionConfiguration configuration, std::shared_ptr<URLSessionDelegate> delegate);
  URLSessionCore(URLSessionConfiguration configuration,
                 std::shared_ptr<URLSessionDelegate> delegate);
  ~URLSessionCore();
  URLSessionCore(const URLSessionCore&) = delete;
  URLSessionCore& operator=(const URLSessionCore&) = delete;

  const std::vector<std::shared_ptr<URLInterceptor>> interceptors;
  const std::shared_ptr<URLSessionDelegate> delegate;
  const std::shared_ptr<SerialQueue> queue;
  const bool measuresRequests;
  const std::shared_ptr<CurlSession> network;

  /// False when the session has been invalidated.
  [[nodiscard]] bool add(URLTask& task);
  void remove(URLTask& task);
  void invalidate();

  /// An interceptor or a delegate holds a task, where its limit would pass unnoticed. On the queue.
  void watchLimit(NetworkTime deadline);

 private:
  void endLateTasks();
  [[nodiscard]] std::shared_ptr<URLTask> firstInOthersHands();
  /// The job that destroys it on its queue.
  void run() override { delete this; }
  void drop() noexcept override { delete this; }

  NetworkTime nextLook_ = NetworkTime::max();  // queue only
  Lock lock_;
  bool invalidated_ ORVO_GUARDED_BY(lock_) = false;
  std::vector<URLTask*> tasks_ ORVO_GUARDED_BY(lock_);
};

/// One fetch of a URL session, from the request to the end of its future. It belongs to whatever
/// takes the next step, which also holds it: the network thread while it is exchanging, else the
/// session's queue, where the interceptor or the delegate decides; the future only knows it weakly.
///
/// Each hop, the first one and one for each redirect that is followed, goes like this:
///
///     hop ── an interceptor takes it ──> intercepted ──┐
///      │                                               ├── an answer ── is a redirect ──> deciding
///      └── else, over the network ─────> exchanging ───┘      │                            │    │
///      ^                                                     else                     refused   │
///      │                                                      └────────> done <────────────┘    │
///      └─────────────────────────────── followed ───────────────────────────────────────────────┘
///
/// The network thread completes the future itself unless there is a redirect to decide: handing
/// every answer to the queue first would cost a thread's wakeup, and no foreign code runs in
/// either. For the same reason what the app has attached to a future, and its interceptors,
/// delegate and body, are never destroyed there, but on the queue: a task that would take them
/// along is itself the job that does so.
///
/// Anything may also end in an error, and cancelling ends every state: at once while the
/// interceptor or the delegate decides, through the network thread while the exchange is there.
class URLTask final : public HTTPExchange,
                      public std::enable_shared_from_this<URLTask>,
                      private JobNode {
 public:
  enum class State { exchanging, intercepted, deciding, done };

  [[nodiscard]] static std::shared_ptr<URLTask> make(std::shared_ptr<URLSessionCore> core,
                                                     const URLRequest& request);
  ~URLTask() override;

  [[nodiscard]] const Future<HTTPResult>& future() const { return future_; }

  // From any thread.
  void begin();
  /// Needs no memory.
  void cancel();
  [[nodiscard]] bool isInOthersHands() const {
    const State state = state_;
    return state == State::intercepted || state == State::deciding;
  }
  // On the session's queue.

  /// Ends a task that an interceptor or a delegate holds.
  void endLate();
  void endWithoutMemory();
  /// An interceptor's answer, none when it was dropped; ignored unless the interceptor has taken
  /// the present offer.
  void answerIntercepted(std::optional<HTTPOutcome> outcome, unsigned offer);
  /// The delegate's decision; ignored unless it is on the current redirect.
  void decide(std::optional<URLRequest> request, unsigned redirect);

  [[nodiscard]] const URLRequest& exchangeRequest() const override { return request_; }
  void exchangeDidEnd(HTTPOutcome outcome) override;

 private:
  friend class URLSessionCore;

  /// The job that follows a cancel, there from the start.
  struct Cancellation final : JobNode {
    void run() override;
    void drop() noexcept override { const auto held = std::move(task); }
    std::shared_ptr<URLTask> task;
  };

  URLTask(std::shared_ptr<URLSessionCore> core, const URLRequest& request);
  static void dispose(URLTask* task) noexcept;
  [[nodiscard]] bool leavesNothingOfTheApps() noexcept;
  /// The job that destroys it on the queue.
  void run() override { delete this; }
  void drop() noexcept override { delete this; }

  template <class Step>
  void take(Step&& step);
  void answer(HTTPOutcome outcome);
  void hop();
  [[nodiscard]] bool offerToInterceptors();
  void send();
  void tellInterceptor();
  void giveUp(URLError error);
  void didAnswer(HTTPOutcome&& outcome);
  void didDecide(std::optional<URLRequest> request);
  void redirect(HTTPResult result, std::string_view location);

  // Only while it is measured, but for the first, which makes it so.
  void beginTimeline() noexcept;
  void noteRedirect(const HTTPURLResponse& response) noexcept;
  void endHop();
  void endTimeline(HTTPOutcome& outcome);
  void finish(HTTPOutcome&& outcome);

  const std::shared_ptr<URLSessionCore> core_;
  Future<HTTPResult> future_;
  std::size_t index_ = 0;  // among the session's tasks; guarded by its lock

  std::atomic<State> state_{State::exchanging};
  /// What the present hop sends.
  URLRequest request_;
  /// What the caller sent, once the first redirect has come.
  std::optional<URLRequest> original_;
  unsigned redirects_ = 0;
  /// The redirect that is being decided.
  std::optional<HTTPResult> redirect_;
  std::weak_ptr<class TaskInterception> interception_;
  Cancellation cancellation_;
  unsigned offers_ = 0;  // to interceptors; queue only
};

}  // namespace orvo::detail
