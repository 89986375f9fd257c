#include <OrvoAPI/Network/URLSession.h>
#include <OrvoAPI/Network/URLTaskInternal.h>
#include <OrvoAPI/Queues/QueueLabels.h>
#include <OrvoAPI/Queues/WorkerPoolInternal.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <utility>

namespace orvo {
namespace detail {
namespace {

/// A timer cannot be cancelled: longer ones would add up, left by requests that have ended.
constexpr std::chrono::seconds kLongestLookAhead{10};

}  // namespace

std::shared_ptr<URLSessionCore> URLSessionCore::make(URLSessionConfiguration configuration,
                                                     std::shared_ptr<URLSessionDelegate> delegate) {
  return {new URLSessionCore(std::move(configuration), std::move(delegate)),
          [](URLSessionCore* core) {
            if (!NetworkThread::isCurrent()) return delete core;
            core->queue->post(Job(static_cast<JobNode*>(core)));
          }};
}

URLSessionCore::URLSessionCore(URLSessionConfiguration configuration,
                               std::shared_ptr<URLSessionDelegate> sessionDelegate)
    : interceptors(std::move(configuration.protocolClasses)),
      delegate(std::move(sessionDelegate)),
      queue(SerialQueue::make(std::string(ServiceDomainPrefix) + ".url_session.delegate")),
      measuresRequests(configuration.measuresRequests),
      network(NetworkThread::makeSession(std::move(configuration))) {}

URLSessionCore::~URLSessionCore() { NetworkThread::shared().close(network); }

bool URLSessionCore::add(URLTask& task) {
  const LockGuard guard(lock_);
  if (invalidated_) return false;
  task.index_ = tasks_.size();
  tasks_.push_back(&task);
  return true;
}

void URLSessionCore::remove(URLTask& task) {
  const LockGuard guard(lock_);
  if (task.index_ >= tasks_.size() || tasks_[task.index_] != &task) return;
  std::swap(tasks_[task.index_], tasks_.back());
  tasks_[task.index_]->index_ = task.index_;
  tasks_.pop_back();
}

void URLSessionCore::invalidate() {
  std::vector<std::shared_ptr<URLTask>> cancelled;
  {
    const LockGuard guard(lock_);
    cancelled.reserve(tasks_.size());
    invalidated_ = true;
    for (auto* const task : tasks_) {
      if (auto held = task->weak_from_this().lock()) cancelled.push_back(std::move(held));
    }
  }
  for (const auto& task : cancelled) task->cancel();
}

void URLSessionCore::watchLimit(NetworkTime deadline) {
  const auto now = std::chrono::steady_clock::now();
  const auto look = std::min(deadline, now + kLongestLookAhead);
  if (deadline == NetworkTime::max() || look >= nextLook_) return;
  queue->postAfter(std::chrono::ceil<std::chrono::milliseconds>(look - now),
                   [weak = weak_from_this()] {
                     if (const auto core = weak.lock()) core->endLateTasks();
                   });
  nextLook_ = look;
}

void URLSessionCore::endLateTasks() {
  const auto now = std::chrono::steady_clock::now();
  nextLook_ = NetworkTime::max();
  auto first = firstInOthersHands();
  for (; first != nullptr && first->deadline() <= now; first = firstInOthersHands()) {
    first->endLate();
  }
  if (first == nullptr) return;
  try {
    watchLimit(first->deadline());
  } catch (const std::bad_alloc&) {
    // Nobody would look again.
    for (; first != nullptr; first = firstInOthersHands()) first->endWithoutMemory();
  }
}

/// The one that has to end first, of those with a limit.
std::shared_ptr<URLTask> URLSessionCore::firstInOthersHands() {
  for (;;) {
    const LockGuard guard(lock_);
    URLTask* first = nullptr;
    for (auto* const task : tasks_) {
      if (!task->isInOthersHands() || task->deadline() == NetworkTime::max()) continue;
      if (task->weak_from_this().expired()) continue;
      if (first == nullptr || task->deadline() < first->deadline()) first = task;
    }
    if (first == nullptr) return nullptr;
    // Null for one that goes at this moment: it is passed over then.
    if (auto held = first->weak_from_this().lock()) return held;
  }
}

}  // namespace detail

URLSession::URLSession(URLSessionConfiguration configuration,
                       std::shared_ptr<URLSessionDelegate> delegate)
    : core_(detail::URLSessionCore::make(std::move(configuration), std::move(delegate))) {}

URLSession::~URLSession() = default;

Future<HTTPResult> URLSession::fetch(const URLRequest& request) {
  // Before any lock: a thread of the parent may have held it.
  if (auto refused = detail::faultOfFork()) return Future<HTTPResult>::failed(*std::move(refused));
  detail::WorkerPool::shared().demandWorker();
  const auto task = detail::URLTask::make(core_, request);
  auto future = task->future();
  // Weakly: the future must not keep alive what completes it.
  future.onCancel([weak = std::weak_ptr(task)](bool) {
    if (const auto held = weak.lock()) held->cancel();
  });
  task->begin();
  return future;
}

void URLSession::invalidateAndCancel() { core_->invalidate(); }

void URLSession::networkChanged() { detail::NetworkThread::shared().networkChanged(); }

}  // namespace orvo
