// What an app sets so that a million devices do not all ask for the same at the same moment; ends
// with the first update. Usage: spread API_URL RESOURCES_URL, as `orvo serve-demo` prints them.
#include <OrvoAPI/OrvoAPI.h>

#include <cstdio>

namespace {

using namespace std::chrono_literals;

/// Shows LinearProgramGuideMonitorOptions::delayAfterEnd;
/// LinearProgramGuideMonitorOptions::delayAfterFailure.
std::shared_ptr<orvo::LinearProgramGuideMonitor> watch(
    const std::shared_ptr<const orvo::Context>& context) {
  return orvo::LinearProgramGuideMonitor::make(context,
                                               {.delayAfterEnd = orvo::randomDelayUpTo(60s),
                                                .delayAfterFailure = orvo::randomDelayUpTo(25min)});
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) return 2;
  int status = 1;
  const auto queue = orvo::MainQueue::shared();
  auto claim = queue->claim();
  // Both stop when they are released.
  std::shared_ptr<orvo::LinearProgramGuideMonitor> monitor;
  std::shared_ptr<orvo::SessionRenewal> renewal;

  const auto begin = [&](const std::shared_ptr<orvo::Context>& context) {
    renewal = orvo::SessionRenewal::make(context->sessionProvider(), {.spread = 6h});
    monitor = watch(context);
    monitor->onUpdate([&](const orvo::GuideUpdate& update) {
      std::printf("%s is on\n", update.program.title.c_str());
      status = 0;
      claim->stop();
    });
    monitor->load(orvo::Clock::system()->now(), 3);  // tries again by itself
  };
  orvo::ContextService::context(*orvo::URL::parse(arguments[1]), *orvo::URL::parse(arguments[2]),
                                orvo::Client::appleTV)
      .onSuccess(queue, begin)
      .onFailure(queue, [&](const orvo::AnyError& error) {
        std::fprintf(stderr, "%s\n", error.description().c_str());
        claim->stop();
      });

  claim->run();
  return status;
}
