#pragma once

#include <OrvoAPI/Integration/Qt.h>
#include <OrvoAPI/OrvoAPI.h>

#include <QAbstractListModel>
#include <QString>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// The suggestions for what has been typed so far, as rows of a Qt list.
class SearchModel final : public QAbstractListModel {
 public:
  explicit SearchModel(std::shared_ptr<const orvo::Context> context, QObject* parent = nullptr)
      : QAbstractListModel(parent), context_(std::move(context)) {}

  /// Is called when the rows are those for the text, and told why when there are none.
  std::function<void(const QString& problem)> shown = [](const QString&) {};

  void setText(const QString& text) {
    scope_.emplace(context_);  // ends the search before, down to the network
    orvo::onMain(this, scope_->context()->fetchSearchSuggestions(text.toStdString()),
                 [this, search = ++searches_](const auto& found) {
                   if (search == searches_) show(found);  // else one that was ended
                 });
  }

  int rowCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() || rows_ == nullptr ? 0 : static_cast<int>(rows_->size());
  }
  QVariant data(const QModelIndex& index, int role) const override {
    if (role != Qt::DisplayRole || !checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    return QString::fromStdString(rows_->at(static_cast<std::size_t>(index.row())));
  }

 private:
  using Rows = orvo::Shared<std::vector<std::string>>;

  void show(const orvo::Result<Rows>& found) {
    beginResetModel();
    rows_ = found.failed() ? nullptr : *found.value();
    endResetModel();
    shown(found.failed() ? QString::fromStdString(found.error()->description()) : QString());
  }

  const std::shared_ptr<const orvo::Context> context_;
  std::optional<orvo::FetchScope> scope_;
  int searches_ = 0;
  Rows rows_;
};
