#include "OnAir.h"

#include <QDateTime>
#include <QPointer>
#include <QTimer>
#include <algorithm>
#include <chrono>

using namespace std::chrono_literals;

void OnAir::load(const Context& context) {
  // Not all devices shall ask in the second in which a programme ends.
  monitor_ =
      orvo::LinearProgramGuideMonitor::make(context, {.delayAfterEnd = orvo::randomDelayUpTo(30s)});
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
  // A monitor whose requests fail stops; the next update is due by then.
  const auto left = std::max(end - orvo::Clock::system()->now(), std::chrono::milliseconds(0));
  QTimer::singleShot(left + 60s, this, [this, shown = until_] {
    if (until_ == shown) Screen::load();
  });
}
