#include "Walk.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QQuickItem>
#include <QTest>
#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <unordered_map>
#include <utility>

#include "GuideScreen.h"
#include "OnAir.h"
#include "SearchScreen.h"

namespace {

constexpr int kPatience = 5000;  // milliseconds; only what has gone wrong takes as long

/// Whether there is nothing to see: all of the picture but a few pixels has one colour.
bool isBlank(const QImage& picture) {
  std::unordered_map<QRgb, int> pixels;
  int most = 0;
  for (int y = 0; y < picture.height(); ++y) {
    for (int x = 0; x < picture.width(); ++x) most = std::max(most, ++pixels[picture.pixel(x, y)]);
  }
  return most > 0.995 * picture.width() * picture.height();
}

/// What the process holds of the machine's memory, in KB.
int residentKilobytes() {
  QFile status("/proc/self/status");
  if (!status.open(QIODevice::ReadOnly)) return 0;
  const auto lines = status.readAll().split('\n');
  for (const QByteArray& line : lines) {
    if (line.startsWith("VmRSS:")) return line.simplified().split(' ').at(1).toInt();
  }
  return 0;
}

}  // namespace

Walk::Walk(QQuickView& window, Service& service, const Witness& witness,
           std::unique_ptr<orvo::demo::DemoService>& demo, QString folder)
    : window_(window),
      service_(service),
      witness_(witness),
      demo_(demo),
      folder_(std::move(folder)) {
  QDir().mkpath(folder_);
}

int Walk::run(const QElapsedTimer& sinceStart) {
  try {
    start(sinceStart);
    page();
    video();
    guide();
    search();
    if (demo_->port() != 0) trouble();
    manyScreens();
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "walk: %s\n", failure.what());
    return 1;
  }
  std::puts("walked");
  return 0;
}

// The start screen: the first view's shelves, of which only those in view are loaded.
void Walk::start(const QElapsedTimer& sinceStart) {
  await(
      [&] { return item() != nullptr && item()->isReady() && item()->shelves().at(0)->isReady(); },
      "the first shelf");
  std::printf("first shelf after %lld ms\n", sinceStart.elapsed());
  const auto view = service_.views().at(0).toMap();
  const auto told = ask("products/" + view["id"].toString())["collections"].toArray();
  const auto& shelves = item()->shelves();
  check(shelves.size() == told.size(), "the shelves of the start screen");
  for (qsizetype i = 0; i < shelves.size(); ++i) {
    check(shelves[i]->title() == told[i].toObject()["label"].toString(),
          "the order of the shelves");
  }
  check(!shelves.last()->isReady() && !shelves.last()->isLoading(),
        "that a shelf out of view is not loaded");
  expectItems(*shelves[0], "collections/" + told[0].toObject()["id"].toString());
  await([&] { return !window_.rootObject()->findChild<OnAir*>()->title().isEmpty(); },
        "the banner");
  keepPicture("start");
  for (qsizetype i = 1; i < shelves.size(); ++i) press(Qt::Key_Down);
  await([&] { return shelves.last()->isReady(); }, "the last shelf when it comes into view");
  const auto& items = shelves.last()->items()->items();
  for (int i = 0; i < 60 && items.size() <= 2 * Shelf::kPart; ++i) {
    press(Qt::Key_Right);
    await([&] { return shelves.last()->isReady(); }, "a part of the shelf");
  }
  check(items.size() > 2 * Shelf::kPart, "more of a shelf when its end comes near");
  expectItems(*shelves.last(), "collections/" + told.last().toObject()["id"].toString());
  for (qsizetype i = 1; i < shelves.size(); ++i) press(Qt::Key_Up);
}

// The second item on the first shelf, a show.
void Walk::page() {
  press(Qt::Key_Right);
  const auto id = item()->shelves()[0]->items()->items().at(1).id();
  press(Qt::Key_Return);
  const auto told = ask("products/" + id);
  awaitItem(told["title"].toString());
  check(item()->item().description() == told["short_description"].toString(), "the page's text");
  await([&] { return item()->shelves().at(0)->isReady(); }, "the page's first shelf");
  expectItems(*item()->shelves()[0],
              "collections/" + told["collections"].toArray()[0].toObject()["id"].toString());
  keepPicture("page");
}

