#include <OrvoAPI/HTTP/CurlSessionInternal.h>

#include <algorithm>
#include <utility>

namespace orvo::detail {
namespace {

/// With more streams an HTTP/2 connection gets slower instead of faster: their bodies come in turns
/// and drive each other out of the processor's caches (60 KB: 1.7 times the time with 100).
constexpr std::size_t kStreamsPerHost = 16;
/// Enough for a burst to find handles and hosts as the last one left them.
constexpr std::size_t kIdleTransfersKept = 16;
constexpr std::size_t kUnusedHostsKept = 16;

std::string_view hostName(const URL& url) {
  const std::string_view text = url.text();
  return text.substr(0, static_cast<std::size_t>(url.path().data() - text.data()));
}

URLError cancelled() { return {URLError::cancelled, "cancelled"}; }

}  // namespace

bool CurlSession::open() {
  if (pool_ != nullptr) return true;
  if (!NetworkThread::shared().isUsable()) return false;
  pool_ = CurlPool::of(configuration_.certificateAuthorityFile.value_or(""));
  share_ = curl_share_init();
  if (pool_ == nullptr || share_ == nullptr) return false;
  pool_->adjustHostConnections(long{configuration_.maximumConnectionsPerHost});
  // No lock functions: only the network thread uses them.
  curl_share_setopt(share_, CURLSHOPT_SHARE, CURL_LOCK_DATA_COOKIE);
  curl_share_setopt(share_, CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
  return true;
}

void CurlSession::close() {
  // Those that wait come first, or they would take the places of the others.
  for (auto& [name, host] : hosts_) {
    for (const auto& exchange : std::exchange(host.waiting, {})) cancel(*exchange);
  }
  if (pool_ != nullptr) {
    pool_->endAll(*this, cancelled());
    pool_->adjustHostConnections(-long{configuration_.maximumConnectionsPerHost});
  }
  hosts_.clear();
  idle_.clear();
  pool_.reset();
  if (share_ != nullptr) curl_share_cleanup(std::exchange(share_, nullptr));
}

void CurlSession::start(std::shared_ptr<HTTPExchange> exchange) {
  if (exchange->isCancelled()) return exchange->exchangeDidEnd(cancelled());
  if (!open()) return exchange->exchangeDidEnd(URLError{URLError::unknown, "no memory"});
  const auto name = hostName(exchange->exchangeRequest().url);
  auto found = hosts_.find(name);
  if (found == hosts_.end()) {
    found = hosts_.try_emplace(std::string(name)).first;
    found->second.name = found->first;
  }
  auto& host = found->second;
  exchange->waiting_ = true;
  host.waiting.push_back(std::move(exchange));
  admitWaiting(host);
}

void CurlSession::admitWaiting(CurlHost& host) {
  const std::size_t connections = configuration_.maximumConnectionsPerHost;
  const std::size_t capacity =
      host.multiplexed ? std::max(kStreamsPerHost, connections) : connections;
  while (host.underWay < capacity && !host.waiting.empty()) {
    auto exchange = std::move(host.waiting.front());
    host.waiting.pop_front();
    // One that was cancelled meanwhile has ended already.
    if (std::exchange(exchange->waiting_, false)) admit(std::move(exchange), host);
  }
}

void CurlSession::admit(std::shared_ptr<HTTPExchange> exchange, CurlHost& host) {
  std::unique_ptr<CurlTransfer> transfer;
  if (idle_.empty()) {
    transfer = std::make_unique<CurlTransfer>(configuration_, share_);
  } else {
    transfer = std::move(idle_.back());
    idle_.pop_back();
  }
  exchange->transfer_ = transfer.get();
  ++host.underWay;
  transfer->begin(std::move(exchange), *this, host);
  transfer->setMultiplexed(host.multiplexed);
  pool_->add(std::move(transfer));
}

void CurlSession::cancel(HTTPExchange& exchange) {
  if (exchange.transfer_ != nullptr) return exchange.transfer_->end(cancelled());
  if (std::exchange(exchange.waiting_, false)) exchange.exchangeDidEnd(cancelled());
}

void CurlSession::transferDidEnd(CurlTransfer& transfer, HTTPOutcome outcome) {
  auto& host = transfer.host();
  const auto exchange = transfer.exchange();
  host.multiplexed = transfer.isMultiplexed();
  --host.underWay;
  auto ended = pool_->remove(transfer);
  exchange->transfer_ = nullptr;
  ended->clear();
  if (idle_.size() < kIdleTransfersKept) idle_.push_back(std::move(ended));
  admitWaiting(host);
  releaseIfUnused(host);
  exchange->exchangeDidEnd(std::move(outcome));
}

void CurlSession::releaseIfUnused(CurlHost& host) {
  if (host.underWay > 0 || hosts_.size() <= kUnusedHostsKept) return;
  hosts_.erase(hosts_.find(host.name));
}

}  // namespace orvo::detail
