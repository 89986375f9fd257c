#pragma once

#include <OrvoAPI/Base/Shared.h>
#include <OrvoAPI/Context/Context.h>
#include <OrvoAPI/Futures/Future.h>
#include <OrvoAPI/Linear/LinearProgramGuide.h>
#include <OrvoAPI/Platform/Clock.h>
#include <OrvoAPI/Queues/DispatchQueue.h>
#include <OrvoAPI/Queues/SerialQueue.h>
#include <OrvoAPI/Storage/KeyedStore.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvo {

/// Programmes under one heading: "TODAY", "TOMORROW" or the name of a weekday, in capitals and in
/// the device's language.
struct GuideDay {
  std::string title;
  std::vector<LinearProgram> programs;
};

/// What is on the linear channel.
struct GuideUpdate {
  /// Never null; what plays `program`.
  Shared<Video> video;
  /// The first of today's programmes that has not ended; it may be yet to begin.
  LinearProgram program;
  /// Today, tomorrow, then weekdays in the order of their first programme; none is empty. A
  /// programme that began yesterday and still runs stands under its weekday.
  std::vector<GuideDay> days;
};

/// What a monitor may be given. A value.
struct LinearProgramGuideMonitorOptions {
  /// The queue on which listeners are called and the ends of programmes are awaited, one job at a
  /// time; the main queue when null.
  std::shared_ptr<DispatchQueue> mainQueue = nullptr;
  /// The clock; the context's when null.
  std::shared_ptr<const Clock> clock = nullptr;
  /// Called after each update, on `mainQueue`: how long to wait beyond the programme's end, so that
  /// a million devices do not all send requests in the same second. When empty, the monitor looks
  /// at the end, and also within the second before it.
  std::function<std::chrono::milliseconds()> delayAfterEnd = {};
  /// Asked after each request of the guide or of a video that failed, on any thread: how long to
  /// wait before the monitor looks again for what is on, and loads the guide if it must. Spread it
  /// widely, since a service that was down has failed a million devices. When there is none, the
  /// monitor stays idle after a failure.
  std::function<std::chrono::milliseconds()> delayAfterFailure = {};
};

/// Random delays, uniformly distributed from zero to `longest`.
[[nodiscard]] std::function<std::chrono::milliseconds()> randomDelayUpTo(
    std::chrono::milliseconds longest);

/// How the guide is loaded. A value.
struct GuideLoadOptions {
  /// The position of the first programme within the range.
  std::int64_t offset = 0;
};

