#pragma once

#include <OrvoAPI/Base/CompilerCheck.h>

#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Futures/detail/ConcatState.h>
#include <OrvoAPI/Futures/detail/DerivedStates.h>
#include <OrvoAPI/Futures/detail/FutureWait.h>
#include <OrvoAPI/Futures/detail/OwnedTask.h>
#include <OrvoAPI/HTTP/URLError.h>
#include <OrvoAPI/Queues/DispatchQueue.h>
#include <OrvoAPI/Queues/MainQueue.h>

#include <chrono>
#include <concepts>
#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace orvo {

namespace detail {
template <class>
class FutureAwaiter;
class URLTask;
template <class>
struct IsFuture : std::false_type {};
template <class T>
struct IsFuture<Future<T>> : std::true_type {
  using Value = T;
};
template <class>
inline constexpr bool isFalse = false;
template <class T>
struct CoroutineSupport {
  static_assert(isFalse<T>,
                "a coroutine that returns an orvo::Future, or awaits one, needs "
                "#include <OrvoAPI/Futures/Coroutine.h>");
};
}  // namespace detail

/// A result that will be available later. A cheap handle to shared state, which lives as long as
/// any copy; a moved-from handle can only be assigned to or destroyed. Thread-safe.
///
/// Callbacks run on the queue named at registration, else on the future's `callbackQueue`, never
/// from inside the call that registers them. They are posted in the order in which they were
/// registered. The result that a callback is given is immutable and shared. An exception that a
/// callback throws propagates to whoever runs its queue; on the library's threads it terminates the
/// process.
///
/// A callback with an owner, a `std::weak_ptr`, is called only while the owner is alive, and keeps
/// it alive during the call. Name the queue on which the owner may be destroyed, since the callback
/// may hold its last reference. A `std::shared_ptr` given as the owner is held weakly, too.
///
///     future.onSuccess(queue, weak_from_this(), [this](const auto& video) { show(*video); });
///
/// Callbacks are kept until they are posted or the future is destroyed. So a callback that captures
/// its own future, or one derived from it, keeps it alive until it is completed; a cancel callback,
/// until it is cancelled.
///
/// A future can be completed again: the newer result replaces the older for whatever asks later, no
/// callback runs twice, and every result lives as long as the future. A newer result for which
/// memory is refused is discarded.
template <class T>
class Future {
 public:
  using Value = T;
  using Queue = std::shared_ptr<DispatchQueue>;
  using promise_type = detail::CoroutineSupport<T>;  // unless its header says otherwise

  /// Pending; its callbacks run on the global queue.
  Future() : Future(DispatchQueue::global()) {}
  explicit Future(Queue callbackQueue) : core_(Core::adopt(new State(std::move(callbackQueue)))) {
    static_assert(alignof(State) <= alignof(std::max_align_t));
  }
  /// Completed from the start: callbacks registered later are posted at once.
  explicit Future(Result<T> result) : Future() { core_->complete(std::move(result)); }

  /// A future that the main queue completes with the value, never before this returns.
  [[nodiscard]] static Future succeeded(T value) { return settledFromMain(std::move(value)); }
  /// A future that the main queue fails with the error, never before this returns.
  [[nodiscard]] static Future failed(AnyError error) {
    return settledFromMain(Failure{std::move(error)});
  }
  [[nodiscard]] static Future completed(Result<T> result) { return Future(std::move(result)); }

  /// The current result, or null; it lives as long as the future.
  [[nodiscard]] const Result<T>* result() const& { return core_->result(); }
  [[nodiscard]] const T* value() const& { return result() ? result()->value() : nullptr; }
  [[nodiscard]] const AnyError* error() const& { return result() ? result()->error() : nullptr; }
  const Result<T>* result() const&& = delete;
  const T* value() const&& = delete;
  const AnyError* error() const&& = delete;
  [[nodiscard]] bool didComplete() const { return core_->isCompleted(); }
  [[nodiscard]] bool didSucceed() const { return value() != nullptr; }
  [[nodiscard]] bool didFail() const { return error() != nullptr; }
  [[nodiscard]] bool isCancelled() const { return core_->isCancelled(); }
  [[nodiscard]] const Queue& callbackQueue() const { return core_->callbackQueue(); }
  /// The label of the serial queue that guards this future's state; for debugging.
  [[nodiscard]] std::string internalCallbackQueueLabel() const { return core_->queueLabel(); }

  /// Completes with the value; ignored if the future is cancelled.
  void success(T value) const { core_->settle(std::move(value)); }
  /// Fails with the error; ignored if the future is cancelled.
  void failure(AnyError error) const { core_->settle(Failure{std::move(error)}); }
  /// Completes even a cancelled future, for callers that must learn the outcome in any case.
  void complete(Result<T> result) const { core_->complete(std::move(result)); }

