#include <OrvoAPI/Base/ImmortalInternal.h>
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
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <new>
#include <utility>

namespace orvo::detail {
namespace {

constexpr int kEventsAtATime = 64;
/// Longer than a few answers take, shorter than anybody notices.
constexpr std::chrono::microseconds kLongestHold{250};
/// More than any process opens; libcurl counts those of all sessions in a `long`.
constexpr unsigned kMostConnectionsPerHost = 10'000;
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
  // Its thread may outlive static destruction, and a session that goes may be the first to ask.
  static auto* const thread = new (immortalPlace<NetworkThread>()) NetworkThread;
  return *thread;
}

bool NetworkThread::isCurrent() { return isNetworkThread; }

std::shared_ptr<CurlSession> NetworkThread::makeSession(URLSessionConfiguration configuration) {
  if (!configuration.certificateAuthorityFile) {
    // Like every read of the environment: safe as long as the app does not write to it.
    const char* const file = std::getenv("SSL_CERT_FILE");  // NOLINT(concurrency-mt-unsafe)
    if (file != nullptr && *file != '\0') configuration.certificateAuthorityFile = file;
  }
  configuration.maximumConnectionsPerHost =
      std::clamp(configuration.maximumConnectionsPerHost, 1U, kMostConnectionsPerHost);
  return std::make_shared<CurlSession>(std::move(configuration));
}

std::optional<URLError> faultOfFork() {
  if (!isForkedChild()) return std::nullopt;
  return URLError{URLError::unknown, "forked from a process that uses the network already"};
}

std::optional<URLError> NetworkThread::start(std::shared_ptr<CurlSession> session,
                                             std::shared_ptr<HTTPExchange> exchange) {
  if (auto fault = faultOfFork()) return fault;
  auto& command = exchange->start_;
  if (post(command, std::move(session), std::move(exchange))) return std::nullopt;
  const LockGuard guard(lock_);
  if (state_ == State::ended) return URLError{URLError::cancelled, "the process is ending"};
  return URLError{URLError::unknown, "no network thread could be started"};
}

void NetworkThread::cancel(std::shared_ptr<CurlSession> session,
                           std::shared_ptr<HTTPExchange> exchange) {
  auto& command = exchange->cancel_;
  post(command, std::move(session), std::move(exchange));
}

void NetworkThread::close(std::shared_ptr<CurlSession> session) {
  auto& command = session->closing();
  post(command, std::move(session), nullptr);
}

void NetworkThread::networkChanged() {
  if (changeIsPosted_.exchange(true)) return;
  if (!post(changeNetwork_, nullptr, nullptr)) changeIsPosted_ = false;
}

void NetworkThread::wake() {
  if (isForkedChild()) return;
  const LockGuard guard(lock_);
  if (state_ == State::running) eventfd_write(wakeup_, 1);
}

bool NetworkThread::post(NetworkCommand& command, std::shared_ptr<CurlSession> session,
                         std::shared_ptr<HTTPExchange> exchange) {
  if (isForkedChild()) return false;
  const LockGuard guard(lock_);
  if (state_ == State::unused && command.kind == NetworkCommand::Kind::start) begin();
  if (state_ != State::running) return false;
  command.session = std::move(session);
  command.exchange = std::move(exchange);
  const bool isFirst = commands_.empty();
  commands_.append(&command);
  if (isFirst) eventfd_write(wakeup_, 1);
  return true;
}

/// Changes nothing when the system has no descriptor or no thread to give.
void NetworkThread::begin() {
  atProcessExit(ExitStage::network, [] { shared().shutDown(); });
  if (!isRegistered_) {
    keepTLSToTheEnd();
    // An app that has used the TLS library before has its exit handler registered: ours runs first.
    const auto registration = registerExitHandler([] { shared().shutDown(); });
    if (registration == Registration::noMemory) throw std::bad_alloc();
    isRegistered_ = true;
    if (registration == Registration::tooLate) {
      state_ = State::ended;
      return;
    }
  }
  makeDescriptors();
  if (epoll_ >= 0) thread_ = startJoinableThread("orvo-network", [] { shared().run(); });
  if (thread_) {
    state_ = State::running;
  } else {
    closeDescriptors();
  }
}

/// Both, or none.
void NetworkThread::makeDescriptors() {
  epoll_ = epoll_create1(EPOLL_CLOEXEC);
  wakeup_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  epoll_event event{};
  event.events = EPOLLIN;
  event.data.fd = wakeup_;
  if (epoll_ctl(epoll_, EPOLL_CTL_ADD, wakeup_, &event) != 0) closeDescriptors();
}

void NetworkThread::closeDescriptors() {
  for (const int descriptor : {std::exchange(wakeup_, -1), std::exchange(epoll_, -1)}) {
    if (descriptor >= 0) ::close(descriptor);
  }
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
  if (thread) waitAtExit([&](auto patience) { joinWithin(*thread, patience); });
}

void NetworkThread::run() {
  isNetworkThread = true;
  // Here, because it takes a while and leaves something behind with its thread. Reference-counted:
  // an app that uses libcurl itself does not notice.
  (void)isUsable();
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
  closeDescriptors();
}

/// Tried again when it was refused memory.
bool NetworkThread::isUsable() {
  if (!isUsable_) isUsable_ = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
  return isUsable_;
}

/// False when the process is ending; the commands that came before that have been run.
bool NetworkThread::runCommands() {
  bool running = true;
  NodeList<NetworkCommand> taken;
  {
    const LockGuard guard(lock_);
    taken = std::move(commands_);
    running = state_ == State::running;
  }
  if (!taken.empty()) noticeSleep();
  while (!taken.empty()) runCommand(*taken.pop());
  return running;
}

void NetworkThread::runCommand(NetworkCommand& command) {
  // It may be posted again, or go, as soon as it is taken.
  const auto kind = command.kind;
  const auto session = std::move(command.session);
  auto exchange = std::move(command.exchange);
  switch (kind) {
    case NetworkCommand::Kind::start:
      startExchange(session, std::move(exchange));
      break;
    case NetworkCommand::Kind::cancel:
      session->cancel(*exchange);
      break;
    case NetworkCommand::Kind::close:
      if (std::erase(sessions_, session) > 0) session->close();
      break;
    case NetworkCommand::Kind::changeNetwork:
      changeIsPosted_ = false;
      changeNetwork();
      break;
  }
}

void NetworkThread::startExchange(const std::shared_ptr<CurlSession>& session,
                                  std::shared_ptr<HTTPExchange> exchange) {
  try {
    const bool isKnown = std::find(sessions_.begin(), sessions_.end(), session) != sessions_.end();
    if (!isKnown) sessions_.push_back(session);
    session->start(exchange);
  } catch (const std::bad_alloc&) {
    exchange->exchangeDidEnd(outOfMemory());
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
    if (watch.pool == &pool) watch.pool = nullptr;
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
    if (watch.pool != nullptr && !watch.rests) {
      watch.pool->socketIsReady(event.data.fd, event.events, watch.context);
    } else {
      forget(event.data.fd);  // lest it wake the thread forever
      if (watch.pool != nullptr) watch.pool->restWasDisturbed(event.data.fd);
    }
  }
}

int NetworkThread::millisecondsToNextTimer() const {
  auto next = NetworkTime::max();
  for (const auto* const pool : pools_) next = std::min(next, pool->nextTimer());
  for (const auto& session : sessions_) next = std::min(next, session->nextTimer());
  if (next == NetworkTime::max()) return -1;
  const auto now = std::chrono::steady_clock::now();
  if (next <= now) return 0;  // the earliest time of all cannot be subtracted from
  const auto wait = std::chrono::ceil<std::chrono::milliseconds>(next - now);
  constexpr std::chrono::milliseconds kLongest = std::chrono::hours(24);
  return static_cast<int>(std::min(wait, kLongest).count());
}

bool NetworkThread::watch(int socket, std::uint32_t events, CurlPool& pool, void* context) {
  const auto index = static_cast<std::size_t>(socket);
  try {
    if (index >= watches_.size()) watches_.resize(index + 1);
  } catch (const std::bad_alloc&) {
    return false;
  }
  auto& watch = watches_[index];
  if (watch.events != events && !tellKernel(socket, events)) {
    watch = {};
    return false;
  }
  watch = {&pool, context, events};
  return true;
}

bool NetworkThread::tellKernel(int socket, std::uint32_t events) const {
  epoll_event event{};
  event.events = events;
  event.data.fd = socket;
  const auto tell = [&](int operation) {
    return epoll_ctl(epoll_, operation, socket, &event) == 0;
  };
  // Should a socket have been forgotten when there was no memory, the kernel knows it still.
  const bool isKnown = watches_[static_cast<std::size_t>(socket)].events != 0;
  return (isKnown && tell(EPOLL_CTL_MOD)) || tell(EPOLL_CTL_ADD) ||
         (errno == EEXIST && tell(EPOLL_CTL_MOD));
}

void NetworkThread::unwatch(int socket) {
  const auto index = static_cast<std::size_t>(socket);
  if (index < watches_.size() && watches_[index].events != 0) forget(socket);
}

void NetworkThread::hasOpened(int socket) {
  const auto index = static_cast<std::size_t>(socket);
  if (index >= watches_.size() || watches_[index].events == 0) return;
  auto& watch = watches_[index];
  if (watch.rests || watch.pool == nullptr || !tellKernel(socket, watch.events)) watch = {};
}

void NetworkThread::forget(int socket) {
  epoll_ctl(epoll_, EPOLL_CTL_DEL, socket, nullptr);
  watches_[static_cast<std::size_t>(socket)] = {};
}

void NetworkThread::rest(int socket) {
  const auto index = static_cast<std::size_t>(socket);
  if (index >= watches_.size()) return;
  watches_[index].context = nullptr;
  watches_[index].rests = true;
}

void NetworkThread::forgetContext(int socket, const void* context) {
  const auto index = static_cast<std::size_t>(socket);
  if (index < watches_.size() && watches_[index].context == context) {
    watches_[index].context = nullptr;
  }
}

}  // namespace orvo::detail
