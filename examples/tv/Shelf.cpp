#include "Shelf.h"

#include <utility>

Shelf::Shelf(std::shared_ptr<const orvo::Context> context,
             const orvo::CollectionReference& collection, QObject* parent)
    : Loadable(parent),
      context_(std::move(context)),
      title_(QString::fromStdString(collection.label)),
      walk_(std::in_place, context_, [context = context_, id = collection.id] {
        return context->fetchItemCollection(id, {.page = {{.offset = 0, .limit = kPart}}});
      }) {}

Shelf::Shelf(const std::shared_ptr<const orvo::Context>& context,
             const orvo::Shared<orvo::SearchCollection>& found, QObject* parent)
    : Loadable(parent), context_(context), title_(QString::fromStdString(found->label)) {
  items_.append(context_, found);
}

void Shelf::load() {
  if (!walk_ || isLoading() || walk_->ended()) return;
  await(walk_->next(), [this](const orvo::Shared<orvo::ItemCollection>& part) {
    if (part != nullptr) items_.append(context_, part);
  });
}
