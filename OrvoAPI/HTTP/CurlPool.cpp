#include <OrvoAPI/HTTP/CurlPoolInternal.h>
#include <OrvoAPI/HTTP/CurlSessionInternal.h>
#include <OrvoAPI/HTTP/WatchdogInternal.h>

#include <sys/epoll.h>

#include <map>
#include <memory>
#include <utility>

namespace orvo::detail {
namespace {

std::map<std::string, std::weak_ptr<CurlPool>>& pools() {
  static auto* const pools = new std::map<std::string, std::weak_ptr<CurlPool>>;
  return *pools;
}

}  // namespace

std::shared_ptr<CurlPool> CurlPool::of(const std::string& authorityFile) {
  auto& known = pools()[authorityFile];
  if (auto pool = known.lock()) return pool;
  std::unique_ptr<CURLM, decltype(&curl_multi_cleanup)> multi(curl_multi_init(),
                                                              &curl_multi_cleanup);
  if (multi == nullptr) return nullptr;
  std::unique_ptr<CurlPool> pool(new CurlPool(multi.get(), authorityFile));
  (void)multi.release();
  std::shared_ptr<CurlPool> shared(std::move(pool));
  known = shared;
  return shared;
}

CurlPool::CurlPool(CURLM* multi, std::string authorityFile)
    : multi_(multi), authorityFile_(std::move(authorityFile)) {
  setUp();
  NetworkThread::shared().add(*this);
}

void CurlPool::setUp() {
  curl_multi_setopt(multi_, CURLMOPT_SOCKETFUNCTION, &CurlPool::onSocket);
  curl_multi_setopt(multi_, CURLMOPT_SOCKETDATA, this);
  curl_multi_setopt(multi_, CURLMOPT_TIMERFUNCTION, &CurlPool::onTimer);
  curl_multi_setopt(multi_, CURLMOPT_TIMERDATA, this);
  adjustHostConnections(0);
  curlTimer_ = NetworkTime::max();
}

/// A multi handle that was refused memory is in no state to go on: libcurl 7.88 leaves tables half
/// made, which crash it when they are next used. All that was under way on it ends.
void CurlPool::startAnew() {
  {
    const Watchdog::Call call;
    curl_multi_cleanup(multi_);
  }
  multi_ = curl_multi_init();
  setUp();
  for (const auto& transfer : active_) transfer->fail(outOfMemory());
  checkDeadlinesSoon();
}

CurlPool::~CurlPool() {
  {
    const Watchdog::Call call;
    curl_multi_cleanup(multi_);
  }
  NetworkThread::shared().remove(*this);
  pools().erase(authorityFile_);
}

void CurlPool::adjustHostConnections(long connections) {
  hostConnections_ += connections;
  curl_multi_setopt(multi_, CURLMOPT_MAX_HOST_CONNECTIONS, hostConnections_);
  // Without it, the end of a burst would close most of its connections.
  curl_multi_setopt(multi_, CURLMOPT_MAXCONNECTS, std::max(4 * hostConnections_, 8L));
}

void CurlPool::add(std::unique_ptr<CurlTransfer> transfer) {
  transfer->place().index = active_.size();
  nextDeadline_ = std::min(nextDeadline_, transfer->deadline());
  active_.push_back(std::move(transfer));
  auto& added = *active_.back();
  added.setFresh(connections_.isCondemned(added.host().name), added.host().isFailing);
  if (multi_ == nullptr) {
    multi_ = curl_multi_init();
    setUp();
  }
  if (curl_multi_add_handle(multi_, added.handle()) != CURLM_OK) {
    // Not ended here: the place would be given to the next, which would fail in the same way, and
    // so on, one within the other.
    added.fail(outOfMemory());
    checkDeadlinesSoon();
  }
}

std::unique_ptr<CurlTransfer> CurlPool::remove(CurlTransfer& transfer) {
  {
    const Watchdog::Call call;
    curl_multi_remove_handle(multi_, transfer.handle());
  }
  connections_.settle(transfer.connection(), transfer.received());
  const auto [index, socket] = transfer.place();
  if (socket >= 0) NetworkThread::shared().forgetContext(socket, &transfer);
  std::swap(active_[index], active_.back());
  active_[index]->place().index = index;
  auto removed = std::move(active_.back());
  active_.pop_back();
  if (active_.empty()) nextDeadline_ = NetworkTime::max();
  shutDownUnused();
  return removed;
}

/// Ends transfers one after another: the end of each may let another one begin.
template <class Condition, class End>
void CurlPool::endThose(Condition&& condition, End&& end) {
  for (;;) {
    const auto found = std::find_if(active_.begin(), active_.end(),
                                    [&](const auto& transfer) { return condition(*transfer); });
    if (found == active_.end()) return;
    end(**found);
  }
}

void CurlPool::endAll(const CurlSession& session) {
  endThose([&](const CurlTransfer& transfer) { return transfer.session() == &session; },
           [](CurlTransfer& transfer) { transfer.end(cancelledError()); });
}

void CurlPool::act(int socket, int events) {
  if (multi_ == nullptr) return;
  int running = 0;
  CURLMcode code = CURLM_OK;
  {
    const Watchdog::Call call;
    code = curl_multi_socket_action(multi_, socket, events, &running);
  }
  while (const auto connection = connections_.takeFlooded()) {
    endOn(*connection, URLError::badServerResponse, "the server floods the connection");
  }
  collect();
  if (code == CURLM_OUT_OF_MEMORY) startAnew();
}

void CurlPool::collect() {
  int remaining = 0;
  while (const CURLMsg* const message = curl_multi_info_read(multi_, &remaining)) {
    if (message->msg != CURLMSG_DONE) continue;
    CurlTransfer::from(message->easy_handle)->end(message->data.result);
  }
}

void CurlPool::socketIsReady(int socket, std::uint32_t events, void* context) {
  const bool isInput = (events & EPOLLIN) != 0;
  if (auto* const transfer = static_cast<CurlTransfer*>(context)) {
    transfer->noteSocketActivity(isInput);
  }
  const bool isToBeWeighed = isInput && connections_.noteInput(socket);
  int mask = 0;
  if ((events & EPOLLIN) != 0) mask |= CURL_CSELECT_IN;
  if ((events & EPOLLOUT) != 0) mask |= CURL_CSELECT_OUT;
  if ((events & (EPOLLERR | EPOLLHUP)) != 0) mask |= CURL_CSELECT_ERR;
  act(socket, mask);
  if (!isToBeWeighed) return;
  if (connections_.isStuck(socket)) return endStuck(socket);
  weigh(socket);
}

void CurlPool::restWasDisturbed(int socket) {
  connections_.retireIfUnasked(socket);
  shutDownUnused();
}

/// A TLS library that was refused memory may read no more, and the thread would go round for as
/// long as bytes are there.
void CurlPool::endStuck(int socket) {
  endThose([socket](const CurlTransfer& transfer) { return transfer.isOn(socket); },
           [](CurlTransfer& transfer) {
             transfer.end(makeURLError(URLError::unknown, "the connection is stuck"));
           });
}

/// Ends the transfers of a connection that brings too much for what it delivers, as with endless
/// chunk extensions and empty frames.
void CurlPool::weigh(int socket) {
  std::uint64_t delivered = 0, bound = 0;
  Connections::ID connection;
  for (const auto& transfer : active_) {
    if (transfer->connection().socket != socket) continue;
    connection = transfer->connection();
    delivered += transfer->received();
    bound = std::max(bound, transfer->bound());
  }
  if (connection.number == 0 || !connections_.isOverdrawn(connection, delivered, bound)) return;
  connections_.retire(connection);
  endOn(connection, URLError::dataLengthExceedsMaximum, "the answer costs too many bytes");
  shutDownUnused();
}

void CurlPool::endOn(const Connections::ID& connection, int code, const char* message) {
  // Each has an error of its own: a copy of one could throw.
  endThose([&](const CurlTransfer& transfer) { return transfer.connection() == connection; },
           [&](CurlTransfer& transfer) { transfer.end(makeURLError(code, message)); });
}

void CurlPool::retireConnections() {
  connections_.retireAll();
  shutDownUnused();
}

void CurlPool::suspectConnections() {
  connections_.suspectAll();
  shutDownUnused();
}

void CurlPool::shutDownUnused() {
  connections_.shutDownUnused([this](const Connections::ID& connection) {
    // By the socket: what is still connecting has no connection yet.
    return std::any_of(active_.begin(), active_.end(), [&connection](const auto& transfer) {
      return transfer->isOn(connection.socket);
    });
  });
}

void CurlPool::runTimers() {
  const auto now = NetworkThread::shared().now();
  if (curlTimer_ <= now) {
    curlTimer_ = NetworkTime::max();
    act(CURL_SOCKET_TIMEOUT, 0);
  }
  if (nextDeadline_ <= now) checkDeadlines();
}

void CurlPool::checkDeadlines() {
  const auto now = NetworkThread::shared().now();
  const auto isOver = [now](const CurlTransfer& transfer) { return transfer.deadline() <= now; };
  for (const auto& transfer : active_) {
    if (isOver(*transfer) && !transfer->hasFailed()) {
      connections_.suspectHost(transfer->host().name);
    }
  }
  shutDownUnused();
  endThose(isOver, [](CurlTransfer& transfer) { transfer.giveUp(); });
  nextDeadline_ = NetworkTime::max();
  for (const auto& transfer : active_) {
    nextDeadline_ = std::min(nextDeadline_, transfer->deadline());
  }
}

int CurlPool::onSocket(CURL* handle, curl_socket_t socket, int what, void* self, void*) {
  auto& thread = NetworkThread::shared();
  auto& pool = *static_cast<CurlPool*>(self);
  if (what == CURL_POLL_REMOVE) {
    // Others, as those by which libcurl's resolver wakes it, are closed without a word.
    pool.connections_.mayRest(socket) ? thread.rest(socket) : thread.unwatch(socket);
    return 0;
  }
  auto* const transfer = CurlTransfer::from(handle);
  if (transfer != nullptr) {
    // A transfer whose connection broke goes on with another. The earlier socket is forgotten: it
    // may outlive the transfer.
    const int earlier = std::exchange(transfer->place().socket, socket);
    if (earlier >= 0 && earlier != socket) thread.forgetContext(earlier, transfer);
  }
  const std::uint32_t events = ((what & CURL_POLL_IN) != 0 ? std::uint32_t{EPOLLIN} : 0U) |
                               ((what & CURL_POLL_OUT) != 0 ? std::uint32_t{EPOLLOUT} : 0U);
  if (!thread.watch(socket, events, pool, transfer) && transfer != nullptr) {
    transfer->fail(outOfMemory());
    pool.checkDeadlinesSoon();
  }
  return 0;
}

int CurlPool::onTimer(CURLM*, long milliseconds, void* self) {
  auto& timer = static_cast<CurlPool*>(self)->curlTimer_;
  timer = milliseconds < 0
              ? NetworkTime::max()
              : NetworkThread::shared().now() + std::chrono::milliseconds(milliseconds);
  return 0;
}

}  // namespace orvo::detail