  /// Calls `task(const Result<T>&)` on the queue once the result is available.
  template <class F>
  Future onComplete(Queue queue, F&& task) const {
    using Task = detail::TaskContinuation<T, std::decay_t<F>>;
    core_->add(new Task(std::move(queue), std::forward<F>(task)));
    return *this;
  }
  template <class F>
  Future onComplete(F&& task) const {
    return onComplete(callbackQueue(), std::forward<F>(task));
  }
  template <detail::Owner O, class F>
  Future onComplete(Queue queue, const O& owner, F&& task) const {
    return onComplete(std::move(queue), detail::owned(owner, std::forward<F>(task)));
  }
  template <detail::Owner O, class F>
  Future onComplete(const O& owner, F&& task) const {
    return onComplete(callbackQueue(), owner, std::forward<F>(task));
  }
  /// Calls `task(const T&)` on success only.
  template <class F>
  Future onSuccess(Queue queue, F&& task) const {
    return onComplete(std::move(queue), [task = std::forward<F>(task)](const Result<T>& r) mutable {
      if (const T* value = r.value()) task(*value);
    });
  }
  template <class F>
  Future onSuccess(F&& task) const {
    return onSuccess(callbackQueue(), std::forward<F>(task));
  }
  template <detail::Owner O, class F>
  Future onSuccess(Queue queue, const O& owner, F&& task) const {
    return onSuccess(std::move(queue), detail::owned(owner, std::forward<F>(task)));
  }
  template <detail::Owner O, class F>
  Future onSuccess(const O& owner, F&& task) const {
    return onSuccess(callbackQueue(), owner, std::forward<F>(task));
  }
  /// Calls `task(const AnyError&)` on failure only.
  template <class F>
  Future onFailure(Queue queue, F&& task) const {
    return onComplete(std::move(queue), [task = std::forward<F>(task)](const Result<T>& r) mutable {
      if (const AnyError* error = r.error()) task(*error);
    });
  }
  template <class F>
  Future onFailure(F&& task) const {
    return onFailure(callbackQueue(), std::forward<F>(task));
  }
  template <detail::Owner O, class F>
  Future onFailure(Queue queue, const O& owner, F&& task) const {
    return onFailure(std::move(queue), detail::owned(owner, std::forward<F>(task)));
  }
  template <detail::Owner O, class F>
  Future onFailure(const O& owner, F&& task) const {
    return onFailure(callbackQueue(), owner, std::forward<F>(task));
  }

  /// Calls `task(bool completed)` when the future is cancelled, on the cancelling thread; on the
  /// queue if it is cancelled already. `completed` says whether there was a result by then.
  template <class F>
  Future onCancel(Queue queue, F&& task) const {
    core_->add(new detail::TaskCancelCallback<std::decay_t<F>>(std::forward<F>(task)), *queue);
    return *this;
  }
  template <class F>
  Future onCancel(F&& task) const {
    return onCancel(callbackQueue(), std::forward<F>(task));
  }
  template <detail::Owner O, class F>
  Future onCancel(Queue queue, const O& owner, F&& task) const {
    return onCancel(std::move(queue), detail::owned(owner, std::forward<F>(task)));
  }
  template <detail::Owner O, class F>
  Future onCancel(const O& owner, F&& task) const {
    return onCancel(callbackQueue(), owner, std::forward<F>(task));
  }

  /// Marks the future cancelled and runs its cancel callbacks on this thread, those of the futures
  /// that it was derived from first. The result stays what it is; a later `success` or `failure` is
  /// dropped. An exception of a cancel callback propagates from this call; the remaining callbacks
  /// are dropped.
  ///
  /// Callbacks of `onComplete` that are already posted still run. So cancelling in a destructor
  /// does not keep callbacks away from the destroyed object; giving them an owner does.
  void cancel() const { core_->cancel(); }

  /// The value transformed by `transform`, which runs on the queue. If it throws or returns a
  /// failed `Result`, the new future fails with `GeneralError::underlying`; an error of this future
  /// passes through unchanged. Cancelling the new future cancels this one.
  template <class F>
  [[nodiscard]] auto map(Queue queue, F&& transform) const {
    return derive<detail::ErrorForm::wrapped>(std::move(queue), std::forward<F>(transform));
  }
  template <class F>
  [[nodiscard]] auto map(F&& transform) const {
    return map(callbackQueue(), std::forward<F>(transform));
  }

  /// Continues with the future that `task`, called on the queue, returns. Cancelling the new future
  /// cancels this one, never the one that the task returned.
  template <class F>
  [[nodiscard]] auto flatMap(Queue queue, F&& task) const {
    using Given = std::decay_t<std::invoke_result_t<F&, const T&>>;
    if constexpr (detail::IsFuture<Given>::value) {
      using U = typename Given::Value;
      using Flat = detail::FlatMapState<T, U, std::decay_t<F>>;
      return Future<U>::derived(*core_.get(),
                                new Flat(std::move(queue), *core_.get(), std::forward<F>(task)));
    } else {
      static_assert(detail::isFalse<F>,
                    "the task of Future::flatMap has to return a Future; one that returns "
                    "something else is for map, one that returns nothing for onSuccess");
    }
  }
  template <class F>
  [[nodiscard]] auto flatMap(F&& task) const {
    return flatMap(callbackQueue(), std::forward<F>(task));
  }

