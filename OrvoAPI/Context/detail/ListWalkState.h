#pragma once

#include <OrvoAPI/Base/detail/Lock.h>
#include <OrvoAPI/Context/Capability.h>
#include <OrvoAPI/Context/Context.h>
#include <OrvoAPI/Futures/Future.h>
#include <OrvoAPI/Futures/detail/OrFail.h>
#include <OrvoAPI/HTTP/URLError.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

namespace orvo::detail {

/// Where a walk stands. It holds no fetch that is under way; such a fetch holds it weakly.
template <class T>
class ListWalkState : public std::enable_shared_from_this<ListWalkState<T>> {
  using Fetch = std::shared_ptr<const Capability<Shared<T>>>;

 public:
  ListWalkState(std::shared_ptr<const Context> context, Capability<Shared<T>> first)
      : context_(std::move(context)),
        upcoming_(std::make_shared<const Capability<Shared<T>>>(std::move(first))) {}

  [[nodiscard]] Future<Shared<T>> next() {
    LockGuard guard(lock_);
    const auto fetch = upcoming_;
    const auto offset = offset_;
    const bool cancelled = cancelled_;
    guard.unlock();
    if (cancelled) return Future<Shared<T>>::failed(URLError{URLError::cancelled, "cancelled"});
    if (fetch == nullptr) return Future<Shared<T>>::succeeded(nullptr);
    const auto weak = this->weak_from_this();
    auto part = (*fetch)().map([weak, offset](const Shared<T>& came) {
      const bool isFurther = came != nullptr && (!offset || came->meta.offset > *offset);
      const auto walk = weak.lock();
      if (walk != nullptr) walk->move(offset, isFurther ? came.get() : nullptr);
      return isFurther ? came : nullptr;
    });
    part.onCancel([weak](bool completed) {
      const auto walk = weak.lock();
      if (walk != nullptr && !completed) walk->cancel();
    });
    return part;
  }

  void cancel() {
    Fetch dropped;
    const LockGuard guard(lock_);
    cancelled_ = true;
    upcoming_.swap(dropped);
  }

  [[nodiscard]] bool ended() {
    const LockGuard guard(lock_);
    return upcoming_ == nullptr;
  }

 private:
  /// From `offset`, where the walk stood when it asked, on to the part; to the end without one.
  void move(std::optional<std::int64_t> offset, const T* part) {
    Fetch following = part != nullptr ? fetchAfter(*part) : nullptr;
    const LockGuard guard(lock_);
    // Of several calls for one part the first moves the walk.
    if (cancelled_ || offset_ != offset) return;
    if (part != nullptr) offset_ = part->meta.offset;
    upcoming_.swap(following);
  }

  /// Nothing after the last part. The context terminates the process when offset and limit add up
  /// beyond their range; a part without extent would be followed by itself.
  [[nodiscard]] Fetch fetchAfter(const T& part) const {
    const auto& [total, limit, offset] = part.meta;
    constexpr auto kMost = (std::numeric_limits<std::int64_t>::max)();  // max is a macro elsewhere
    if (limit <= 0 || offset > kMost - limit) return nullptr;
    auto fetch = context_->nextFetchCapability(part);
    return fetch ? std::make_shared<const Capability<Shared<T>>>(std::move(*fetch)) : nullptr;
  }

  const std::shared_ptr<const Context> context_;
  Lock lock_;
  Fetch upcoming_ ORVO_GUARDED_BY(lock_);                      // null once the walk has ended
  std::optional<std::int64_t> offset_ ORVO_GUARDED_BY(lock_);  // of the last part, if there is one
  bool cancelled_ ORVO_GUARDED_BY(lock_) = false;
};

/// Calls a task with part after part. The callback that waits for a part holds it.
template <class T, class F>
class ListWalkLoop : public std::enable_shared_from_this<ListWalkLoop<T, F>> {
 public:
  template <class From>
  ListWalkLoop(std::shared_ptr<ListWalkState<T>> walk, std::shared_ptr<DispatchQueue> queue,
               From&& task)
      : walk_(std::move(walk)),
        queue_(std::move(queue)),
        outcome_(queue_),
        task_(std::forward<From>(task)) {}

  [[nodiscard]] Future<bool> start() {
    outcome_.onCancel([walk = walk_](bool completed) {
      if (!completed) walk->cancel();
    });
    askForNext();
    return outcome_;
  }

 private:
  void askForNext() {
    walk_->next().onComplete(
        queue_, [self = this->shared_from_this()](const auto& part) { self->take(part); });
  }
  void take(const Result<Shared<T>>& part) {
    if (outcome_.isCancelled()) return;
    if (part.failed()) return outcome_.failure(*part.error());
    if (*part.value() == nullptr) return outcome_.success(true);
    orFail(outcome_, [&] {
      if (!wantsMoreAfter(*part.value())) return outcome_.success(false);
      if (!outcome_.isCancelled()) askForNext();
    });
  }
  bool wantsMoreAfter(const Shared<T>& part) {
    if constexpr (std::is_void_v<std::invoke_result_t<F&, const Shared<T>&>>) {
      task_(part);
      return true;
    } else {
      return task_(part);
    }
  }

  const std::shared_ptr<ListWalkState<T>> walk_;
  const std::shared_ptr<DispatchQueue> queue_;
  const Future<bool> outcome_;
  F task_;
};

}  // namespace orvo::detail
