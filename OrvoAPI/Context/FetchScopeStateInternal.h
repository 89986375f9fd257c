#pragma once

#include <OrvoAPI/Base/Data.h>
#include <OrvoAPI/Base/detail/Lock.h>
#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/HTTP/HTTPURLResponse.h>
#include <OrvoAPI/HTTP/URLError.h>
#include <OrvoAPI/Network/NetworkDataProvider.h>

#include <list>
#include <memory>

namespace orvo::detail {

/// What one scope has under way: its *calls*, each a promise that ends with what the request
/// pipeline brings or with the scope, whichever comes first, and its *transfers*, the futures of
/// the network provider, which a cancel reaches. Cancelled once and for good. A scope made from
/// another's context has that as its parent, and ends with it. Safe to use from any thread.
class FetchScopeState final : public std::enable_shared_from_this<FetchScopeState> {
 public:
  explicit FetchScopeState(std::shared_ptr<FetchScopeState> parent) : parent_(std::move(parent)) {}

  [[nodiscard]] static URLError cancelledError() {
    return {URLError::cancelled, "the scope of the fetch was cancelled"};
  }

  [[nodiscard]] bool isCancelled() const;
  /// The same outcome, or the scope's end when that comes first.
  [[nodiscard]] Future<Data> watch(const Future<Data>& fetched);
  /// Sends the request, unless the scope is cancelled, to be cancelled with it.
  [[nodiscard]] Future<HTTPResult> send(const URLRequest& request, NetworkDataProvider& network);
  void cancel();

 private:
  using Calls = std::list<Promise<Data>>;
  using Transfers = std::list<Future<HTTPResult>>;

  void endCall(Calls::iterator place, const Result<Data>& result);
  void forget(Transfers::iterator place);

  const std::shared_ptr<FetchScopeState> parent_;
  mutable Lock lock_;
  bool isCancelled_ ORVO_GUARDED_BY(lock_) = false;
  /// The oldest first. Whoever takes one out ends it; a cancel takes them all.
  Calls calls_ ORVO_GUARDED_BY(lock_);
  Transfers transfers_ ORVO_GUARDED_BY(lock_);
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
