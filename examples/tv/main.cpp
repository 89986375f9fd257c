// A living-room app: a television, a remote control or a keyboard, and the service.
#include <demo/DemoService.h>

#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickView>
#include <QScreen>
#include <cstdio>
#include <memory>

#include "Service.h"
#include "Walk.h"

namespace {

/// Pixels per unit of the 1280 by 720 that the screens are laid out for.
double displayScale(const QSize& window) {
  return window.height() / 720.0 * QGuiApplication::primaryScreen()->devicePixelRatio();
}

}  // namespace

int main(int count, char** arguments) {
  QElapsedTimer sinceStart;
  sinceStart.start();
  QGuiApplication app(count, arguments);
  const orvo::QtMainQueue mainQueue;
  QCommandLineParser line;
  line.addHelpOption();
  line.addOptions({{"api", "The service's API; the demo service by default.", "URL"},
                   {"resources", "Its images.", "URL"},
                   {"walk", "Walks through the app and leaves pictures of it there.", "FOLDER"}});
  line.process(app);

  auto demo = std::make_unique<orvo::demo::DemoService>();
  if (!line.isSet("api") && !demo->start()) return 1;
  const auto api =
      orvo::URL::parse(line.isSet("api") ? line.value("api").toStdString() : demo->baseURL());
  const auto resources = orvo::URL::parse(
      line.isSet("resources") ? line.value("resources").toStdString() : demo->resourceURL());
  if (!api || !resources) return std::fputs("tv: --api and --resources take a URL\n", stderr), 2;

  const bool walks = line.isSet("walk");
  const QSize size = walks ? QSize(1280, 720) : QGuiApplication::primaryScreen()->size();
  const Witness witness;
  orvo::BootstrapOptions options{.context = {.displayScale = displayScale(size)}};
  if (walks) options.wrapNetwork = witness.wrap();

  Service service(*api, *resources, options);
  QQuickView window;
  window.engine()->addImportPath("qrc:/");  // where the build puts the module
  window.setResizeMode(QQuickView::SizeRootObjectToView);
  window.setInitialProperties({{"service", QVariant::fromValue(&service)}});
  window.setSource(QUrl("qrc:/Tv/qml/Main.qml"));
  if (window.status() != QQuickView::Ready) return 1;
  window.resize(size);
  window.show();
  service.load();
  if (walks) return Walk(window, service, witness, demo, line.value("walk")).run(sinceStart);
  window.setVisibility(QWindow::FullScreen);
  return QGuiApplication::exec();
}
