#pragma once

#include <OrvoAPI/HTTP/HTTPURLResponse.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace orvo {

/// When a request reached each stage on its way through a URL session: measured if
/// `URLSessionConfiguration::measuresRequests` is set, and part of the result or the error. A
/// value.
struct RequestTimeline {
  using Time = std::chrono::steady_clock::time_point;

  /// In the order in which they are passed.
  enum class Stage {
    /// The session has it; it waits for a connection.
    begun,
    /// It has a place and a new connection to make.
    resolving,
    /// The host's name is an address.
    resolved,
    connected,
    /// TLS is set up.
    secured,
    /// The request begins to be sent, or an interceptor is asked.
    sent,
    /// The first byte of the answer is there, not counting interim responses.
    firstByte,
    /// The last one is, or it has failed.
    done
  };
  static constexpr std::size_t kStages = 8;

  /// One request to one place; each redirect that is followed begins another.
  struct Hop {
    /// None is before the one that precedes it. A stage that was left out (the connection was
    /// there, there is no TLS) was passed with the one before, one that was not reached with the
    /// last.
    std::array<Time, kStages> times = {};
    /// Taken by an interceptor, in place of the network.
    bool isIntercepted = false;
    /// Sent on a connection that was there already.
    bool isConnectionReused = false;
    /// "1.0", "1.1" or "2"; empty without an answer from the network.
    std::string_view protocol = {};
    /// Bytes of the body as they came, before they were decoded.
    std::uint64_t bytesReceived = 0;

    [[nodiscard]] Time at(Stage stage) const { return times[static_cast<std::size_t>(stage)]; }
  };
  /// Its address and its response's header fields may tell a session's token: not for a log.
  struct Redirect {
    Hop hop;
    /// What redirected.
    HTTPURLResponse response;
    /// Where to, as it was followed.
    URL target;
  };

  /// Those that were followed, in order.
  std::vector<Redirect> redirects = {};
  /// The hop that ended it.
  Hop last = {};
};

}  // namespace orvo
