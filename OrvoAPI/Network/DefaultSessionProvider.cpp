#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/Futures/detail/OrFail.h>
#include <OrvoAPI/Network/DefaultSessionProvider.h>
#include <OrvoAPI/Queues/QueueLabels.h>

#include <utility>

namespace orvo {
namespace {

constexpr std::chrono::seconds kTokenLifetime{43200};

}  // namespace

std::shared_ptr<SerialQueue> DefaultSessionProvider::makeAccessQueue() {
  return SerialQueue::make(std::string(ServiceDomainPrefix) + ".sessions.access");
}

std::shared_ptr<DefaultSessionProvider> DefaultSessionProvider::make(
    double timeout, Current current, SessionFetch sessionFetch,
    std::shared_ptr<SerialQueue> accessQueue, std::shared_ptr<const Clock> clock) {
  return std::shared_ptr<DefaultSessionProvider>(
      new DefaultSessionProvider(timeout, std::move(current), std::move(sessionFetch),
                                 std::move(accessQueue), std::move(clock)));
}

DefaultSessionProvider::DefaultSessionProvider(double timeout, Current current,
                                               SessionFetch sessionFetch,
                                               std::shared_ptr<SerialQueue> accessQueue,
                                               std::shared_ptr<const Clock> clock)
    : timeout_(timeout),
      accessQueue_(std::move(accessQueue)),
      clock_(std::move(clock)),
      sessionFetch_(std::move(sessionFetch)),
      current_(std::move(current)) {}

DefaultSessionProvider::Current DefaultSessionProvider::current() const {
  Current copy;
  accessQueue_->sync([&] { copy = current_; });
  return copy;
}

std::string DefaultSessionProvider::currentToken() const { return current().token; }

Future<std::string> DefaultSessionProvider::retrieveSessionToken() {
  auto present = current();
  if (present.date + kTokenLifetime > clock_->elapsed()) {
    return Future<std::string>::succeeded(std::move(present.token));
  }
  return updateSession().map(
      [self = shared_from_this()](const bool&) { return self->currentToken(); });
}

Future<bool> DefaultSessionProvider::updateSession() {
  const Promise<bool> promise;
  sessionFetch_().onComplete([promise, weak = weak_from_this()](const Result<Session>& result) {
    if (result.failed()) return promise.failure(*result.error());
    const auto self = weak.lock();
    if (self == nullptr) return;
    detail::orFail(promise, [&] {
      Current fresh{result.value()->token, self->clock_->elapsed()};
      self->accessQueue_->sync([&] { std::swap(self->current_, fresh); });
      promise.success(true);
    });
  });
  return promise.future();
}

}  // namespace orvo
