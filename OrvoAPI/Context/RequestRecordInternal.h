#pragma once

#include <OrvoAPI/Base/detail/Lock.h>
#include <OrvoAPI/Context/ContextOptions.h>
#include <OrvoAPI/Context/RequestReport.h>
#include <OrvoAPI/Context/SubjectInternal.h>
#include <OrvoAPI/Futures/Future.h>
#include <OrvoAPI/Futures/detail/CoreRef.h>
#include <OrvoAPI/HTTP/RequestTimeline.h>
#include <OrvoAPI/HTTP/URLRequest.h>
#include <OrvoAPI/Network/SessionProvider.h>
#include <OrvoAPI/Queues/detail/InlineQueue.h>

#include <array>
#include <atomic>
#include <memory>
#include <new>
#include <string>
#include <string_view>

namespace orvo::detail {

class Redaction;
class RequestRecord;
using RecordRef = CoreRef<RequestRecord>;

/// Receives reports. Thread-safe.
class RequestReporter final : public std::enable_shared_from_this<RequestReporter> {
 public:
  /// Null when there is no observer. Without a provider, only tokens that are sent are known.
  [[nodiscard]] static std::shared_ptr<const RequestReporter> make(
      const ContextOptions& options, std::shared_ptr<SessionProvider> sessionProvider);

  /// Whether requests are reported, and not just what is left out of documents.
  [[nodiscard]] bool isRecording() const { return onReport_ != nullptr || logger_ != nullptr; }
  /// Empty when there is no memory for it, and the request goes unreported, or when none are.
  [[nodiscard]] RecordRef begin(const Subject& subject) const noexcept;
  [[nodiscard]] const std::shared_ptr<DispatchQueue>& queue() const { return queue_; }
  [[nodiscard]] const std::function<void(const DocumentLoss&)>& onLoss() const { return onLoss_; }
  /// Empty when none is known.
  [[nodiscard]] std::string currentToken() const {
    return sessionProvider_ != nullptr ? sessionProvider_->currentToken() : std::string();
  }

 private:
  friend class RequestRecord;
  RequestReporter(const ContextOptions& options, std::shared_ptr<SessionProvider> sessionProvider);

  void tell(const RequestReport& report, const Redaction& redaction) const;

  const std::function<void(const RequestReport&)> onReport_;
  const std::function<void(const DocumentLoss&)> onLoss_;
  const std::shared_ptr<Logger> logger_;  // null: requests are not logged
  const std::shared_ptr<DispatchQueue> queue_;
  const std::shared_ptr<SessionProvider> sessionProvider_;
};

/// The record of one request on its way. It ends once: with its future, when that is cancelled, or
/// when nobody is left that could end it. It is then itself the job that makes the report and hands
/// it over, so that the end needs no memory and runs no foreign code. Thread-safe.
class RequestRecord final : private JobNode {
 public:
  RequestRecord(std::shared_ptr<const RequestReporter> reporter, const Subject& subject);

  void retain() noexcept { holders_.fetch_add(1, std::memory_order_relaxed); }
  void release() noexcept;

  // The steps, in their order. What there is no memory for is left out.

  /// Before anybody else knows it.
  void asks(const URLRequest& request) noexcept;
  void knows(const std::string& token) noexcept;
  void willSend() noexcept;
  void didAnswer(const Result<HTTPResult>& result) noexcept;
  void willRenew() noexcept;
  /// Later than the answer: it had to wait for its turn.
  void didHandOver() noexcept;
  void end(const AnyError* error) noexcept;
  /// Ends without an outcome.
  void abandon() noexcept;

  /// Notes when the answer is there.
  void awaitAnswer(const Future<HTTPResult>& answer) noexcept {
    attach([&] {
      answer.onComplete(inlineQueue(),
                        [self = self()](const auto& result) { self->didAnswer(result); });
    });
  }
  /// Ends with the future.
  template <class T>
  void endWith(const Future<T>& future) noexcept {
    attach([&] {
      future.onCancel(inlineQueue(), [self = self()](bool completed) {
        if (!completed) self->abandon();  // else it ends with the result, if it has not yet
      });
      future.onComplete(inlineQueue(),
                        [self = self()](const Result<T>& result) { self->end(result.error()); });
    });
  }

 private:
  using Time = RequestTimeline::Time;
  /// The ends of the phases, after the beginning.
  enum Mark { begun, firstSent, lastSent, hopBegun, sent = 8, firstByte, done, handedOver, ended };
  static constexpr std::size_t kMarks = RequestReport::kPhases + 1;

  struct Facts {
    RequestReport report;
    bool isSecret = false;
    bool isAsked = false;
    unsigned sends = 0;
    /// The tokens of the first attempt and of the second.
    std::array<std::string, 2> tokens = {};
    std::shared_ptr<const RequestTimeline> timeline = nullptr;
    std::array<Time, kMarks> marks = {};
  };

  [[nodiscard]] RecordRef self() { return RecordRef::retain(this); }
  /// Does what refers to the end; without memory for it there is no report.
  template <class Attach>
  void attach(Attach&& attach) noexcept {
    try {
      attach();
    } catch (const std::bad_alloc&) {
      forget();
    }
  }
  void forget() noexcept;
  void run() override;
  void drop() noexcept override { release(); }
  static void complete(Facts& facts);
  static void measure(Facts& facts);
  static void hide(Facts& facts, const Redaction& redaction);

  std::atomic<unsigned> holders_{1};
  Lock lock_;
  bool isEnded_ ORVO_GUARDED_BY(lock_) = false;
  Facts facts_ ORVO_GUARDED_BY(lock_);
  std::shared_ptr<const RequestReporter> reporter_;
};

}  // namespace orvo::detail
