// The main queue in a Qt loop.
// Usage: qt API_URL RESOURCES_URL, as `orvo serve-demo` prints them.
#include <OrvoAPI/OrvoAPI.h>

#include <QCoreApplication>
#include <QSocketNotifier>
#include <cstdio>

int main(int count, char** arguments) {
  QCoreApplication app(count, arguments);
  if (count != 3) return 2;
  const auto queue = orvo::MainQueue::shared();
  auto claim = queue->claim();
  QSocketNotifier notifier(claim->eventDescriptor(), QSocketNotifier::Read);
  QObject::connect(&notifier, &QSocketNotifier::activated, [&] { claim->drain(); });

  orvo::ContextService::context(*orvo::URL::parse(arguments[1]), *orvo::URL::parse(arguments[2]),
                                orvo::Client::appleTV)
      .flatMap([](const auto& context) { return context->fetchVideo("film-long-thaw"); })
      .onSuccess(queue,
                 [](const auto& video) {
                   std::puts(video->title.c_str());
                   QCoreApplication::quit();
                 })
      .onFailure(queue, [](const auto& error) {
        std::fprintf(stderr, "%s\n", error.description().c_str());
        QCoreApplication::exit(1);
      });

  return QCoreApplication::exec();
}
