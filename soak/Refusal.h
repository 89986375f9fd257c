#pragma once

#include <atomic>

/// Refuses what a process asks the system for, from the call of a number on and so many in a row,
/// on all its threads: the program that links Refusal.cpp has its own `malloc` (with a sanitizer,
/// `operator new`) and its own wrappers of system calls, which libraries that it is linked with
/// use as well.
namespace orvo::soak {

class Refusal {
 public:
  /// What is refused: memory, or one of the calls of the system by its name.
  enum class Kind {
    none,
    memory,
    socket,
    connect,
    epollCreate,
    epollControl,
    eventfd,
    timerfd,
    thread,
    clock,
    random,
  };
  static constexpr long kForEver = 1L << 40;

  static void begin(Kind kind, long first, long count) {
    first_ = first;
    end_ = first + count;
    asked_ = 0;
    kind_ = kind;
  }
  static void end() { kind_ = Kind::none; }
  /// How many calls were refused since the beginning.
  [[nodiscard]] static long refused() {
    const long asked = asked_;
    return asked <= first_ ? 0 : (asked < end_ ? asked : end_.load()) - first_;
  }

  /// Whether the call that is being made is one of those.
  [[nodiscard]] static bool takes(Kind kind) noexcept {
    if (kind_.load(std::memory_order_relaxed) != kind) return false;
    const long number = asked_.fetch_add(1);
    return number >= first_ && number < end_;
  }

 private:
  static constinit inline std::atomic<Kind> kind_{Kind::none};
  static constinit inline std::atomic<long> first_{0};
  static constinit inline std::atomic<long> end_{0};
  static constinit inline std::atomic<long> asked_{0};
};

}  // namespace orvo::soak
