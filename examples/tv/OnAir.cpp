#include "OnAir.h"

#include <QDateTime>
#include <QPointer>
#include <chrono>

using namespace std::chrono_literals;

void OnAir::load(const Context& context) {
  // Not all devices shall ask in the second in which a programme ends, nor in the one in which the
  // service is back.
  monitor_ = orvo::LinearProgramGuideMonitor::make(
      context, {.delayAfterEnd = orvo::randomDelayUpTo(60s),
                .delayAfterFailure = orvo::randomDelayUpTo(25min)});
  monitor_->onUpdate([self = QPointer(this)](const orvo::GuideUpdate& update) {
    if (self != nullptr) self->show(update);
  });
  await(monitor_->load(orvo::Clock::system()->now(), 1), [](bool) {});
}

void OnAir::show(const orvo::GuideUpdate& update) {
  const auto end = update.program.endTime;
  title_ = QString::fromStdString(update.program.title);
  until_ = QDateTime::fromMSecsSinceEpoch(end.millisecondsSince1970()).toString("HH:mm");
  emit updated();
}
