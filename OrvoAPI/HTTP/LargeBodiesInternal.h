#pragma once

#include <OrvoAPI/Base/Data.h>
#include <OrvoAPI/Base/detail/Lock.h>
#include <OrvoAPI/HTTP/URL.h>
#include <OrvoAPI/Queues/Job.h>

#include <atomic>
#include <cstddef>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <string>

namespace orvo::detail {

/// Keeps the memory that large bodies take within bounds, over all sessions of the process.
/// Thread-safe; lives as long as the process.
///
/// Each counts for as long as it is in memory, by its host, whichever session has fetched it. While
/// all of them together exceed the budget, nothing more is asked of a host that has more than its
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

  /// What sessions have of one host: scheme, name and port, however they are written.
  struct Share {
    std::atomic<std::size_t> bytes{0};  // of its large bodies
    std::size_t underWay = 0;           // exchanges with it; network thread only
  };
  /// Reads a body in its turn, which lasts until the last copy of what it is given has gone.
  using Reader = std::function<void(Data)>;

  [[nodiscard]] static LargeBodies& shared();

  void take(Share& share, std::size_t bytes) noexcept;
  void giveBack(Share& share, std::size_t bytes) noexcept;

  // On the network thread.

  /// The share of the URL's host.
  [[nodiscard]] std::shared_ptr<Share> shareOf(const URL& url);
  /// Whether a host may start a request. If not, `wereFreed` will be true when that should be asked
  /// again, and the network thread is woken.
  [[nodiscard]] bool mayStart(const Share& share) noexcept;
  static void didStart(Share& share) noexcept { ++share.underWay; }
  void didEnd(Share& share) noexcept {
    if (--share.underWay == 0) noteFreed();
  }
  [[nodiscard]] bool wereFreed() noexcept {
    return freed_.load(std::memory_order_relaxed) && freed_.exchange(false);
  }

  // From any thread.

  /// Calls the reader at once, or in a later job on the global queue.
  void read(const URL& url, const Data& body, const Reader& reader);

 private:
  struct Line {
    std::string host;
    JobList jobs;
  };
  struct Turn;

  LargeBodies() = default;
  [[nodiscard]] bool hasRoom(const Share& share) const noexcept;
  void noteFreed() noexcept;
  /// False when it is the job's turn.
  [[nodiscard]] bool waitInLine(std::string host, Job& job);
  static void begin(const Data& body, const Reader& reader);
  void endTurn() noexcept;

  std::atomic<std::size_t> bytes_{0};
  std::atomic<bool> isWaitedFor_{false};
  std::atomic<bool> freed_{false};
  std::atomic<bool> isReading_{false};  // changed within the lock

  std::map<std::string, std::weak_ptr<Share>> shares_;  // network thread only

  Lock lock_;
  std::list<Line> lines_
      ORVO_GUARDED_BY(lock_);  // the host whose turn is next first; none is empty
};

}  // namespace orvo::detail
