#pragma once

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <climits>
#include <cstdint>

namespace orvo::detail {

static_assert(sizeof(std::atomic<std::uint32_t>) == sizeof(std::uint32_t) &&
              std::atomic<std::uint32_t>::is_always_lock_free);

/// Sleeps until somebody wakes those that wait for the word, unless it has another value already.
/// It may return early. `std::atomic::wait` would yield the processor four times first, to threads
/// that will not change the word.
inline void futexWait(const std::atomic<std::uint32_t>& word, std::uint32_t value) {
  syscall(SYS_futex, &word, FUTEX_WAIT_PRIVATE, value, nullptr, nullptr, 0);
}

/// Wakes one of those that wait for the word.
inline void futexWakeOne(std::atomic<std::uint32_t>& word) {
  syscall(SYS_futex, &word, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

}  // namespace orvo::detail
