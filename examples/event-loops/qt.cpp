// The main queue in a Qt loop.
// Usage: qt API_URL RESOURCES_URL, as `orvo serve-demo` prints them.
#include <OrvoAPI/Integration/Qt.h>
#include <OrvoAPI/OrvoAPI.h>

#include <QCoreApplication>

#include "Film.h"

/// Shows onMain(context, future, task).
int main(int count, char** arguments) {
  QCoreApplication app(count, arguments);
  if (count != 3) return 2;
  const orvo::QtMainQueue mainQueue;

  orvo::onMain(&app, filmTitle(arguments),
               [](const auto& title) { QCoreApplication::exit(print(title)); });

  return QCoreApplication::exec();
}
