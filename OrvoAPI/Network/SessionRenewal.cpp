#include <OrvoAPI/Network/SessionRenewal.h>

#include <algorithm>
#include <new>
#include <random>
#include <utility>

namespace orvo {
namespace {

/// A step that nobody waits for. Without memory for it there are no more renewals but those of the
/// fetches.
template <class Step>
void renewOrGiveUp(Step&& step) {
  try {
    step();
  } catch (const std::bad_alloc&) {
  }
}

}  // namespace

std::shared_ptr<SessionRenewal> SessionRenewal::make(std::shared_ptr<SessionProvider> provider,
                                                     SessionRenewalOptions options) {
  if (options.queue == nullptr) options.queue = DispatchQueue::global();
  options.lifetime = std::max(options.lifetime, std::chrono::milliseconds(1));
  options.spread = std::clamp(options.spread, std::chrono::milliseconds(0), options.lifetime);
  std::shared_ptr<SessionRenewal> renewal(
      new SessionRenewal(std::move(provider), std::move(options)));
  renewal->waitForNext();
  return renewal;
}

SessionRenewal::SessionRenewal(std::shared_ptr<SessionProvider> provider,
                               SessionRenewalOptions options)
    : provider_(std::move(provider)), options_(std::move(options)) {}

void SessionRenewal::waitForNext() {
  waitBetween(options_.lifetime - options_.spread, options_.lifetime, provider_->currentToken());
}

void SessionRenewal::waitBetween(std::chrono::milliseconds least, std::chrono::milliseconds most,
                                 std::string token) {
  std::random_device source;
  const std::chrono::milliseconds delay(
      std::uniform_int_distribution<std::int64_t>(least.count(), most.count())(source));
  // At least a moment: a service that refuses at once is not asked in a loop.
  options_.queue->postAfter(std::max(delay, std::chrono::milliseconds(1000)),
                            [weak = weak_from_this(), token = std::move(token)] {
                              const auto self = weak.lock();
                              if (self != nullptr) renewOrGiveUp([&] { self->renew(token); });
                            });
}

/// `token`: the one that was in use when the wait began.
void SessionRenewal::renew(const std::string& token) {
  if (provider_->currentToken() != token) return waitForNext();
  provider_->updateSession().onComplete(
      [weak = weak_from_this(), token](const Result<bool>& renewed) {
        const auto self = weak.lock();
        if (self == nullptr) return;
        renewOrGiveUp([&] {
          if (!renewed.failed() && *renewed.value()) return self->waitForNext();
          self->waitBetween(std::chrono::milliseconds(0), self->options_.spread, token);
        });
      });
}

}  // namespace orvo
