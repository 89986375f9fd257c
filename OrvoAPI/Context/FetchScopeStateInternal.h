#pragma once

#include <OrvoAPI/Base/detail/Lock.h>
#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/HTTP/HTTPURLResponse.h>
#include <OrvoAPI/HTTP/URLError.h>
#include <OrvoAPI/Network/NetworkDataProvider.h>
#include <OrvoAPI/Queues/detail/InlineQueue.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <utility>

namespace orvo::detail {

/// What one scope has in flight: its *calls*, each a promise that ends with what it waits for or
/// with the scope, whichever comes first, and its *transfers*, the futures of the network provider,
/// which a cancel reaches. Cancelled once and for good. Thread-safe.
///
/// A scope made from another's context has that as its *parent*, and ends with it: the parent holds
/// it weakly, and its transfers among its own. Whatever has ended, or was cancelled, is removed.
class FetchScopeState final : public std::enable_shared_from_this<FetchScopeState> {
 public:
  [[nodiscard]] static std::shared_ptr<FetchScopeState> make(
      std::shared_ptr<FetchScopeState> parent);
  ~FetchScopeState();
  FetchScopeState(const FetchScopeState&) = delete;
  FetchScopeState& operator=(const FetchScopeState&) = delete;

  [[nodiscard]] static URLError cancelledError() {
    return {URLError::cancelled, "the scope of the fetch was cancelled"};
  }

  [[nodiscard]] bool isCancelled() const;
  /// The same outcome, or what `failure` makes when the scope ends first.
  template <class T, class F>
  [[nodiscard]] Future<T> watch(const Future<T>& awaited, F failure) {
    const Promise<T> promise;
    const auto number = add([promise, failure] { promise.failure(failure()); });
    if (number == 0) return Future<T>::completed(Failure{AnyError(failure())});
    awaited.onComplete(inlineQueue(),
                       [self = shared_from_this(), number, promise](const Result<T>& result) {
                         if (!self->take(number)) return;
                         if (result.failed()) return promise.failure(*result.error());
                         promise.success(*result.value());
                       });
    return promise.future();
  }
  /// Sends the request, unless the scope is cancelled, to be cancelled with it.
  [[nodiscard]] Future<HTTPResult> send(const URLRequest& request, NetworkDataProvider& network);
  void cancel();

 private:
  using Number = std::uint64_t;  // in the order of their beginnings; 0: none
  using Calls = std::map<Number, std::function<void()>>;
  using Transfers = std::map<Number, Future<HTTPResult>>;
  using Children = std::map<const FetchScopeState*, std::weak_ptr<FetchScopeState>>;

  explicit FetchScopeState(std::shared_ptr<FetchScopeState> parent) : parent_(std::move(parent)) {}

  [[nodiscard]] bool adopt(const std::shared_ptr<FetchScopeState>& child);
  /// 0 when the scope is cancelled.
  [[nodiscard]] Number add(std::function<void()> end);
  /// False when it has ended already.
  [[nodiscard]] bool take(Number call);
  void forget(Number transfer);
  /// Ends the calls, those of the scopes below too, and hands over all transfers.
  [[nodiscard]] Transfers close();

  const std::shared_ptr<FetchScopeState> parent_;
  mutable Lock lock_;
  bool isCancelled_ ORVO_GUARDED_BY(lock_) = false;
  Number latest_ ORVO_GUARDED_BY(lock_) = 0;
  /// Whoever takes one out ends it; a cancel takes them all.
  Calls calls_ ORVO_GUARDED_BY(lock_);
  Transfers transfers_ ORVO_GUARDED_BY(lock_);
  Children children_ ORVO_GUARDED_BY(lock_);
};

/// The network as a scope's context sees it.
class ScopedNetwork final : public NetworkDataProvider {
 public:
  ScopedNetwork(std::shared_ptr<FetchScopeState> scope,
                std::shared_ptr<NetworkDataProvider> network)
      : scope_(std::move(scope)), network_(std::move(network)) {}

  [[nodiscard]] Future<HTTPResult> fetch(const URLRequest& request) override {
    return scope_->send(request, *network_);
  }

 private:
  const std::shared_ptr<FetchScopeState> scope_;
  const std::shared_ptr<NetworkDataProvider> network_;
};

}  // namespace orvo::detail
