// What is on the linear channel; ends with the first update, where an app would go on.
// Usage: on-air API_URL RESOURCES_URL, as `orvo serve-demo` prints them.
#include <OrvoAPI/OrvoAPI.h>

#include <cstdio>

int main(int count, char** arguments) {
  if (count != 3) return 2;
  int status = 1;
  const auto queue = orvo::MainQueue::shared();
  auto claim = queue->claim();
  std::shared_ptr<orvo::LinearProgramGuideMonitor> monitor;
  const auto giveUp = [&](const orvo::AnyError& error) {
    std::fprintf(stderr, "%s\n", error.description().c_str());
    claim->stop();
  };

  const auto watch = [&](const std::shared_ptr<orvo::Context>& context) {
    monitor = orvo::LinearProgramGuideMonitor::make(
        context, {.delayAfterEnd = orvo::randomDelayUpTo(std::chrono::seconds(60))});
    monitor->onUpdate([&](const orvo::GuideUpdate& update) {
      std::printf("%s is on\n", update.program.title.c_str());
      status = 0;
      claim->stop();
    });
    monitor->load(orvo::Clock::system()->now(), 3).onFailure(queue, giveUp);
  };
  orvo::ContextService::context(*orvo::URL::parse(arguments[1]), *orvo::URL::parse(arguments[2]),
                                orvo::Client::appleTV)
      .onSuccess(queue, watch)
      .onFailure(queue, giveUp);

  claim->run();
  return status;
}
