#pragma once

#include <QAbstractListModel>
#include <QtQmlIntegration>
#include <memory>
#include <optional>
#include <vector>

#include "Item.h"
#include "Loadable.h"

/// Items in a row: a list model with one role, `item`.
class ItemList : public QAbstractListModel {
  Q_OBJECT
  QML_ANONYMOUS

 public:
  using QAbstractListModel::QAbstractListModel;

  /// The items of `part` share it with whatever else does.
  template <class Part>
  void append(const std::shared_ptr<const orvo::Context>& context, const Part& part) {
    if (part->items.empty()) return;
    const auto first = rowCount({});
    beginInsertRows({}, first, first + static_cast<int>(part->items.size()) - 1);
    for (const orvo::ContentItem& item : part->items) {
      items_.emplace_back(context, orvo::Shared<orvo::ContentItem>(part, &item));
    }
    endInsertRows();
  }

  [[nodiscard]] const std::vector<Item>& items() const { return items_; }
  [[nodiscard]] int rowCount(const QModelIndex&) const override {
    return static_cast<int>(items_.size());
  }
  [[nodiscard]] QVariant data(const QModelIndex& index, int) const override {
    return QVariant::fromValue(items_.at(static_cast<std::size_t>(index.row())));
  }
  [[nodiscard]] QHash<int, QByteArray> roleNames() const override {
    return {{Qt::UserRole, "item"}};
  }

 private:
  std::vector<Item> items_;
};

/// A collection, fetched part by part as it comes into view: each `load` brings the next.
class Shelf : public Loadable {
  Q_OBJECT
  QML_ANONYMOUS
  Q_PROPERTY(QString title READ title CONSTANT)
  Q_PROPERTY(ItemList* items READ items CONSTANT)

 public:
  /// As many as fit beside each other, and some more.
  static constexpr int kPart = 8;

  Shelf(std::shared_ptr<const orvo::Context> context, const orvo::CollectionReference& collection,
        QObject* parent);
  /// What a search has found of one kind: all of it is there.
  Shelf(const std::shared_ptr<const orvo::Context>& context,
        const orvo::Shared<orvo::SearchCollection>& found, QObject* parent);

  void load() override;

  [[nodiscard]] const QString& title() const { return title_; }
  [[nodiscard]] ItemList* items() { return &items_; }

 private:
  const std::shared_ptr<const orvo::Context> context_;
  const QString title_;
  const std::optional<orvo::ListWalk<orvo::ItemCollection>> walk_;
  ItemList items_;
};
