#include <OrvoAPI/HTTP/CurlPoolInternal.h>
#include <OrvoAPI/HTTP/CurlSessionInternal.h>
#include <OrvoAPI/HTTP/LargeBodiesInternal.h>
#include <OrvoAPI/HTTP/NetworkThreadInternal.h>
#include <OrvoAPI/HTTP/WatchdogInternal.h>
#include <OrvoAPI/Queues/WorkerPoolInternal.h>

#include <curl/curl.h>
#include <dlfcn.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
#include <utility>

namespace orvo::detail {
namespace {

constexpr int kEventsAtATime = 64;
/// Longer than a few answers take, shorter than anybody notices.
constexpr std::chrono::microseconds kLongestHold{250};
/// Nothing on the way forgets a connection for less.
constexpr std::chrono::seconds kShortestSleep{5};

[[gnu::tls_model("initial-exec")]] thread_local constinit bool isNetworkThread = false;

/// How far the clock that counts sleep is ahead of the one that does not.
std::chrono::nanoseconds sleptSinceBoot() {
  timespec awake{}, all{};
  clock_gettime(CLOCK_MONOTONIC, &awake);
  clock_gettime(CLOCK_BOOTTIME, &all);
  return std::chrono::seconds(all.tv_sec - awake.tv_sec) +
         std::chrono::nanoseconds(all.tv_nsec - awake.tv_nsec);
}

/// Keeps the TLS library from registering its exit handler. A process that ends while another
/// thread begins its first request would take the TLS library down while the network thread uses
/// it. What it holds goes with the process. Found by name, because libcurl may use another one.
void keepTLSToTheEnd() {
  using Initialise = int (*)(std::uint64_t, const void*);
  constexpr std::uint64_t kNoExitHandler = 0x80000;
  void* const initialise = dlsym(RTLD_DEFAULT, "OPENSSL_init_crypto");
  if (initialise != nullptr) reinterpret_cast<Initialise>(initialise)(kNoExitHandler, nullptr);
}

}  // namespace

NetworkThread& NetworkThread::shared() {
  static auto* const thread = new NetworkThread;  // its thread may outlive static destruction
  return *thread;
}

bool NetworkThread::isCurrent() { return isNetworkThread; }

std::shared_ptr<CurlSession> NetworkThread::makeSession(URLSessionConfiguration configuration) {
  if (!configuration.certificateAuthorityFile) {
    // Like every read of the environment: safe as long as the app does not write to it.
    const char* const file = std::getenv("SSL_CERT_FILE");  // NOLINT(concurrency-mt-unsafe)
    if (file != nullptr && *file != '\0') configuration.certificateAuthorityFile = file;
  }
  configuration.maximumConnectionsPerHost = std::max(configuration.maximumConnectionsPerHost, 1U);
  return std::make_shared<CurlSession>(std::move(configuration));
}

std::optional<URLError> NetworkThread::start(std::shared_ptr<CurlSession> session,
                                             std::shared_ptr<HTTPExchange> exchange) {
  if (isForkedChild()) {
    return URLError{URLError::unknown, "forked from a process that uses the network already"};
  }
  if (post({Command::Kind::start, std::move(session), std::move(exchange)})) return std::nullopt;
  const LockGuard guard(lock_);
  if (state_ == State::ended) return URLError{URLError::cancelled, "the process is ending"};
  return URLError{URLError::unknown, "no network thread could be started"};
}

void NetworkThread::cancel(std::shared_ptr<CurlSession> session,
                           std::shared_ptr<HTTPExchange> exchange) {
  post({Command::Kind::cancel, std::move(session), std::move(exchange)});
}

void NetworkThread::close(std::shared_ptr<CurlSession> session) {
  post({Command::Kind::close, std::move(session), nullptr});
}

void NetworkThread::networkChanged() { post({Command::Kind::changeNetwork, nullptr, nullptr}); }

void NetworkThread::wake() {
  if (isForkedChild()) return;
  const LockGuard guard(lock_);
  if (state_ == State::running) eventfd_write(wakeup_, 1);
}

bool NetworkThread::post(Command command) {
  if (isForkedChild()) return false;
  const LockGuard guard(lock_);
  if (state_ == State::unused && command.kind == Command::Kind::start) begin();
  if (state_ != State::running) return false;
  commands_.push_back(std::move(command));
  if (commands_.size() == 1) eventfd_write(wakeup_, 1);
  return true;
}

void NetworkThread::begin() {
  atProcessExit(ExitStage::network, [] { shared().shutDown(); });
  keepTLSToTheEnd();
  // An app that has used the TLS library before has its exit handler registered: ours runs first.
  if (std::atexit([] { shared().shutDown(); }) != 0) {
    state_ = State::ended;  // the handlers have all been run
    return;
  }
  epoll_ = epoll_create1(EPOLL_CLOEXEC);
  wakeup_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  epoll_event event{};
  event.events = EPOLLIN;
  event.data.fd = wakeup_;
  if (epoll_ctl(epoll_, EPOLL_CTL_ADD, wakeup_, &event) == 0) {
    thread_ = startJoinableThread("orvo-network", [] { shared().run(); });
  }
  state_ = thread_ ? State::running : State::failed;
}

void NetworkThread::shutDown() {
  if (isForkedChild()) return;
  std::optional<pthread_t> thread;
  {
    const LockGuard guard(lock_);
    if (state_ == State::running) eventfd_write(wakeup_, 1);
    state_ = State::ended;
    thread.swap(thread_);
  }
  if (thread) joinWithin(*thread, kExitPatience);
}

void NetworkThread::run() {
  isNetworkThread = true;
  // Here, because it takes a while and leaves something behind with its thread. Reference-counted:
  // an app that uses libcurl itself does not notice.
  isUsable_ = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
  // Registered once more, to run before another TLS library takes itself down: that has just
  // registered its own exit handler.
  std::atexit([] { shared().shutDown(); });
  now_ = std::chrono::steady_clock::now();
  slept_ = sleptSinceBoot();
  Watchdog::shared().start();
  WorkerPool::holdWakes();
  while (runCommands()) {
    // By index: ending an exchange may end a session and its pool.
    for (std::size_t i = 0; i < pools_.size(); ++i) {
      if (pools_[i]->nextTimer() <= now_) pools_[i]->runTimers();
    }
    const bool wereFreed = LargeBodies::shared().wereFreed();
    for (const auto& session : sessions_) {
      if (session->nextTimer() <= now_) session->runTimers();
      if (wereFreed) session->admitWaiting();
    }
    waitForEvents();
  }
  for (const auto& session : std::exchange(sessions_, {})) session->close();
  Watchdog::shared().stop();
  WorkerPool::wakeHeld();
  ::close(wakeup_);
  ::close(epoll_);
}

/// False when the process is ending; the commands that came before that have been run.
bool NetworkThread::runCommands() {
  bool running = true;
  {
    const LockGuard guard(lock_);
    taken_.swap(commands_);
    running = state_ == State::running;
  }
  if (!taken_.empty()) noticeSleep();
  for (auto& command : taken_) runCommand(std::move(command));
  taken_.clear();
  return running;
}

void NetworkThread::runCommand(Command command) {
  auto& [kind, session, exchange] = command;
  const auto found = std::find(sessions_.begin(), sessions_.end(), session);
  switch (kind) {
    case Command::Kind::start:
      if (found == sessions_.end()) sessions_.push_back(session);
      session->start(std::move(exchange));
      break;
    case Command::Kind::cancel:
      session->cancel(*exchange);
      break;
    case Command::Kind::close:
      if (found == sessions_.end()) break;
      session->close();
      sessions_.erase(found);
      break;
    case Command::Kind::changeNetwork:
      changeNetwork();
      break;
  }
}

void NetworkThread::changeNetwork() {
  for (auto* const pool : pools_) pool->retireConnections();
  for (const auto& session : sessions_) session->networkDidChange();
}

/// While the device slept, servers and routers may have forgotten the connections, without a word.
void NetworkThread::noticeSleep() {
  const auto slept = sleptSinceBoot();
  if (slept - std::exchange(slept_, slept) < kShortestSleep) return;
  for (auto* const pool : pools_) pool->suspectConnections();
  for (const auto& session : sessions_) session->networkDidChange();
}

void NetworkThread::add(CurlPool& pool) { pools_.push_back(&pool); }

void NetworkThread::remove(CurlPool& pool) {
  for (auto& watch : watches_) {
    if (watch.pool == &pool) watch = {};
  }
  std::erase(pools_, &pool);
}

void NetworkThread::waitForEvents() {
  std::array<epoll_event, kEventsAtATime> events;
  int count = 0;
  if (WorkerPool::holdsAWake()) {
    // While more comes at once, the workers that handle the answers are not woken for each.
    count = epoll_wait(epoll_, events.data(), kEventsAtATime, 0);
    if (count <= 0 || std::chrono::steady_clock::now() >= holdEnd_) WorkerPool::wakeHeld();
  }
  if (count <= 0) {
    count = epoll_wait(epoll_, events.data(), kEventsAtATime, millisecondsToNextTimer());
  }
  now_ = std::chrono::steady_clock::now();
  if (!WorkerPool::holdsAWake()) holdEnd_ = now_ + kLongestHold;
  for (int i = 0; i < count; ++i) {
    const auto& event = events[static_cast<std::size_t>(i)];
    if (event.data.fd == wakeup_) {
      eventfd_t value = 0;
      eventfd_read(wakeup_, &value);
      continue;
    }
    // An event of a socket that was closed meanwhile finds no watcher, or one that finds nothing to
    // read.
    const auto watch = watches_[static_cast<std::size_t>(event.data.fd)];
    if (watch.pool != nullptr) {
      watch.pool->socketIsReady(event.data.fd, event.events, watch.context);
    }
  }
}

int NetworkThread::millisecondsToNextTimer() const {
  auto next = NetworkTime::max();
  for (const auto* const pool : pools_) next = std::min(next, pool->nextTimer());
  for (const auto& session : sessions_) next = std::min(next, session->nextTimer());
  if (next == NetworkTime::max()) return -1;
  const auto wait =
      std::chrono::ceil<std::chrono::milliseconds>(next - std::chrono::steady_clock::now());
  constexpr std::chrono::milliseconds kLongest = std::chrono::hours(24);
  return static_cast<int>(std::clamp(wait, std::chrono::milliseconds(0), kLongest).count());
}

void NetworkThread::watch(int socket, std::uint32_t events, CurlPool& pool, void* context) {
  const auto index = static_cast<std::size_t>(socket);
  if (index >= watches_.size()) watches_.resize(index + 1);
  auto& watch = watches_[index];
  epoll_event event{};
  event.events = events;
  event.data.fd = socket;
  // If a socket was closed unnoticed, its number is another's now.
  if (watch.pool == nullptr || epoll_ctl(epoll_, EPOLL_CTL_MOD, socket, &event) != 0) {
    epoll_ctl(epoll_, EPOLL_CTL_ADD, socket, &event);
  }
  watch = {&pool, context};
}

void NetworkThread::unwatch(int socket) {
  const auto index = static_cast<std::size_t>(socket);
  if (index >= watches_.size() || watches_[index].pool == nullptr) return;
  epoll_ctl(epoll_, EPOLL_CTL_DEL, socket, nullptr);
  watches_[index] = {};
}

void NetworkThread::forgetContext(int socket, const void* context) {
  const auto index = static_cast<std::size_t>(socket);
  if (index < watches_.size() && watches_[index].context == context) {
    watches_[index].context = nullptr;
  }
}

}  // namespace orvo::detail
