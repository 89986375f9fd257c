#include <OrvoAPI/Base/FatalInternal.h>
#include <OrvoAPI/Context/FetchScope.h>
#include <OrvoAPI/Context/FetchScopeStateInternal.h>
#include <OrvoAPI/Context/RequestPipelineInternal.h>
#include <OrvoAPI/Futures/detail/OrFail.h>
#include <OrvoAPI/Queues/detail/InlineQueue.h>

#include <utility>

namespace orvo {
namespace detail {

bool FetchScopeState::isCancelled() const {
  if (parent_ != nullptr && parent_->isCancelled()) return true;
  const LockGuard guard(lock_);
  return isCancelled_;
}

Future<Data> FetchScopeState::watch(const Future<Data>& fetched) {
  const auto outcome = parent_ != nullptr ? parent_->watch(fetched) : fetched;
  Calls call{Promise<Data>()};
  const auto place = call.begin();
  auto future = place->future();
  {
    const LockGuard guard(lock_);
    if (isCancelled_) return Future<Data>::completed(Failure{cancelledError()});
    calls_.splice(calls_.end(), call);
  }
  outcome.onComplete(inlineQueue(), [self = shared_from_this(), place](const auto& result) {
    self->endCall(place, result);
  });
  return future;
}

void FetchScopeState::endCall(Calls::iterator place, const Result<Data>& result) {
  Calls ended;
  {
    const LockGuard guard(lock_);
    if (isCancelled_) return;
    ended.splice(ended.end(), calls_, place);
  }
  const auto& promise = ended.front();
  if (result.failed()) return promise.failure(*result.error());
  promise.success(*result.value());
}

Future<HTTPResult> FetchScopeState::send(const URLRequest& request, NetworkDataProvider& network) {
  if (isCancelled()) return Future<HTTPResult>::completed(Failure{cancelledError()});
  auto future = network.fetch(request);
  Transfers transfer{future};
  const auto place = transfer.begin();
  {
    LockGuard guard(lock_);
    if (isCancelled_) {
      guard.unlock();
      future.cancel();
      return Future<HTTPResult>::completed(Failure{cancelledError()});
    }
    transfers_.splice(transfers_.end(), transfer);
  }
  future.onComplete(inlineQueue(),
                    [self = shared_from_this(), place](const auto&) { self->forget(place); });
  return future;
}

void FetchScopeState::forget(Transfers::iterator place) {
  Transfers ended;
  const LockGuard guard(lock_);
  if (!isCancelled_) ended.splice(ended.end(), transfers_, place);
}

void FetchScopeState::cancel() {
  Calls calls;
  Transfers transfers;
  {
    const LockGuard guard(lock_);
    if (std::exchange(isCancelled_, true)) return;
    calls.swap(calls_);
    transfers.swap(transfers_);
  }
  for (const auto& promise : calls) promise.failure(cancelledError());
  // The newest first: those that wait for a connection must not take the places of the others.
  while (!transfers.empty()) {
    try {
      transfers.back().cancel();
    } catch (...) {  // NOLINT(bugprone-empty-catch): a provider's own; the others end all the same
    }
    transfers.pop_back();
  }
}

}  // namespace detail

FetchScope::FetchScope(const std::shared_ptr<const Context>& context) {
  if (context == nullptr) detail::fatal("FetchScope needs a context");
  state_ = std::make_shared<detail::FetchScopeState>(context->scope());
  context_ = std::shared_ptr<const Context>(new Context(*context, state_));
}

FetchScope& FetchScope::operator=(FetchScope&& other) noexcept {
  if (this == &other) return *this;
  cancel();
  state_ = std::move(other.state_);
  context_ = std::move(other.context_);
  return *this;
}

FetchScope::~FetchScope() { cancel(); }

void FetchScope::cancel() {
  if (state_ != nullptr) state_->cancel();
}

bool FetchScope::isCancelled() const { return state_ == nullptr || state_->isCancelled(); }

}  // namespace orvo
