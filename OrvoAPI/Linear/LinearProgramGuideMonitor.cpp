#include <OrvoAPI/Linear/LinearProgramGuideMonitor.h>

#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/Futures/detail/OrFail.h>
#include <OrvoAPI/Platform/Calendar.h>
#include <OrvoAPI/Queues/MainQueue.h>
#include <OrvoAPI/Queues/QueueLabels.h>

#include <algorithm>
#include <array>
#include <new>
#include <random>
#include <utility>

namespace orvo {
namespace {

constexpr std::int64_t kPartLimit = 10;
/// With fewer programmes left, the next days are loaded.
constexpr std::size_t kFewestPrograms = 5;
constexpr int kReloadedDays = 3;
/// For what never comes: beyond a device's life, and no queue's sum overflows.
constexpr std::chrono::milliseconds kForever = std::chrono::hours(24 * 365'000);

/// The time between the dates, if it can be represented.
std::optional<std::chrono::milliseconds> span(Date from, Date to) {
  std::int64_t result = 0;
  if (__builtin_sub_overflow(to.millisecondsSince1970(), from.millisecondsSince1970(), &result)) {
    return std::nullopt;
  }
  return std::chrono::milliseconds(result);
}

bool hasEnded(const LinearProgram& program, Date now) { return program.endTime <= now; }

/// The programmes that have not ended, under the headings of their days.
std::vector<GuideDay> group(const std::vector<LinearProgram>& programs, Date now) {
  Calendar calendar;  // a new one, for the device may have travelled
  GuideDay todays{.title = "TODAY", .programs = {}};
  GuideDay tomorrows{.title = "TOMORROW", .programs = {}};
  std::vector<GuideDay> weekdays;
  std::array<std::size_t, 8> places{};  // by weekday, from 1: one past its group in `weekdays`
  const auto groupOf = [&](Date start) -> GuideDay& {
    if (calendar.isToday(start, now)) return todays;
    if (calendar.isTomorrow(start, now)) return tomorrows;
    const auto weekday = static_cast<std::size_t>(calendar.weekday(start));
    if (places[weekday] == 0) {
      weekdays.push_back({.title = capitalWeekdayNames()[weekday - 1], .programs = {}});
      places[weekday] = weekdays.size();
    }
    return weekdays[places[weekday] - 1];
  };
  for (const auto& program : programs) {
    if (!hasEnded(program, now)) groupOf(program.startTime).programs.push_back(program);
  }
  if (!tomorrows.programs.empty()) weekdays.insert(weekdays.begin(), std::move(tomorrows));
  if (!todays.programs.empty()) weekdays.insert(weekdays.begin(), std::move(todays));
  return weekdays;
}

/// Whether the server has a part of the range after this one. A service that counts beyond 64 bits
/// or makes no progress has no more to give; asking it for more would stop the process or never
/// end.
bool isFollowed(const PagingMeta& meta) {
  std::int64_t next = 0;
  return !__builtin_add_overflow(meta.offset, meta.limit, &next) && next > meta.offset &&
         meta.total > next;
}

/// When to look again for what is on, for a programme that ends at `end`; nothing when that is too
/// far away to be represented. It is whole seconds from now, so that it may come a little early,
/// and the same programme once more. But when less than a second is left, the wait is exact to the
/// millisecond: rounding it to nothing would mean looking again and again until the end.
std::optional<Date> timeToRegroup(Date end, Date now) {
  const auto left = span(now, end);
  if (!left) return std::nullopt;
  const auto whole = std::chrono::duration_cast<std::chrono::seconds>(*left);
  return whole == std::chrono::seconds(0) && *left > whole ? end : now + whole;
}

}  // namespace

std::function<std::chrono::milliseconds()> randomDelayUpTo(std::chrono::milliseconds longest) {
  return [longest = std::max(longest, std::chrono::milliseconds(0))] {
    std::random_device source;
    return std::chrono::milliseconds(
        std::uniform_int_distribution<std::int64_t>(0, longest.count())(source));
  };
}

std::shared_ptr<LinearProgramGuideMonitor> LinearProgramGuideMonitor::make(
    std::shared_ptr<const Context> context, LinearProgramGuideMonitorOptions options) {
  if (options.mainQueue == nullptr) options.mainQueue = MainQueue::shared();
  if (options.clock == nullptr) options.clock = context->clock();
  std::shared_ptr<LinearProgramGuideMonitor> monitor(
      new LinearProgramGuideMonitor(std::move(context), std::move(options)));
  const auto waitAnew = [weak = std::weak_ptr(monitor)] {
    if (const auto self = weak.lock()) self->waitAnew();
  };
  monitor->wallClockWatch_ = monitor->clock_->onWallSet(
      [queue = monitor->mainQueue_, waitAnew] { queue->post(waitAnew); });
  return monitor;
}

LinearProgramGuideMonitor::LinearProgramGuideMonitor(std::shared_ptr<const Context> context,
                                                     LinearProgramGuideMonitorOptions options)
    : context_(std::move(context)),
      mainQueue_(std::move(options.mainQueue)),
      clock_(std::move(options.clock)),
      delayAfterEnd_(std::move(options.delayAfterEnd)),
      delayAfterFailure_(std::move(options.delayAfterFailure)),
      accessQueue_(
          SerialQueue::make(std::string(ServiceDomainPrefix) + ".linear_program_guide.access")) {}

Future<bool> LinearProgramGuideMonitor::load(Date startingAt, int days,
                                             const GuideLoadOptions& options) {
  return load(startingAt, Calendar().addingDays(startingAt, days), options);
}

Future<bool> LinearProgramGuideMonitor::load(Date startingAt, Date endingAt,
                                             const GuideLoadOptions& options) {
  accessQueue_->sync([this] {
    programs_.clear();
    // Not only the final part clears it: the loader of another range would append programmes that
    // this load brings as well.
    loadNext_.reset();
  });
  const Promise<bool> promise;
  context_
      ->fetchLinearProgramGuide(context_->constants().linearStreamID, startingAt, endingAt,
                                {.page = ListPartRequest{options.offset, kPartLimit}})
      .onComplete([weak = weak_from_this(), promise](const Result<GuidePart>& result) {
        const auto self = weak.lock();
        if (result.failed()) {
          promise.failure(*result.error());
          if (self != nullptr) self->waitAfterFailure();
          return;
        }
        if (self == nullptr) return;
        detail::orFail(promise, [&] {
          self->update(*result.value());
          promise.success(true);
        });
      });
  return promise.future();
}

std::optional<std::function<void()>> LinearProgramGuideMonitor::loadNext() const {
  std::optional<std::function<void()>> loadNext;
  accessQueue_->sync([&] { loadNext = loadNext_; });
  return loadNext;
}

std::string LinearProgramGuideMonitor::onUpdate(UpdateHandler task) {
  return updateHandlers_.add(std::move(task));
}

void LinearProgramGuideMonitor::removeUpdate(std::string_view key) { updateHandlers_.remove(key); }

Shared<GuideUpdate> LinearProgramGuideMonitor::lastUpdate() const {
  Shared<GuideUpdate> update;
  accessQueue_->sync([&] { update = lastUpdate_; });
  return update;
}

std::optional<std::function<void()>> LinearProgramGuideMonitor::loaderAfter(const GuidePart& part) {
  if (!isFollowed(part->meta)) return std::nullopt;
  return [weak = weak_from_this(), part] {
    if (const auto self = weak.lock()) self->loadPartAfter(part);
  };
}

void LinearProgramGuideMonitor::loadPartAfter(const GuidePart& part) {
  const auto fetch = context_->nextCapability(*part);
  if (!fetch) return;
  (*fetch)().onSuccess([weak = weak_from_this()](const GuidePart& next) {
    const auto self = weak.lock();
    if (self != nullptr) self->attempt([&] { self->update(next); });
  });
}

/// Takes a part in, even one that another load has overtaken.
void LinearProgramGuideMonitor::update(const GuidePart& part) {
  const Date now = clock_->now();
  auto next = loaderAfter(part);
  accessQueue_->sync([&] {
    auto programs = programs_;
    programs.insert(programs.end(), part->items.begin(), part->items.end());
    days_ = group(programs, now);
    programs_.swap(programs);
    // The final part clears it: a loader that stayed would append the same part again and again.
    loadNext_.swap(next);
  });
  resolveUpdate();
}

void LinearProgramGuideMonitor::resolveUpdate() {
  std::optional<LinearProgram> program;
  accessQueue_->sync([&] {
    if (!days_.empty()) program = days_.front().programs.front();
  });
  if (!program) return;
  context_->fetchVideo(program->id)
      .onComplete(mainQueue_, [weak = weak_from_this(),
                               program = *program](const Result<Shared<Video>>& result) {
        const auto self = weak.lock();
        if (self == nullptr) return;
        if (const auto* const video = result.value()) return self->send(*video, program);
        self->attempt([&] { self->log("Unable to update video for EPG"); });
        self->waitAfterFailure();
      });
}

void LinearProgramGuideMonitor::send(Shared<Video> video, const LinearProgram& program) {
  std::shared_ptr<GuideUpdate> update;
  std::vector<UpdateHandler> tasks;
  const bool isReady = attempt([&] {
    update = std::make_shared<GuideUpdate>(
        GuideUpdate{.video = std::move(video), .program = program, .days = {}});
    accessQueue_->sync([&] {
      update->days = days_;
      lastUpdate_ = update;
    });
    // After that: whoever registers later finds the update in `lastUpdate`.
    tasks = updateHandlers_.elements();
  });
  if (!isReady) return;
  for (const auto& task : tasks) task(*update);
  attempt([&] { scheduleRegroup(program.endTime); });
}

void LinearProgramGuideMonitor::log(std::string_view message) const {
  context_->logger().log(message, LogLevel::error, "epg", "epg");
}

/// A step that nobody waits for. When it is refused memory the monitor is idle, as after a request
/// that failed.
template <class Step>
bool LinearProgramGuideMonitor::attempt(Step&& step) const {
  try {
    step();
    return true;
  } catch (const std::bad_alloc&) {
  }
  try {
    log("No memory to go on with the EPG");
  } catch (const std::bad_alloc&) {
  }
  return false;
}

void LinearProgramGuideMonitor::scheduleRegroup(Date programEnd) {
  if (delayAfterEnd_)
    return waitUntil(programEnd + std::max(delayAfterEnd_(), std::chrono::milliseconds(0)));
  if (const auto due = timeToRegroup(programEnd, clock_->now())) waitUntil(*due);
}

void LinearProgramGuideMonitor::waitUntil(Date due) {
  std::uint64_t wait = 0;
  accessQueue_->sync([&] {
    wait = ++latestWait_;
    waits_.emplace(wait, due);
  });
  const Date now = clock_->now();
  const auto delay = due > now ? span(now, due).value_or(kForever) : std::chrono::milliseconds(0);
  mainQueue_->postAfter(delay, [weak = weak_from_this(), wait] {
    const auto self = weak.lock();
    if (self != nullptr) self->attempt([&] { self->endWait(wait); });
  });
}

void LinearProgramGuideMonitor::waitAfterFailure() {
  if (!delayAfterFailure_) return;
  attempt([&] {
    waitUntil(clock_->now() + std::max(delayAfterFailure_(), std::chrono::milliseconds(0)));
  });
}

void LinearProgramGuideMonitor::endWait(std::uint64_t wait) {
  bool waited = false;
  accessQueue_->sync([&] { waited = waits_.erase(wait) == 1; });
  if (waited) regroup();
}

void LinearProgramGuideMonitor::waitAnew() {
  std::map<std::uint64_t, Date> waits;
  accessQueue_->sync([&] { waits.swap(waits_); });
  for (const auto& wait : waits) attempt([&] { waitUntil(wait.second); });
}

void LinearProgramGuideMonitor::regroup() {
  const Date now = clock_->now();
  bool areEnough = false;
  accessQueue_->sync([&] {
    std::erase_if(programs_, [now](const auto& program) { return hasEnded(program, now); });
    areEnough = programs_.size() >= kFewestPrograms;
    if (areEnough) days_ = group(programs_, now);
  });
  if (areEnough) {
    resolveUpdate();
  } else {
    load(now, kReloadedDays);
  }
}

}  // namespace orvo
