#pragma once

#include <demo/DemoService.h>

#include <QElapsedTimer>
#include <QImage>
#include <QJsonArray>
#include <QJsonObject>
#include <QQuickView>
#include <memory>

#include "ItemScreen.h"
#include "Service.h"
#include "Witness.h"

/// Walks through the app by its keys, and holds what it shows against what the service says.
class Walk {
 public:
  Walk(QQuickView& window, Service& service, const Witness& witness,
       std::unique_ptr<orvo::demo::DemoService>& demo, QString folder);

  /// The exit status: 0 when all was as it should be.
  int run(const QElapsedTimer& sinceStart);

 private:
  void start(const QElapsedTimer& sinceStart);
  void page();
  void video();
  void guide();
  void search();
  void trouble();
  void manyScreens();

  void press(int key);
  /// Fails the walk, in which then nothing more is looked at.
  void check(bool holds, const QString& what);
  void await(const std::function<bool()>& happens, const QString& what);
  void awaitItem(const QString& title);
  void expectItems(const Shelf& shelf, const QString& path);

  [[nodiscard]] QObject* screen() const;
  [[nodiscard]] ItemScreen* item() const;
  /// What stands at that path of the API.
  [[nodiscard]] QByteArray ask(const QUrl& url);
  [[nodiscard]] QJsonObject ask(const QString& path);
  /// The window when nothing in it moves any more.
  [[nodiscard]] QImage still();
  void keepPicture(const QString& name);

  QQuickView& window_;
  Service& service_;
  const Witness& witness_;
  std::unique_ptr<orvo::demo::DemoService>& demo_;
  const QString folder_;
  QList<QImage> pictures_;
};