// The third episode of the show, its stream, and back to the start.
void Walk::video() {
  const auto& episode = item()->shelves()[0]->items()->items().at(2);
  const auto told = ask("products/" + episode.id());
  press(Qt::Key_Down);
  press(Qt::Key_Right);
  press(Qt::Key_Right);
  press(Qt::Key_Return);
  awaitItem(told["title"].toString());
  await([&] { return item()->shelves().at(0)->isReady(); }, "what belongs to the video");
  keepPicture("video");
  press(Qt::Key_Return);
  check(screen()->property("isPlaying").toBool(), "that OK plays the video");
  check(ask(item()->stream(told["id"].toString())).startsWith("#EXTM3U"), "the video's stream");
  for (int i = 0; i < 3; ++i) press(Qt::Key_Escape);
  check(screen()->property("itemId").isNull(), "that the way back leads to the start");
}

// The guide, by the button before the last; the banner says the same of what is on.
void Walk::guide() {
  press(Qt::Key_Up);
  for (int i = 0; i < 3; ++i) press(Qt::Key_Right);
  press(Qt::Key_Return);
  auto* const guide = screen()->property("model").value<GuideScreen*>();
  check(guide != nullptr, "that the button opens the guide");
  await([&] { return guide->isReady() && guide->programs()->programs().size() > 90; }, "the guide");
  const auto& programs = guide->programs()->programs();
  const auto dated = [](orvo::Date date) {
    return QDateTime::fromMSecsSinceEpoch(date.millisecondsSince1970())
        .toUTC()
        .toString(Qt::ISODateWithMs);
  };
  const auto told =
      ask(QString("epg?limit=100&start_time=%1&end_time=%2")
              .arg(dated(programs.front()->startTime), dated(programs.back()->endTime)))["items"]
          .toArray();
  check(std::equal(programs.begin(), programs.end(), told.begin(), told.end(),
                   [&](const auto& shown, const QJsonValue& program) {
                     return shown->id == program["id"].toString().toStdString() &&
                            shown->title == program["title"].toString().toStdString();
                   }),
        "the programmes of the guide");
  const int now = guide->programs()->now();
  check(screen()->property("current").toInt() == now, "that the guide opens at now");
  const auto* const onAir = window_.rootObject()->findChild<OnAir*>();
  check(onAir != nullptr, "the banner");
  const auto title = programs.at(static_cast<std::size_t>(now))->title;
  await([&] { return onAir->title().toStdString() == title; }, "what is on, in the banner");
  keepPicture("guide");
  press(Qt::Key_Down);
  const int tomorrow = screen()->property("current").toInt();
  check(tomorrow > now && guide->programs()->daysLater(tomorrow, -1) <= now, "the next day's row");
  press(Qt::Key_Escape);
}

// Letters that follow each other faster than answers: only what the last one asks for is shown.
void Walk::search() {
  press(Qt::Key_Right);
  press(Qt::Key_Return);
  auto* const search = screen()->property("model").value<SearchScreen*>();
  check(search != nullptr, "that the button opens the search");
  for (const char letter : std::string("harbour")) QTest::keyClick(&window_, letter);
  await([&] { return search->isReady(); }, "what is found");
  const auto told = ask("search?q=harbour")["collections"].toArray();
  check(!told.isEmpty() && search->shelves().size() == told.size(), "what is found");
  for (qsizetype i = 0; i < told.size(); ++i) {
    const auto shown = search->shelves().at(i)->items()->items();
    const auto items = told[i].toObject()["items"].toArray();
    check(std::equal(shown.begin(), shown.end(), items.begin(), items.end(),
                     [](const Item& item, const QJsonValue& found) {
                       return item.id() == found["id"].toString();
                     }),
          "what is found");
  }
  keepPicture("search");
  press(Qt::Key_Escape);
  press(Qt::Key_Down);
}

// The service goes away, and comes back.
void Walk::trouble() {
  const int port = demo_->port();
  demo_.reset();
  press(Qt::Key_Right);
  press(Qt::Key_Return);
  await([&] { return !item()->error().isEmpty(); }, "what is said without a service");
  keepPicture("trouble");
  demo_ = std::make_unique<orvo::demo::DemoService>(orvo::demo::DemoServiceOptions{.port = port});
  check(demo_->start(), "the service's return");
  press(Qt::Key_Return);
  await([&] { return item()->isReady(); }, "the page, tried again");
  press(Qt::Key_Escape);
}

