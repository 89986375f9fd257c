#include <OrvoAPI/Base/FatalInternal.h>
#include <OrvoAPI/Context/FetchScope.h>
#include <OrvoAPI/Context/FetchScopeStateInternal.h>
#include <OrvoAPI/Context/RequestPipelineInternal.h>
#include <OrvoAPI/Futures/detail/OrFail.h>
#include <OrvoAPI/Queues/detail/InlineQueue.h>

#include <iterator>
#include <utility>

namespace orvo {
namespace detail {

std::shared_ptr<FetchScopeState> FetchScopeState::make(std::shared_ptr<FetchScopeState> parent) {
  std::shared_ptr<FetchScopeState> made(new FetchScopeState(std::move(parent)));
  if (made->parent_ != nullptr && !made->parent_->adopt(made)) made->cancel();
  return made;
}

FetchScopeState::~FetchScopeState() {
  if (parent_ == nullptr) return;
  const LockGuard guard(parent_->lock_);
  parent_->children_.erase(this);
}

/// False when this scope is cancelled.
bool FetchScopeState::adopt(const std::shared_ptr<FetchScopeState>& child) {
  const LockGuard guard(lock_);
  if (!isCancelled_) children_.emplace(child.get(), child);
  return !isCancelled_;
}

bool FetchScopeState::isCancelled() const {
  if (parent_ != nullptr && parent_->isCancelled()) return true;
  const LockGuard guard(lock_);
  return isCancelled_;
}

FetchScopeState::Number FetchScopeState::add(std::function<void()> end) {
  const LockGuard guard(lock_);
  if (isCancelled_) return 0;
  calls_.emplace_hint(calls_.end(), latest_ + 1, std::move(end));
  return ++latest_;
}

bool FetchScopeState::take(Number call) {
  Calls::node_type taken;  // destroyed after the lock is released
  const LockGuard guard(lock_);
  taken = calls_.extract(call);
  return !taken.empty();
}

Future<HTTPResult> FetchScopeState::send(const URLRequest& request, NetworkDataProvider& network) {
  if (isCancelled()) return Future<HTTPResult>::completed(Failure{cancelledError()});
  auto future = network.fetch(request);
  Number number = 0;
  {
    LockGuard guard(lock_);
    if (isCancelled_) {
      guard.unlock();
      future.cancel();
      return Future<HTTPResult>::completed(Failure{cancelledError()});
    }
    number = ++latest_;
    transfers_.emplace_hint(transfers_.end(), number, future);
  }
  // Whichever comes; one that is cancelled may never complete.
  const auto forgetting = [weak = weak_from_this(), number](const auto&) {
    if (const auto self = weak.lock()) self->forget(number);
  };
  future.onCancel(inlineQueue(), forgetting);
  future.onComplete(inlineQueue(), forgetting);
  return future;
}

void FetchScopeState::forget(Number transfer) {
  Transfers::node_type ended;  // destroyed after the lock is released
  const LockGuard guard(lock_);
  ended = transfers_.extract(transfer);
}

FetchScopeState::Transfers FetchScopeState::close() {
  Calls calls;
  Transfers transfers;
  Children children;
  {
    const LockGuard guard(lock_);
    isCancelled_ = true;
    calls.swap(calls_);
    transfers.swap(transfers_);
    children.swap(children_);
  }
  for (const auto& [number, end] : calls) end();
  for (const auto& [key, weak] : children) {
    if (const auto child = weak.lock()) (void)child->close();
  }
  return transfers;
}

void FetchScopeState::cancel() {
  auto transfers = close();
  // The newest first: those that wait for a connection must not take the places of the others.
  while (!transfers.empty()) {
    const auto newest = transfers.extract(std::prev(transfers.end()));
    try {
      newest.mapped().cancel();
    } catch (...) {  // NOLINT(bugprone-empty-catch): a provider's own; the others end all the same
    }
  }
}

}  // namespace detail

FetchScope::FetchScope(const std::shared_ptr<const Context>& context) {
  if (context == nullptr) detail::fatal("FetchScope needs a context");
  state_ = detail::FetchScopeState::make(context->scope());
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
