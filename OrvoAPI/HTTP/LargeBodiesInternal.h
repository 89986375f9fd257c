#pragma once

#include <OrvoAPI/Base/Data.h>
#include <OrvoAPI/Base/detail/Lock.h>
#include <OrvoAPI/Queues/Job.h>

#include <atomic>
#include <cstddef>
#include <functional>
#include <list>
#include <string>
#include <string_view>

namespace orvo::detail {

/// Keeps the memory that large bodies take within bounds, over all sessions of the process. Safe to
/// use from any thread; lives as long as the process.
///
/// Each counts for as long as it is in memory, by its session and host. While all of them together
/// exceed the budget, no session starts another request to a host of which it has more than its
/// fair share, unless nothing of it is under way and no body is being read: then they wait for the
/// app, and one at a time goes on. So a host that uses up the budget stops no other.
///
/// Reading a body takes several times its size, so large ones are read one at a time, in turns of
/// their hosts.
class LargeBodies {
 public:
  /// From this size on a body is large.
  static constexpr std::size_t kSmallest = std::size_t{1} << 20;
  static constexpr std::size_t kBudget = std::size_t{64} << 20;
  /// What nobody waits for, whatever the others have.
  static constexpr std::size_t kFairShare = kBudget / 4;

  /// The bytes of the large bodies that a session has from one host.
  using Share = std::atomic<std::size_t>;
  /// Reads a body in its turn, which lasts until the last copy of what it is given has gone.
  using Reader = std::function<void(Data)>;

  [[nodiscard]] static LargeBodies& shared();

  void take(Share& share, std::size_t bytes) noexcept;
  void giveBack(Share& share, std::size_t bytes) noexcept;
  /// Whether a host may start a request. If not, `wereFreed` will be true when that should be asked
  /// again, and the network thread is woken. On the network thread.
  [[nodiscard]] bool mayStart(const Share& share, bool isAnyUnderWay) noexcept;
  [[nodiscard]] bool wereFreed() noexcept {
    return freed_.load(std::memory_order_relaxed) && freed_.exchange(false);
  }

  /// Calls the reader at once, or in a later job on the global queue.
  void read(std::string_view host, const Data& body, const Reader& reader);

 private:
  struct Line {
    std::string host;
    JobList jobs;
  };
  struct Turn;

  LargeBodies() = default;
  [[nodiscard]] bool hasRoom(bool isAnyUnderWay) const noexcept;
  void noteFreed() noexcept;
  /// False when it is the job's turn.
  [[nodiscard]] bool waitInLine(std::string_view host, Job& job);
  static void begin(const Data& body, const Reader& reader);
  void endTurn() noexcept;

  std::atomic<std::size_t> bytes_{0};
  std::atomic<bool> isWaitedFor_{false};
  std::atomic<bool> freed_{false};
  std::atomic<bool> isReading_{false};  // changed within the lock

  Lock lock_;
  std::list<Line> lines_
      ORVO_GUARDED_BY(lock_);  // the host whose turn is next first; none is empty
};

}  // namespace orvo::detail
