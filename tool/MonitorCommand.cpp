#include <OrvoAPI/Linear/LinearProgramGuideMonitor.h>
#include <OrvoAPI/Queues/MainQueue.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <tool/Commands.h>
#include <tool/OnAirView.h>
#include <tool/Patience.h>
#include <tool/Present.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>

namespace orvo::tool {

namespace {

using std::chrono::milliseconds;

struct WrittenMonitor {
  std::int64_t updates = 0;
  std::int64_t days = 3;
  std::int64_t programSeconds = 5;
};

/// While it lives, SIGINT and SIGTERM do not end the process but make a descriptor readable. There
/// is one at most.
class Interruption {
 public:
  Interruption() {
    descriptor_ = eventfd(0, EFD_CLOEXEC);
    struct sigaction action {};
    action.sa_handler = [](int) {
      const int error = errno;
      eventfd_write(descriptor_, 1);
      errno = error;
    };
    action.sa_flags = SA_RESTART;
    for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &action, &before_[i]);
  }
  ~Interruption() {
    for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &before_[i], nullptr);
    close(descriptor_);
  }
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  [[nodiscard]] int descriptor() const { return descriptor_; }

 private:
  static constexpr std::array kSignals{SIGINT, SIGTERM};
  static inline int descriptor_ = -1;

  std::array<struct sigaction, kSignals.size()> before_{};
};

/// One run of the command. It has claimed the main queue, so that all happens on one thread: the
/// library's callbacks, the drawing, and the watch for what may end it.
class Watching : public std::enable_shared_from_this<Watching> {
 public:
  Watching(Tool& tool, const WrittenMonitor& written, std::shared_ptr<Context> context)
      : tool_(tool),
        written_(written),
        monitor_(LinearProgramGuideMonitor::make(context)),
        view_(context->linearStream().label) {}

  /// Returns the exit status. Being interrupted is the usual end of a run without a number of
  /// updates, and no failure.
  int run(MainQueue::Claim& claim) {
    const Interruption interruption;
    monitor_->onUpdate([weak = weak_from_this()](const GuideUpdate& update) {
      if (const auto self = weak.lock()) self->take(update);
    });
    load();
    while (!exitStatus_) {
      std::array<pollfd, 3> events{{{claim.eventDescriptor(), POLLIN, 0},
                                    {interruption.descriptor(), POLLIN, 0},
                                    {STDOUT_FILENO, 0, 0}}};  // tells when the reader has gone
      const bool timeHasPassed = poll(events.data(), events.size(), timeout()) == 0;
      if (events[1].revents != 0) wipeInterruption();
      if (events[1].revents != 0 || events[2].revents != 0) return 0;
      claim.drain();
      if (patience_.due() && clock_->elapsed() >= *patience_.due()) loadAgain();
      if (timeHasPassed && draws()) view_.draw();
    }
    return *exitStatus_;
  }

 private:
  /// The picture shows whole seconds.
  [[nodiscard]] bool draws() const { return !tool_.options().json && view_.moves(); }
  [[nodiscard]] int timeout() const {
    milliseconds wait = std::chrono::hours(1);
    if (patience_.due()) wait = std::min(wait, *patience_.due() - clock_->elapsed());
    if (draws())
      wait = std::min(wait, milliseconds(1000 - clock_->now().millisecondsSince1970() % 1000));
    return static_cast<int>(std::max(wait.count(), std::int64_t{0}));
  }

  void load() {
    patience_.loading();
    monitor_->load(present(), static_cast<int>(written_.days))
        .onComplete(MainQueue::shared(), [weak = weak_from_this()](const Result<bool>& result) {
          if (const auto self = weak.lock()) self->loaded(result);
        });
  }
  void loadAgain() {
    if (!tool_.options().json) {
      view_.leave();
      printDiagnostic("orvo: no update has come; loading the guide again\n");
    }
    load();
  }
  void loaded(const Result<bool>& result) {
    patience_.loaded(clock_->elapsed());
    if (!result.failed()) return;
    view_.leave();
    const int status = tool_.fail(*result.error());
    // What fails at once is for the caller to put right.
    if (updates_ == 0) exitStatus_ = status;
  }
  void take(const GuideUpdate& update) {
    if (exitStatus_) return;
    patience_.updated(clock_->elapsed(), update.program.endTime - clock_->now());
    if (tool_.options().json) {
      print(toJson(update).text() + "\n");
    } else {
      view_.show(update);
    }
    if (++updates_ == written_.updates) exitStatus_ = 0;
  }

  Tool& tool_;
  const WrittenMonitor written_;
  const std::shared_ptr<LinearProgramGuideMonitor> monitor_;
  const std::shared_ptr<const Clock> clock_ = presentClock();
  OnAirView view_;
  Patience patience_;
  std::int64_t updates_ = 0;
  std::optional<int> exitStatus_;
};

int runMonitor(Tool& tool, const WrittenMonitor& written) {
  tool.setDemoProgramLength(std::chrono::seconds(written.programSeconds));
  const auto context = tool.context();
  if (const AnyError* error = context.error()) return tool.fail(*error);
  auto claim = MainQueue::shared()->claim();
  return std::make_shared<Watching>(tool, written, *context.value())->run(*claim);
}

}  // namespace

void addMonitorCommand(Commands& commands) {
  const auto written = std::make_shared<WrittenMonitor>();
  commands.push_back(
      {.name = "monitor",
       .description = "What is on the linear channel now and next, until interrupted",
       .details =
           "It ends when it is interrupted, or after --updates. With --json, each update is a "
           "document on a line of its own. \"orvo guide --start now --end +1m\" says it once, and "
           "ends.",
       .options = {{.name = "--updates",
                    .description = "End after so many updates; 0: when interrupted",
                    .values = number(0, 1'000'000'000),
                    .target = &written->updates},
                   {.name = "--days",
                    .description = "How many days of the guide to begin with",
                    .values = number(1, 366),
                    .target = &written->days},
                   {.name = "--program-seconds",
                    .description = "The length of the programmes; 0: as on television",
                    .values = number(0, 86'400),
                    .target = &written->programSeconds,
                    .needs = {"--demo"}}},
       .examples = {"orvo --demo monitor --updates 1",
                    "orvo --demo monitor --updates 2 --program-seconds 1 --json"},
       .run = [written](Tool& tool) { return runMonitor(tool, *written); }});
}

}  // namespace orvo::tool
