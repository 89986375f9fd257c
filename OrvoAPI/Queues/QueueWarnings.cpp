#include <OrvoAPI/Queues/QueueWarningsInternal.h>
#include <OrvoAPI/Queues/WorkerPoolInternal.h>

#include <atomic>
#include <new>

namespace orvo::detail {
namespace {

constinit std::atomic<QueueWarningSink> warningSink = nullptr;
constinit std::atomic<std::chrono::milliseconds> ofNeglect{QueuePatience().ofNeglect};
constinit std::atomic<std::chrono::milliseconds> ofSpareWorkers{QueuePatience().ofSpareWorkers};

}  // namespace

void setQueueWarningSink(QueueWarningSink sink) noexcept { warningSink.store(sink); }

QueuePatience queuePatience() noexcept {
  return {.ofNeglect = ofNeglect.load(), .ofSpareWorkers = ofSpareWorkers.load()};
}

void setQueuePatience(const QueuePatience& patience) {
  ofNeglect = patience.ofNeglect;
  ofSpareWorkers = patience.ofSpareWorkers;
  WorkerPool::shared().forgetReport();
}

bool warnOfQueue(std::string_view category, std::string_view message) noexcept {
  const auto sink = warningSink.load();
  if (sink == nullptr) return false;
  try {
    WorkerPool::shared().postFirst(Job([=] { sink(category, message); }));
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

}  // namespace orvo::detail