// Pages are opened and left, every other one before its answer is there.
void Walk::manyScreens() {
  int before = 0;
  int abandoned = 0;
  const int cancelled = witness_.cancelled();
  for (int i = 1; i <= 200; ++i) {
    service_.context()->store().removeAll();
    press(Qt::Key_Return);
    check(screen()->property("itemId").isValid(), "that OK opens a page");
    if (i % 2 == 0) await([&] { return item()->isReady(); }, "a page");
    abandoned += item()->isReady() ? 0 : 1;
    press(Qt::Key_Escape);
    await([&] { return witness_.underWay() == 0; }, "the end of what a closed screen fetched");
    if (i == 50 || i == 100 || i == 200) {
      std::printf("%d KB after %d screens\n", residentKilobytes(), i);
    }
    if (i == 50) before = residentKilobytes();
  }
  const int ended = witness_.cancelled() - cancelled;
  std::printf("%d requests, %d screens closed early, %d of their requests ended\n",
              witness_.begun(), abandoned, ended);
  // The answer may come between the key and the screen's end.
  check(abandoned > 20 && ended > abandoned / 4, "that closed screens end their requests");
  // Less than what one screen's pictures take; what the allocator keeps varies.
  check(residentKilobytes() - before < 8192, "the memory of 150 screens");
}

void Walk::press(int key) { QTest::keyClick(&window_, static_cast<Qt::Key>(key)); }

void Walk::check(bool holds, const QString& what) {
  if (!holds) throw std::runtime_error("wrong: " + what.toStdString());
}

void Walk::await(const std::function<bool()>& happens, const QString& what) {
  if (!QTest::qWaitFor(happens, kPatience)) {
    throw std::runtime_error("did not come: " + what.toStdString());
  }
}

void Walk::awaitItem(const QString& title) {
  await([&] { return item()->item().title() == title; }, title);
}

void Walk::expectItems(const Shelf& shelf, const QString& path) {
  const auto& items = const_cast<Shelf&>(shelf).items()->items();
  const auto told = ask(QString("%1?limit=%2").arg(path).arg(items.size()))["items"].toArray();
  check(std::equal(items.begin(), items.end(), told.begin(), told.end(),
                   [](const Item& shown, const QJsonValue& item) {
                     return shown.id() == item["id"].toString() &&
                            shown.title() == item["title"].toString();
                   }),
        shelf.title());
}

QObject* Walk::screen() const { return window_.rootObject()->property("screen").value<QObject*>(); }

ItemScreen* Walk::item() const {
  return screen() ? screen()->property("model").value<ItemScreen*>() : nullptr;
}

QByteArray Walk::ask(const QUrl& url) {
  QNetworkAccessManager network;
  QNetworkRequest request(url);
  const auto token = service_.context()->sessionProvider()->currentToken();
  request.setRawHeader("Authorization", QByteArray::fromStdString(token));
  const std::unique_ptr<QNetworkReply> reply(network.get(request));
  await([&] { return reply->isFinished(); }, "the service's answer");
  return reply->readAll();
}

QJsonObject Walk::ask(const QString& path) {
  const auto base = QString::fromStdString(service_.context()->urlService().baseURL.text());
  return QJsonDocument::fromJson(ask(QUrl(base + path))).object();
}

QImage Walk::still() {
  QImage last;
  await(
      [&] {
        const auto items = window_.contentItem()->findChildren<QQuickItem*>();
        const bool isLoading = std::any_of(items.begin(), items.end(), [](const auto* image) {
          return image->inherits("QQuickImage") && image->property("status").toInt() == 2;
        });
        const auto now = window_.grabWindow();
        return std::exchange(last, now) == now && !isLoading;
      },
      "a picture that stands still");
  return last;
}

void Walk::keepPicture(const QString& name) {
  const auto picture = still();
  check(!isBlank(picture), "a blank picture: " + name);
  check(!pictures_.contains(picture), "a picture that was there before: " + name);
  check(picture.save(folder_ + "/" + name + ".png"), "where to keep the picture " + name);
  pictures_.append(picture);
  // The same screen without its content has to be noticed.
  auto* const content = screen();
  content->setProperty("visible", false);
  check(isBlank(still()), "that a blank picture of " + name + " is noticed");
  content->setProperty("visible", true);
  QMetaObject::invokeMethod(content, "forceActiveFocus");
}
