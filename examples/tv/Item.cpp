#include "Item.h"

#include <cmath>
#include <optional>
#include <utility>

namespace {

QString text(const std::string& value) { return QString::fromStdString(value); }
QString text(const std::optional<std::string>& value) { return value ? text(*value) : QString(); }

}  // namespace

Item::Item(std::shared_ptr<const orvo::Context> context, orvo::Shared<orvo::ContentItem> content)
    : context_(std::move(context)),
      video_(content, content->video()),
      page_(content, content->page()) {}

Item::Item(std::shared_ptr<const orvo::Context> context, orvo::Shared<orvo::Page> page)
    : context_(std::move(context)), page_(std::move(page)) {}

QString Item::id() const {
  return with([](const auto& content) { return text(content.id); });
}
QString Item::title() const {
  return with([](const auto& content) { return text(content.title); });
}
QString Item::subheading() const {
  return with([](const auto& content) { return text(content.subheading); });
}
QString Item::description() const {
  return with([](const auto& content) { return text(content.shortDescription); });
}

QString Item::badge() const {
  const auto status = with([](const auto& content) { return content.status; });
  if (status.startTime) return text(status.label);
  if (video_ == nullptr || !video_->duration) return {};
  return QString("%1 min").arg(std::lround(*video_->duration / 60));
}

bool Item::isPlayable() const {
  return video_ != nullptr && video_->playbackStatus == orvo::Video::PlaybackStatus::available;
}

QVariantList Item::actions() const {
  QVariantList buttons;
  for (const auto& action : with([](const auto& content) { return content.appActions; })) {
    const bool isShown = action.kind == orvo::AppAction::Kind::view ||
                         action.kind == orvo::AppAction::Kind::tv || page_ != nullptr ||
                         (action.kind == orvo::AppAction::Kind::play && isPlayable());
    if (!isShown) continue;
    const auto kind = orvo::rawValue(action.kind);
    buttons.append(QVariantMap{{"id", text(action.id)},
                               {"label", text(action.label)},
                               {"kind", QString::fromUtf8(kind.data(), qsizetype(kind.size()))}});
  }
  return buttons;
}

const std::vector<orvo::CollectionReference>& Item::collections() const {
  static const std::vector<orvo::CollectionReference> kNone;
  if (video_ != nullptr) return video_->collections;
  return page_ != nullptr ? page_->collections : kNone;
}

QUrl Item::image(double width, double height) const {
  const auto images = with([](const auto& content) { return content.imageResources; });
  const auto picture = images.find(orvo::ImageResourceKey::landscape);
  if (!picture) return {};
  // Drawn pictures on a large screen show a JPG's blocks.
  const auto url =
      picture->url({.width = width, .height = height}, {.format = orvo::ImageResourceFormat::PNG},
                   context_->resourceHost());
  return QUrl(text(url.text()));
}
