#include <OrvoAPI/Platform/CurlSessionInternal.h>

#include <sys/epoll.h>

#include <utility>

namespace orvo::detail {
namespace {

/// Streams of an HTTP/2 connection that servers allow at least, by the standard's advice.
constexpr std::size_t kStreamsPerHost = 100;
/// Enough for a burst to find handles and hosts as the last one left them.
constexpr std::size_t kIdleTransfersKept = 16;
constexpr std::size_t kUnusedHostsKept = 16;

std::string_view hostName(const URL& url) {
  const std::string_view text = url.text();
  return text.substr(0, static_cast<std::size_t>(url.path().data() - text.data()));
}

URLError cancelled() { return {URLError::cancelled, "cancelled"}; }

}  // namespace

std::shared_ptr<NetworkSession> NetworkSession::make(const URLSessionConfiguration& configuration) {
  return std::make_shared<CurlSession>(configuration);
}

CurlSession::~CurlSession() = default;

bool CurlSession::open() {
  if (multi_ != nullptr) return true;
  share_ = curl_share_init();
  multi_ = curl_multi_init();
  if (multi_ == nullptr || share_ == nullptr) {
    close();
    return false;
  }
  // No lock functions: only the network thread uses them.
  curl_share_setopt(share_, CURLSHOPT_SHARE, CURL_LOCK_DATA_COOKIE);
  curl_share_setopt(share_, CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
  const auto connections = long{configuration_.maximumConnectionsPerHost};
  curl_multi_setopt(multi_, CURLMOPT_MAX_HOST_CONNECTIONS, connections);
  // Without it a burst that ends closes most of its connections.
  curl_multi_setopt(multi_, CURLMOPT_MAXCONNECTS, std::max(4 * connections, 8L));
  curl_multi_setopt(multi_, CURLMOPT_SOCKETFUNCTION, &CurlSession::onSocket);
  curl_multi_setopt(multi_, CURLMOPT_SOCKETDATA, this);
  curl_multi_setopt(multi_, CURLMOPT_TIMERFUNCTION, &CurlSession::onTimer);
  curl_multi_setopt(multi_, CURLMOPT_TIMERDATA, this);
  return true;
}

void CurlSession::close() {
  // Those that wait come first, or they would take the places of the others.
  for (auto& [name, host] : hosts_) {
    for (const auto& exchange : std::exchange(host.waiting, {})) cancel(*exchange);
  }
  while (!active_.empty()) finish(*active_.back(), cancelled());
  hosts_.clear();
  idle_.clear();
  if (multi_ != nullptr) curl_multi_cleanup(std::exchange(multi_, nullptr));
  if (share_ != nullptr) curl_share_cleanup(std::exchange(share_, nullptr));
}

void CurlSession::start(std::shared_ptr<HTTPExchange> exchange) {
  if (exchange->isCancelled()) return exchange->exchangeDidEnd(cancelled());
  if (!open()) return exchange->exchangeDidEnd(URLError{URLError::unknown, "no resources"});
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
  const std::size_t capacity =
      host.multiplexed ? kStreamsPerHost : std::max(configuration_.maximumConnectionsPerHost, 1U);
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
  transfer->begin(std::move(exchange));
  transfer->setMultiplexed(host.multiplexed);
  transfer->place() = {&host, active_.size(), -1};
  ++host.underWay;
  nextDeadline_ = std::min(nextDeadline_, transfer->deadline());
  active_.push_back(std::move(transfer));
  auto& added = *active_.back();
  if (curl_multi_add_handle(multi_, added.handle()) != CURLM_OK) {
    finish(added, CURLE_FAILED_INIT);
  }
}

void CurlSession::cancel(HTTPExchange& exchange) {
  if (exchange.transfer_ != nullptr) return finish(*exchange.transfer_, cancelled());
  if (std::exchange(exchange.waiting_, false)) exchange.exchangeDidEnd(cancelled());
}

void CurlSession::finish(CurlTransfer& transfer, CURLcode code) {
  finish(transfer, transfer.outcome(code));
}

void CurlSession::finish(CurlTransfer& transfer, HTTPOutcome outcome) {
  curl_multi_remove_handle(multi_, transfer.handle());
  const auto [host, index, socket] = transfer.place();
  if (socket >= 0) NetworkThread::shared().forgetContext(socket, &transfer);
  host->multiplexed = transfer.isMultiplexed();
  --host->underWay;
  std::swap(active_[index], active_.back());
  active_[index]->place().index = index;
  auto ended = std::move(active_.back());
  active_.pop_back();
  if (active_.empty()) nextDeadline_ = NetworkTime::max();

  const auto exchange = ended->exchange();
  exchange->transfer_ = nullptr;
  ended->clear();
  if (idle_.size() < kIdleTransfersKept) idle_.push_back(std::move(ended));
  admitWaiting(*host);
  releaseIfUnused(*host);
  exchange->exchangeDidEnd(std::move(outcome));
}

void CurlSession::releaseIfUnused(CurlHost& host) {
  if (host.underWay > 0 || hosts_.size() <= kUnusedHostsKept) return;
  hosts_.erase(hosts_.find(host.name));
}

void CurlSession::collect() {
  int remaining = 0;
  while (const CURLMsg* const message = curl_multi_info_read(multi_, &remaining)) {
    if (message->msg != CURLMSG_DONE) continue;
    finish(*CurlTransfer::from(message->easy_handle), message->data.result);
  }
}

void CurlSession::socketIsReady(int socket, std::uint32_t events, void* context) {
  // Bytes of a header line that is not complete yet show here only. On a connection with several
  // exchanges they may be another's.
  if (auto* const transfer = static_cast<CurlTransfer*>(context);
      transfer != nullptr && !transfer->isMultiplexed()) {
    transfer->noteActivity();
  }
  int mask = 0;
  if ((events & EPOLLIN) != 0) mask |= CURL_CSELECT_IN;
  if ((events & EPOLLOUT) != 0) mask |= CURL_CSELECT_OUT;
  if ((events & (EPOLLERR | EPOLLHUP)) != 0) mask |= CURL_CSELECT_ERR;
  int running = 0;
  curl_multi_socket_action(multi_, socket, mask, &running);
  collect();
}

void CurlSession::runTimers() {
  const auto now = NetworkThread::shared().now();
  if (curlTimer_ <= now) {
    curlTimer_ = NetworkTime::max();
    int running = 0;
    curl_multi_socket_action(multi_, CURL_SOCKET_TIMEOUT, 0, &running);
    collect();
  }
  if (nextDeadline_ <= now) checkDeadlines();
}

void CurlSession::checkDeadlines() {
  const auto now = NetworkThread::shared().now();
  nextDeadline_ = NetworkTime::max();
  std::vector<CurlTransfer*> silent;
  for (const auto& transfer : active_) {
    const auto deadline = transfer->deadline();
    if (deadline <= now) {
      silent.push_back(transfer.get());
    } else {
      nextDeadline_ = std::min(nextDeadline_, deadline);
    }
  }
  for (auto* const transfer : silent) {
    finish(*transfer, URLError{URLError::timedOut, "the server is silent"});
  }
}

int CurlSession::onSocket(CURL* handle, curl_socket_t socket, int what, void* self, void*) {
  auto& thread = NetworkThread::shared();
  if (what == CURL_POLL_REMOVE) {
    thread.unwatch(socket);
    return 0;
  }
  auto* const transfer = CurlTransfer::from(handle);
  if (transfer != nullptr) transfer->place().socket = socket;
  const std::uint32_t events = ((what & CURL_POLL_IN) != 0 ? std::uint32_t{EPOLLIN} : 0U) |
                               ((what & CURL_POLL_OUT) != 0 ? std::uint32_t{EPOLLOUT} : 0U);
  thread.watch(socket, events, *static_cast<CurlSession*>(self), transfer);
  return 0;
}

int CurlSession::onTimer(CURLM*, long milliseconds, void* self) {
  auto& timer = static_cast<CurlSession*>(self)->curlTimer_;
  timer = milliseconds < 0
              ? NetworkTime::max()
              : NetworkThread::shared().now() + std::chrono::milliseconds(milliseconds);
  return 0;
}

}  // namespace orvo::detail
