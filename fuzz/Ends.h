#pragma once

#include <OrvoAPI/Network/URLSession.h>
#include <fuzz/FuzzTarget.h>

#include <chrono>

namespace orvo::fuzz {

/// The limits of fetches from a server that may never come to an end.
constexpr std::chrono::milliseconds kSilence{400};
constexpr std::chrono::milliseconds kWhole{800};
constexpr std::size_t kMaximumBodySize = 1U << 20;
/// Beyond its limits, on a machine that has much else to do: without a watch it never ends.
constexpr std::chrono::seconds kDelay{30};

/// Waits for a fetch with these limits; its end must be one that is promised.
inline void requireEnd(const Future<HTTPResult>& future) {
  const auto result = future.wait(kWhole + kDelay);
  require(future.didComplete(), "every fetch ends within its limits");
  if (const auto* const answer = result.value()) {
    require(answer->response.statusCode >= 100 && answer->response.statusCode <= 999,
            "an answer has a status");
    require(answer->body.size() <= kMaximumBodySize, "a body is bounded");
  } else {
    const auto* const error = result.error()->as<URLError>();
    require(error != nullptr && error->code < 0, "a failure is a transport's");
    require(error->message.find("127.0.0.1") == std::string::npos, "no message holds a URL");
  }
}

/// A fetch from a host that answers at once, on a session of its own.
inline void requireHealthy(URLSession& session, const URL& url) {
  const auto began = std::chrono::steady_clock::now();
  const auto result = session.fetch({.url = url}).wait(std::chrono::minutes(1));
  require(!result.failed(), "a healthy host is reached");
  require(std::chrono::steady_clock::now() - began <= kDelay,
          "a hostile server does not hold up a healthy one");
}

}  // namespace orvo::fuzz
