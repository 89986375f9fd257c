#include "SearchScreen.h"

#include <memory>
#include <utility>

void SearchScreen::setText(const QString& text) {
  if (text == text_) return;
  text_ = text;
  emit textChanged();
  Screen::load();
}

void SearchScreen::load(const Context& context) {
  if (text_.trimmed().isEmpty()) {
    show(std::make_shared<std::vector<orvo::SearchCollection>>());
    return forget();
  }
  await(context->fetchSearchResults(text_.trimmed().toStdString()),
        [this](const auto& found) { show(found); });
}

void SearchScreen::show(const orvo::Shared<std::vector<orvo::SearchCollection>>& found) {
  qDeleteAll(std::exchange(shelves_, {}));
  for (const orvo::SearchCollection& collection : *found) {
    shelves_.append(
        new Shelf(context(), orvo::Shared<orvo::SearchCollection>(found, &collection), this));
  }
}
