#pragma once

#include <OrvoAPI/Futures/GeneralError.h>
#include <OrvoAPI/Futures/detail/FutureState.h>
#include <OrvoAPI/Queues/detail/TailPosition.h>

#include <concepts>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

namespace orvo {
template <class T>
class Future;
}

namespace orvo::detail {

/// A future that is made from the results of others. It is itself the callback that waits for them,
/// so it costs one allocation with its transform and its job.
template <class U>
class DerivedState : public FutureState<U>, public Continuation {
 public:
  using FutureState<U>::FutureState;

  /// No result will come: what the task holds goes at once, although the future may live on.
  void drop() noexcept final {
    destroyTask();
    this->releaseSource();
    this->release();
  }

 protected:
  ~DerivedState() override = default;

  /// Destroys what is needed to make the result.
  virtual void destroyTask() noexcept = 0;

  /// Settles as the last act of a job, so that what follows stays on this worker.
  void settleLast(Result<U>&& result) {
    const TailPosition tail(this);
    this->settle(std::move(result));
  }
  void completeLast(Result<U>&& result) {
    const TailPosition tail(this);
    this->complete(std::move(result));
  }
  /// As the last act of a job, waits for `source`, which posts this callback again.
  void waitLastFor(FutureCore& source) {
    const TailPosition tail(this);
    source.add(static_cast<Continuation*>(this));
  }
};

/// The base of transforms that add what they know to the failures that pass them, their own ones
/// included: `AnyError explained(const AnyError&) const noexcept`.
struct Explainer {};

/// How a failing transform's error reaches the derived future.
enum class ErrorForm { wrapped, unchanged };

template <class T, class U, class F, ErrorForm form>
class MapState final : public DerivedState<U> {
 public:
  template <class From>
  MapState(std::shared_ptr<DispatchQueue> queue, FutureCore& source, From&& transform)
      : DerivedState<U>(std::move(queue), source), transform_(std::forward<From>(transform)) {}

  [[nodiscard]] const std::shared_ptr<DispatchQueue>& queue() const override {
    return this->callbackQueue();
  }

  void run() override {
    const auto self = CoreRef<MapState>::adopt(this);
    const auto& source = *static_cast<const Result<T>*>(this->sourceResult());
    auto result =
        source.failed() ? Result<U>(passedOn(*source.error())) : transform(*source.value());
    transform_.reset();
    this->releaseSource();
    this->settleLast(std::move(result));
  }

 private:
  Result<U> transform(const T& value) {
    try {
      if constexpr (IsResult<std::decay_t<std::invoke_result_t<F&, const T&>>>::value) {
        auto result = (*transform_)(value);
        if (result.failed()) return failure(*result.error());
        return result;
      } else {
        return (*transform_)(value);
      }
    } catch (...) {
      return failure(AnyError::current());
    }
  }
  Failure failure(AnyError error) const {
    if constexpr (form == ErrorForm::wrapped) {
      return passedOn(GeneralError::underlying{std::move(error)});
    } else {
      return passedOn(std::move(error));
    }
  }
  Failure passedOn(AnyError error) const {
    if constexpr (std::derived_from<F, Explainer>) {
      return {transform_->explained(error)};
    } else {
      return {std::move(error)};
    }
  }
  void destroyTask() noexcept override { transform_.reset(); }

  std::optional<F> transform_;
};

/// Waits for its source first and then, as the same callback again, for the future that the task
/// returned.
template <class T, class U, class F>
class FlatMapState final : public DerivedState<U> {
 public:
  template <class From>
  FlatMapState(std::shared_ptr<DispatchQueue> queue, FutureCore& source, From&& task)
      : DerivedState<U>(std::move(queue), source), task_(std::forward<From>(task)) {}

  [[nodiscard]] const std::shared_ptr<DispatchQueue>& queue() const override {
    return innerQueue_ != nullptr ? innerQueue_ : this->callbackQueue();
  }

  void run() override {
    auto self = CoreRef<FlatMapState>::adopt(this);
    if (innerQueue_ != nullptr) {
      auto result = copied(*static_cast<const Result<U>*>(this->sourceResult()));
      this->releaseSource();
      return this->settleLast(std::move(result));
    }
    const auto& source = *static_cast<const Result<T>*>(this->sourceResult());
    auto inner = start(source);
    task_.reset();
    this->releaseSource();
    if (const auto* const failed = inner.error()) {
      // Unlike a map, a failed source completes the future even when that has been cancelled.
      return this->completeLast(Failure{*failed});
    }
    const auto core = inner.value()->core_;
    innerQueue_ = core->callbackQueue();
    self.detach()->waitLastFor(*core.get());
  }

 private:
  static Result<U> copied(const Result<U>& result) {
    try {
      return result;
    } catch (...) {
      return Failure{AnyError::current()};
    }
  }
  Result<Future<U>> start(const Result<T>& source) {
    if (source.failed()) return Failure{*source.error()};
    try {
      return (*task_)(*source.value());
    } catch (...) {
      return Failure{AnyError::current()};
    }
  }
  void destroyTask() noexcept override { task_.reset(); }

  std::optional<F> task_;
  std::shared_ptr<DispatchQueue> innerQueue_;  // present while it waits for the second future
};

}  // namespace orvo::detail
