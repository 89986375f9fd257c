#pragma once

#include <QQmlListProperty>
#include <QUrl>

#include "Item.h"
#include "Screen.h"
#include "Shelf.h"

/// A system view, a page or a video, with the shelves that belong to it.
class ItemScreen : public Screen {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QString itemId MEMBER itemId_ REQUIRED)
  /// Of a system view; the others have titles of their own.
  Q_PROPERTY(QString label MEMBER label_)
  Q_PROPERTY(Item item READ item NOTIFY stateChanged)
  Q_PROPERTY(QQmlListProperty<Shelf> shelves READ shelfList NOTIFY stateChanged)

 public:
  [[nodiscard]] const Item& item() const { return item_; }
  [[nodiscard]] const QList<Shelf*>& shelves() const { return shelves_; }
  /// Where a player finds the video. It holds the session's token: not to be shown or logged.
  Q_INVOKABLE [[nodiscard]] QUrl stream(const QString& videoId) const;

 protected:
  void load(const Context& context) override;

 private:
  void show(Item item);
  QQmlListProperty<Shelf> shelfList() { return {this, &shelves_}; }

  QString itemId_;
  QString label_;
  Item item_;
  QList<Shelf*> shelves_;
};