/// Tells its listeners what is on the linear channel whenever that changes: it loads a part of the
/// guide, fetches the video of the first programme that has not ended, waits for that programme's
/// end, and so on; when fewer than five programmes are left it loads the next three days. In
/// between it is idle and does not poll.
///
/// Thread-safe. Held by shared pointers. Pending operations hold it weakly: a monitor that is
/// released stops, and the future of its `load` may then stay pending.
///
/// There are no retries: when a request fails, or memory is refused, the monitor stays idle until
/// the next `load`.
class LinearProgramGuideMonitor final
    : public std::enable_shared_from_this<LinearProgramGuideMonitor> {
 public:
  using UpdateHandler = std::function<void(const GuideUpdate& update)>;

  [[nodiscard]] static std::shared_ptr<LinearProgramGuideMonitor> make(
      std::shared_ptr<const Context> context, LinearProgramGuideMonitorOptions options = {});
  LinearProgramGuideMonitor(const LinearProgramGuideMonitor&) = delete;
  LinearProgramGuideMonitor& operator=(const LinearProgramGuideMonitor&) = delete;

  /// Discards the programmes and loads those of a range, ten at a time. Succeeds with true once the
  /// first ten are loaded; fails as `Context::fetchLinearProgramGuide` does. Earlier loads are not
  /// ended: after a second one, each end of a programme brings two updates.
  Future<bool> load(Date startingAt, Date endingAt, const GuideLoadOptions& options = {});
  /// The range of that many calendar days.
  Future<bool> load(Date startingAt, int days, const GuideLoadOptions& options = {});

  /// Loads the next ten programmes of the range; nothing when there are none. It holds the monitor
  /// weakly. When that part fails, nothing changes.
  [[nodiscard]] std::optional<std::function<void()>> loadNext() const;

  /// Calls `task` with each update from now on, on the main queue; returns the key by which to
  /// remove it. The same programme may come several times. A task that throws leaves the monitor
  /// idle.
  std::string onUpdate(UpdateHandler task);
  /// An update that is being sent may still arrive.
  void removeUpdate(std::string_view key);

  /// The latest update that was sent, or null.
  [[nodiscard]] Shared<GuideUpdate> lastUpdate() const;

  /// The label of the queue that guards the state; for debugging.
  [[nodiscard]] std::string accessQueueLabel() const { return accessQueue_->label(); }

 private:
  // How it goes round. An arrow is taken when what it names has happened:
  //
  //   empty ──load──▶ loading ──part──▶ resolving ──video──▶ live ──the programme's end─┐
  //                      ▲                  ▲                                           │
  //                      └─ fewer than 5 ───┴── regroup, 5 or more programmes left ─────┘
  //
  // - Loading: `programs_` is empty and a part of the guide is outstanding; its callback holds the
  //   promise of `load`. When it fails, the promise fails and all is idle, unless the failure has a
  //   delay: then a wait like that for a programme's end goes on with a regroup.
  // - Resolving: `days_` holds the programmes that have not ended, and the video of the first is
  //   outstanding. When it fails, that is logged and all is idle, or waits as before; without
  //   programmes it is idle at once.
  // - Live: `lastUpdate_` was sent, and the queue holds a job for the programme's end, with its
  //   entry in `waits_`.
  //
  // No round ends because another begins: each part that arrives, asked for by `load` or by
  // `loadNext`, sends one more on its way, and as many updates come for each programme. Only a
  // failure without a delay ends a round, or the end of the monitor. All rounds share the state,
  // which is read and changed within `accessQueue_` only; requests are sent, and listeners called,
  // outside. Callbacks and jobs hold the monitor weakly, and the monitor holds its context, so the
  // last reference decides where all of it ends.
  //
  // A queue's delay does not know of the wall clock. When that is set, every round waits anew, for
  // the time that is left now; the job of its old wait finds no entry when it runs, and does
  // nothing.
  using GuidePart = Shared<LinearProgramGuide>;

  LinearProgramGuideMonitor(std::shared_ptr<const Context> context,
                            LinearProgramGuideMonitorOptions options);

  [[nodiscard]] std::optional<std::function<void()>> loaderAfter(const GuidePart& part);
  void loadPartAfter(const GuidePart& part);
  void update(const GuidePart& part);
  void resolveUpdate();
  void send(Shared<Video> video, const LinearProgram& program);
  void scheduleRegroup(Date programEnd);
  void waitUntil(Date due);
  void waitAfterFailure();
  void endWait(std::uint64_t wait);
  void waitAnew();
  void log(std::string_view message) const;
  template <class Step>
  bool attempt(Step&& step) const;
  void regroup();

  const std::shared_ptr<const Context> context_;
  const std::shared_ptr<DispatchQueue> mainQueue_;
  const std::shared_ptr<const Clock> clock_;
  const std::function<std::chrono::milliseconds()> delayAfterEnd_;
  const std::function<std::chrono::milliseconds()> delayAfterFailure_;
  const std::shared_ptr<SerialQueue> accessQueue_;
  KeyedStore<UpdateHandler> updateHandlers_;

  // Guarded by accessQueue_.
  std::vector<LinearProgram> programs_;  // since the last load, as they came
  std::vector<GuideDay> days_;
  Shared<GuideUpdate> lastUpdate_;
  std::optional<std::function<void()>> loadNext_;
  std::map<std::uint64_t, Date> waits_;  // when each is due, on the wall clock
  std::uint64_t latestWait_ = 0;

  std::shared_ptr<const void> wallClockWatch_;  // set when made
};

}  // namespace orvo