  /// This future's value if the predicate holds for it, else `GeneralError::elementNotFound`. An
  /// exception of the predicate fails the new future unwrapped, unlike one of a map's transform.
  template <class F>
  [[nodiscard]] Future validate(F&& predicate) const {
    return derive<detail::ErrorForm::unchanged>(
        callbackQueue(), [predicate = std::forward<F>(predicate)](const T& value) mutable {
          return predicate(value) ? Result<T>(value) : Failure{GeneralError::elementNotFound{}};
        });
  }

  /// Both values. An error of this future takes precedence over one of the other's.
  template <class U>
  [[nodiscard]] Future<std::pair<T, U>> zip(Future<U> other) const {
    return flatMap([other = std::move(other)](const T& left) {
      return other.map([left](const U& right) { return std::pair<T, U>(left, right); });
    });
  }

  /// The list with the value of `with` appended.
  [[nodiscard]] static Future<std::vector<T>> combine(const Future<std::vector<T>>& future,
                                                      Future with) {
    return future.flatMap([with = std::move(with)](const std::vector<T>& list) {
      return with.map([list](const T& last) {
        auto longer = list;
        longer.push_back(last);
        return longer;
      });
    });
  }

  /// The values of all futures, in their order; the first failure in that order, as soon as all
  /// before it are done. Cancelling it reaches the first future only, and only until that has a
  /// result.
  [[nodiscard]] static Future<std::vector<T>> concat(std::vector<Future> futures) {
    if (futures.empty()) return Future<std::vector<T>>::succeeded({});
    const auto first = futures.front().core_;
    return Future<std::vector<T>>::derived(*first.get(),
                                           new detail::ConcatState<T>(std::move(futures)));
  }

  /// Whether this future succeeds; never fails.
  [[nodiscard]] Future<bool> successResult() const {
    Future<bool> outcome(callbackQueue());
    onComplete([outcome](const Result<T>& result) {
      const bool succeeded = !result.failed();
      try {
        outcome.callbackQueue()->post([outcome, succeeded] { outcome.success(succeeded); });
      } catch (const std::bad_alloc&) {
        outcome.success(succeeded);  // a job sooner
      }
    });
    return outcome;
  }

  /// Blocks until the result is available, for tools and tests. Fails with `URLError` -1001 after
  /// the limit, with -999 as soon as the future is cancelled, and at once with
  /// `GeneralError::unableToPerformAction` where `DispatchQueue::isBlockingRefused`. The error's
  /// description says what to do instead.
  [[nodiscard]] Result<T> wait(std::chrono::milliseconds limit) const;

 private:
  using State = detail::FutureState<T>;
  using Core = detail::CoreRef<State>;
  template <class>
  friend class Future;
  template <class, class, class>
  friend class detail::FlatMapState;
  template <class>
  friend class detail::ConcatState;
  template <class>
  friend class detail::FutureAwaiter;
  friend class detail::URLTask;

  explicit Future(Core core) : core_(std::move(core)) {}

  /// Takes over a derived state, which the source's list owns as well.
  template <class Derived>
  static Future derived(detail::FutureCore& source, Derived* state) {
    static_assert(alignof(Derived) <= alignof(std::max_align_t));
    Future future(Core::adopt(state));
    state->retain();
    source.add(static_cast<detail::Continuation*>(state));
    return future;
  }

  template <detail::ErrorForm form, class F>
  auto derive(Queue queue, F&& transform) const {
    using R = std::decay_t<std::invoke_result_t<std::decay_t<F>&, const T&>>;
    if constexpr (std::is_void_v<R>) {
      static_assert(detail::isFalse<F>,
                    "the transform of Future::map has to return a value; a task that returns "
                    "nothing is for onSuccess");
    } else {
      using U = typename detail::ResultOf<R>::type::Value;
      using Map = detail::MapState<T, U, std::decay_t<F>, form>;
      return Future<U>::derived(
          *core_.get(), new Map(std::move(queue), *core_.get(), std::forward<F>(transform)));
    }
  }

  static Future settledFromMain(Result<T> result) {
    Future future;
    MainQueue::shared()->post([future, result = std::move(result)]() mutable {
      future.core_->settle(std::move(result));
    });
    return future;
  }

  Core core_;
};

template <class T>
Result<T> Future<T>::wait(std::chrono::milliseconds limit) const {
  if (DispatchQueue::isBlockingRefused()) return Failure{detail::refusedWait()};
  if (const auto* const present = result()) return *present;
  core_->wait(limit);
  if (const auto* const present = result()) return *present;
  return Failure{detail::vainWait(isCancelled())};
}

}  // namespace orvo
