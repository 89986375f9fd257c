#include <demo/Sessions.h>

#include <random>

namespace orvo::demo {

namespace {

constexpr std::size_t kTokenLength = 32;
/// Older tokens are forgotten, so that a service that runs for weeks does not grow.
constexpr std::size_t kMostSessions = 10'000;

std::string randomToken() {
  constexpr std::string_view kAlphabet =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
  std::random_device random;
  // Whoever finds one where none belongs should see what it is.
  std::string token = "secret-token-";
  for (std::size_t index = 0; index < kTokenLength; ++index) {
    token += kAlphabet[random() % kAlphabet.size()];
  }
  return token;
}

}  // namespace

std::string Sessions::open() {
  std::string token = randomToken();
  const std::lock_guard lock(mutex_);
  uses_.emplace(token, 0);
  byAge_.push_back(token);
  if (byAge_.size() > kMostSessions) {
    uses_.erase(byAge_.front());
    byAge_.pop_front();
  }
  return token;
}

Sessions::Answer Sessions::use(std::string_view token) {
  if (token.empty()) return Answer::missing;
  const std::lock_guard lock(mutex_);
  const auto found = uses_.find(token);
  if (found == uses_.end()) return Answer::unknown;
  if (tokenLifetime_ == 0) return Answer::granted;
  if (found->second >= tokenLifetime_) return Answer::expired;
  ++found->second;
  return Answer::granted;
}

bool Sessions::knows(std::string_view token) const {
  const std::lock_guard lock(mutex_);
  return uses_.contains(token);
}

}  // namespace orvo::demo
