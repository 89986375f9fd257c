#include <OrvoAPI/Base/detail/Lock.h>

namespace orvo::detail {

void Lock::lockSlowly() {
  while (state_.exchange(kContended, std::memory_order_acquire) != kFree) {
    state_.wait(kContended, std::memory_order_relaxed);
  }
}

void Lock::wakeOne() { state_.notify_one(); }

}  // namespace orvo::detail
