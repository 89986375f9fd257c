#include "SearchScreen.h"

void SearchScreen::type(std::string text) {
  text_ = std::move(text);
  queue_->postAfter(kRest, [weak = weak_from_this(), change = ++changes_] {
    const auto self = weak.lock();
    if (self != nullptr && self->changes_ == change) self->ask();
  });
}

void SearchScreen::ask() {
  context_->fetchSearchSuggestions(text_).onComplete(queue_, weak_from_this(),
                                                     [this, change = changes_](const auto& found) {
                                                       if (changes_ == change) show(found);
                                                     });
}

void SearchScreen::show(const orvo::Result<orvo::Shared<std::vector<std::string>>>& found) {
  rows_ = found.failed() ? std::vector<std::string>() : **found.value();
  message_ = found.failed() ? "The service cannot be reached." : "";
  if (!found.failed() && rows_.empty()) message_ = "Nothing found.";
}
