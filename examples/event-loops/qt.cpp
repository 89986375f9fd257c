// The main queue in a Qt loop.
// Usage: qt API_URL RESOURCES_URL, as `orvo serve-demo` prints them.
#include <OrvoAPI/OrvoAPI.h>

#include <QCoreApplication>
#include <QSocketNotifier>

#include "Film.h"

int main(int count, char** arguments) {
  QCoreApplication app(count, arguments);
  if (count != 3) return 2;
  const auto queue = orvo::MainQueue::shared();
  auto claim = queue->claim();
  QSocketNotifier notifier(claim->eventDescriptor(), QSocketNotifier::Read);
  QObject::connect(&notifier, &QSocketNotifier::activated, [&] { claim->drain(); });

  filmTitle(arguments).onComplete(queue,
                                  [](const auto& title) { QCoreApplication::exit(print(title)); });

  return QCoreApplication::exec();
}
