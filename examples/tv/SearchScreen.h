#pragma once

#include <QQmlListProperty>

#include "Screen.h"
#include "Shelf.h"

/// What is found while somebody types. Each letter ends the request for the text before it.
class SearchScreen : public Screen {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged)
  Q_PROPERTY(QQmlListProperty<Shelf> shelves READ shelfList NOTIFY stateChanged)

 public:
  [[nodiscard]] const QString& text() const { return text_; }
  void setText(const QString& text);
  [[nodiscard]] const QList<Shelf*>& shelves() const { return shelves_; }

 signals:
  void textChanged();

 protected:
  void load(const Context& context) override;

 private:
  void show(const orvo::Shared<std::vector<orvo::SearchCollection>>& found);
  QQmlListProperty<Shelf> shelfList() { return {this, &shelves_}; }

  QString text_;
  QList<Shelf*> shelves_;
};
