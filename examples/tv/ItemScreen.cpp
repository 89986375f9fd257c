#include "ItemScreen.h"

#include <utility>

void ItemScreen::load(const Context& context) {
  const auto id = itemId_.toStdString();
  if (label_.isEmpty()) {
    await(context->fetchContentItem(id),
          [this, context](const auto& content) { show(Item(context, content)); });
  } else {
    await(context->fetchSystemView(id, label_.toStdString()),
          [this, context](const auto& page) { show(Item(context, page)); });
  }
}

void ItemScreen::show(Item item) {
  item_ = std::move(item);
  qDeleteAll(std::exchange(shelves_, {}));
  for (const auto& collection : item_.collections()) {
    shelves_.append(new Shelf(context(), collection, this));
  }
}

QUrl ItemScreen::stream(const QString& videoId) const {
  return QUrl(QString::fromStdString(context()->videoURL(videoId.toStdString()).text()));
}
