// What is on the linear channel.
#include "Example.h"

namespace {

/// Shows LinearProgramGuideMonitor::load(startingAt, days, options);
/// LinearProgramGuideMonitor::onUpdate(task); LinearProgramGuideMonitorOptions::delayAfterEnd;
/// randomDelayUpTo(longest).
Outcome onAir(const App& app) {
  const auto monitor = orvo::LinearProgramGuideMonitor::make(
      app.context, {.delayAfterEnd = orvo::randomDelayUpTo(std::chrono::seconds(60))});
  const orvo::Promise<bool> named;
  monitor->onUpdate([named](const orvo::GuideUpdate& update) {
    show(update.program.title + " is on");
    named.success(!update.days.empty());
  });
  monitor
      ->load(app.context->clock()->now(), 3)  // three days from now
      .onFailure([named](const orvo::AnyError& error) { named.failure(error); });
  return named.future().map([monitor](bool isNamed) { return isNamed; });  // the app keeps it
}

/// Shows LinearProgramGuideMonitor::load(startingAt, endingAt, options);
/// LinearProgramGuideMonitor::loadNext().
Outcome moreOfTheGuide(const App& app) {
  const auto monitor = orvo::LinearProgramGuideMonitor::make(app.context);
  const orvo::Date now = app.context->clock()->now();
  return monitor->load(now, now + std::chrono::hours(24)).map([monitor](bool isLoaded) {
    if (const auto more = monitor->loadNext()) (*more)();  // the next ten programmes
    return isLoaded;
  });
}

}  // namespace

std::vector<Example> monitorExamples() {
  return {{"onAir", onAir}, {"moreOfTheGuide", moreOfTheGuide}};
}
