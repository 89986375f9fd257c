// A coroutine of QCoro's that awaits a fetch, in a Qt loop.
// Usage: qcoro API_URL RESOURCES_URL, as `orvo serve-demo` prints them.
#include <OrvoAPI/Futures/Coroutine.h>
#include <OrvoAPI/Integration/Qt.h>
#include <OrvoAPI/OrvoAPI.h>
#include <QCoro/QCoroTask>

#include <QCoreApplication>
#include <cstdio>

namespace {

const auto mainQueue = orvo::MainQueue::shared();

QCoro::Task<> show(orvo::URL api, orvo::URL resources) {
  const auto opened = co_await orvo::resumeOn(
      mainQueue, orvo::ContextService::context(api, resources, orvo::Client::appleTV));
  if (opened.failed()) {
    std::fprintf(stderr, "%s\n", opened.error()->description().c_str());
    co_return QCoreApplication::exit(1);
  }
  const auto context = *opened.value();
  const auto video = co_await orvo::resumeOn(mainQueue, context->fetchVideo("film-long-thaw"));
  if (!video.failed()) std::puts((*video.value())->title.c_str());
  QCoreApplication::exit(video.failed() ? 1 : 0);
}

}  // namespace

int main(int count, char** arguments) {
  QCoreApplication app(count, arguments);
  if (count != 3) return 2;
  const orvo::QtMainQueue loop;
  show(*orvo::URL::parse(arguments[1]), *orvo::URL::parse(arguments[2]));
  return QCoreApplication::exec();
}
