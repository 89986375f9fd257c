#pragma once

#include <OrvoAPI/Base/RawValue.h>
#include <OrvoAPI/Futures/AnyError.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvo {

/// The phases of a request, in order. One that did not occur took no time; the one in which the
/// request ended took the rest.
enum class RequestPhase {
  /// Waiting for the session's token, and for the queue that it comes through.
  token,
  /// A first attempt that was refused, the renewal of the session, and the new token.
  renewal,
  /// Redirects that were followed, up to the request to the last place.
  redirects,
  /// Waiting for a free connection, and for the network thread.
  queue,
  /// Resolving the host's name.
  name,
  connect,
  /// Setting up TLS.
  secure,
  /// Until it begins to be sent.
  send,
  /// Sending it, and waiting for the first byte or for an interceptor.
  wait,
  /// Receiving the answer.
  receive,
  /// Handing the answer to the thread that parses it. For what needed no request, such as a cached
  /// value: all of the time.
  handOver,
  /// Reading it.
  parse
};

template <>
inline constexpr EnumCase enumCases<RequestPhase>[] = {
    {"token"},  {"renewal"}, {"redirects"}, {"queue"},   {"name"},     {"connect"},
    {"secure"}, {"send"},    {"wait"},      {"receive"}, {"handOver"}, {"parse"}};

/// What became of one fetch, or of one request of the bootstrap or of a renewal. It holds no token:
/// texts that do are "***", and so is the path of an ad-metadata request. A value.
struct RequestReport {
  /// What answered a request.
  enum class Source { none, cache, interceptor, network };
  static constexpr std::size_t kPhases = 12;

  /// The name of the call, such as "fetchPage"; "openSession" and "fetchConfiguration" for the
  /// library's own.
  std::string_view operation;
  /// What was asked for: an identifier, the text of a search, the path of a lineup; may be empty.
  std::string identifier = {};

  /// Empty when nothing was to be sent, as for a value from the cache.
  std::string method = {};
  /// Of the request's URL, without the query.
  std::string path = {};
  /// The paths of the redirects that were followed, in order.
  std::vector<std::string> redirects = {};
  /// How often it was resent after the session was renewed.
  unsigned retries = 0;

  /// What answered it, or should have.
  Source source = Source::none;
  /// Of the last complete answer; 0 when there was none, or when it was rejected.
  int status = 0;
  /// What the fetch failed with; `URLError` -999 when it was cancelled or abandoned. A `URLError`
  /// comes without its timeline; of an error that may hold a token only the description is kept.
  std::optional<AnyError> error = std::nullopt;
  /// Bytes of the body as they came from the network, and as decoded.
  std::uint64_t bytesReceived = 0;
  std::uint64_t bytesDecoded = 0;
  /// The last one's, of the network.
  bool isConnectionReused = false;
  /// "1.0", "1.1" or "2"; empty when that is not known.
  std::string_view protocol = {};

  /// When it was called. For the time of day, subtract its age from the wall clock's now.
  std::chrono::steady_clock::time_point begun = {};
  /// From the call to the end of its future: the sum of its phases.
  std::chrono::nanoseconds total{0};
  std::array<std::chrono::nanoseconds, kPhases> phases = {};

  [[nodiscard]] std::chrono::nanoseconds time(RequestPhase phase) const {
    return phases[static_cast<std::size_t>(phase)];
  }
};

template <>
inline constexpr EnumCase enumCases<RequestReport::Source>[] = {
    {"none"}, {"cache"}, {"interceptor"}, {"network"}};

}  // namespace orvo
