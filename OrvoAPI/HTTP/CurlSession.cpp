#include <OrvoAPI/HTTP/CurlSessionInternal.h>

#include <algorithm>
#include <new>
#include <optional>
#include <utility>
#include <variant>

namespace orvo::detail {
namespace {

/// With more streams an HTTP/2 connection gets slower instead of faster: their bodies arrive by
/// turns and evict each other from the processor's caches (60 KB: 1.7 times the time with 100).
constexpr std::size_t kStreamsPerHost = 16;
/// To a host that is not known to multiplex, so many connections are opened at the same moment. A
/// further exchange waits for one of them to tell whether it can carry all. An app begins with two
/// requests: over HTTP/1.1 the second would come a handshake later.
constexpr std::size_t kOpenedAtOnce = 2;
/// Enough for a burst to find handles and hosts as the last one left them.
constexpr std::size_t kIdleTransfersKept = 16;
constexpr std::size_t kUnusedHostsKept = 16;

std::string_view hostName(const URL& url) {
  const std::string_view text = url.text();
  return text.substr(0, static_cast<std::size_t>(url.path().data() - text.data()));
}

URLError tookTooLong() { return makeURLError(URLError::timedOut, "no free connection in time"); }

/// Whether the host may have moved; nothing when the outcome does not tell.
std::optional<bool> foundNoWay(const HTTPOutcome& outcome) {
  const auto* const error = std::get_if<URLError>(&outcome);
  if (error == nullptr) return false;
  if (error->code == URLError::cancelled) return std::nullopt;
  return error->code == URLError::timedOut || error->code == URLError::cannotConnectToHost ||
         error->code == URLError::notConnectedToInternet ||
         error->code == URLError::networkConnectionLost;
}

}  // namespace

bool CurlSession::open() {
  if (pool_ != nullptr) return true;
  if (!NetworkThread::shared().isUsable()) return false;
  idle_.reserve(kIdleTransfersKept);
  auto pool = CurlPool::of(configuration_.certificateAuthorityFile.value_or(""));
  CURLSH* const share = pool != nullptr ? curl_share_init() : nullptr;
  if (share == nullptr) return false;
  // No lock functions: only the network thread uses them.
  if (curl_share_setopt(share, CURLSHOPT_SHARE, CURL_LOCK_DATA_COOKIE) != CURLSHE_OK ||
      curl_share_setopt(share, CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION) != CURLSHE_OK) {
    curl_share_cleanup(share);
    return false;
  }
  pool_ = std::move(pool);
  share_ = share;
  pool_->adjustHostConnections(static_cast<long>(configuration_.maximumConnectionsPerHost));
  return true;
}

void CurlSession::close() {
  // Those that wait come first, or they would take the places of the others.
  for (auto& [name, host] : hosts_) {
    while (!host.waiting.empty()) cancel(*host.waiting.front());
  }
  if (pool_ != nullptr) {
    pool_->endAll(*this);
    pool_->adjustHostConnections(-static_cast<long>(configuration_.maximumConnectionsPerHost));
  }
  hosts_.clear();
  idle_.clear();
  pool_.reset();
  if (share_ != nullptr) curl_share_cleanup(std::exchange(share_, nullptr));
}

void CurlSession::start(const std::shared_ptr<HTTPExchange>& exchange) {
  if (exchange->isCancelled()) return exchange->exchangeDidEnd(cancelledError());
  if (exchange->deadline() <= NetworkThread::shared().now()) {
    return exchange->exchangeDidEnd(tookTooLong());
  }
  if (!open()) return exchange->exchangeDidEnd(outOfMemory());
  auto& host = hostOf(*exchange);
  if (host.waiting.empty() && hasPlace(host)) return admit(exchange, host);
  wait(exchange, host);
}

CurlHost& CurlSession::hostOf(const HTTPExchange& exchange) {
  const auto& url = exchange.exchangeRequest().url;
  const auto name = hostName(url);
  auto found = hosts_.find(name);
  if (found == hosts_.end()) {
    auto share = LargeBodies::shared().shareOf(url);
    found = hosts_.try_emplace(std::string(name)).first;
    found->second.name = found->first;
    found->second.largeBodies = std::move(share);
  }
  return found->second;
}

bool CurlSession::hasPlace(const CurlHost& host) const {
  const std::size_t connections = configuration_.maximumConnectionsPerHost;
  const auto places = host.multiplexed ? std::max(kStreamsPerHost, connections) : connections;
  return host.underWay < places && LargeBodies::shared().mayStart(*host.largeBodies);
}

void CurlSession::wait(std::shared_ptr<HTTPExchange> exchange, CurlHost& host) {
  auto& waits = *exchange;
  waits.place_ = host.waiting.insert(host.waiting.end(), std::move(exchange));
  waits.waitingFor_ = &host;
  nextDeadline_ = std::min(nextDeadline_, waits.deadline());
}

std::shared_ptr<HTTPExchange> CurlSession::leaveLine(HTTPExchange& exchange) {
  auto held = std::move(*exchange.place_);
  std::exchange(exchange.waitingFor_, nullptr)->waiting.erase(exchange.place_);
  return held;
}

void CurlSession::admitWaiting(CurlHost& host) {
  while (!host.waiting.empty() && hasPlace(host)) {
    const auto next = leaveLine(*host.waiting.front());
    try {
      admit(next, host);
    } catch (const std::bad_alloc&) {
      next->exchangeDidEnd(outOfMemory());
    }
  }
}

void CurlSession::admitWaiting() {
  for (auto& [name, host] : hosts_) admitWaiting(host);
}

void CurlSession::runTimers() {
  const auto now = NetworkThread::shared().now();
  nextDeadline_ = NetworkTime::max();
  for (auto& [name, host] : hosts_) {
    for (auto place = host.waiting.begin(); place != host.waiting.end();) {
      auto& exchange = **place++;  // its place goes when it leaves
      if (exchange.deadline() <= now) {
        leaveLine(exchange)->exchangeDidEnd(tookTooLong());
      } else {
        nextDeadline_ = std::min(nextDeadline_, exchange.deadline());
      }
    }
  }
}

void CurlSession::networkDidChange() {
  for (auto& [name, host] : hosts_) host.isFailing = true;
}

/// Throws `std::bad_alloc` before anything has changed.
void CurlSession::admit(const std::shared_ptr<HTTPExchange>& exchange, CurlHost& host) {
  std::unique_ptr<CurlTransfer> transfer;
  if (idle_.empty()) {
    transfer = std::make_unique<CurlTransfer>(configuration_, share_, pool_->connections());
  } else {
    transfer = std::move(idle_.back());
    idle_.pop_back();
  }
  pool_->reserveOne();
  transfer->begin(exchange, *this, host);
  transfer->setMultiplexed(host.multiplexed);
  transfer->setWaits(host.multiplexed || host.underWay >= kOpenedAtOnce);
  exchange->transfer_ = transfer.get();
  ++host.underWay;
  LargeBodies::didStart(*host.largeBodies);
  pool_->add(std::move(transfer));
}

void CurlSession::cancel(HTTPExchange& exchange) {
  if (exchange.transfer_ != nullptr) return exchange.transfer_->end(cancelledError());
  if (exchange.waitingFor_ != nullptr) leaveLine(exchange)->exchangeDidEnd(cancelledError());
}

void CurlSession::transferDidEnd(CurlTransfer& transfer, HTTPOutcome outcome) {
  auto& host = transfer.host();
  const auto exchange = transfer.exchange();
  host.multiplexed = transfer.isMultiplexed();
  host.isFailing = foundNoWay(outcome).value_or(host.isFailing);
  --host.underWay;
  LargeBodies::shared().didEnd(*host.largeBodies);
  // What was refused memory may have left its connection in no state to go on.
  const auto* const error = std::get_if<URLError>(&outcome);
  if (error != nullptr && error->code == URLError::unknown) {
    pool_->connections().retire(transfer.connection());
  }
  if (auto* const hop = exchange->measured()) transfer.measure(*hop);
  auto ended = pool_->remove(transfer);
  cookies_.note(ended->headerBytes(), ended->handle());
  exchange->transfer_ = nullptr;
  ended->clear();
  if (idle_.size() < kIdleTransfersKept) idle_.push_back(std::move(ended));
  admitWaiting(host);
  releaseIfUnused(host);
  exchange->exchangeDidEnd(std::move(outcome));
}

void CurlSession::releaseIfUnused(CurlHost& host) {
  const bool isUsed = host.underWay > 0 || !host.waiting.empty();
  if (isUsed || hosts_.size() <= kUnusedHostsKept) return;
  hosts_.erase(hosts_.find(host.name));
}

}  // namespace orvo::detail
