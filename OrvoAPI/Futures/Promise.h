#pragma once

#include <OrvoAPI/Futures/Future.h>
#include <OrvoAPI/Futures/detail/OrFail.h>

#include <memory>
#include <utility>

namespace orvo {

/// The producing side of a future. Copies share the future; the operation in flight holds one.
/// Thread-safe. If the last copy is destroyed without completing, the future stays pending.
template <class T>
class Promise {
 public:
  Promise() = default;
  explicit Promise(std::shared_ptr<DispatchQueue> callbackQueue)
      : future_(std::move(callbackQueue)) {}

  [[nodiscard]] const Future<T>& future() const { return future_; }

  /// Ignored if the future is cancelled.
  void success(T value) const { future_.success(std::move(value)); }
  /// Ignored if the future is cancelled.
  void failure(AnyError error) const { future_.failure(std::move(error)); }
  /// Completes even a cancelled future.
  void complete(Result<T> result) const { future_.complete(std::move(result)); }
  /// Completes with the other's outcome once it is available, on the other's callback queue, as
  /// `success` or `failure` would.
  void complete(const Future<T>& other) const {
    other.onComplete([future = future_](const Result<T>& result) {
      if (result.failed()) return future.failure(*result.error());
      detail::orFail(future, [&] { future.success(*result.value()); });
    });
  }

 private:
  Future<T> future_;
};

}  // namespace orvo
