#pragma once

#include <QString>
#include <QUrl>
#include <QVariantList>
#include <QtQmlIntegration>

#include <OrvoAPI/OrvoAPI.h>
#include <memory>
#include <type_traits>
#include <vector>

/// A video or page as QML reads it. A cheap value that shares the content with the list it came in.
class Item {
  Q_GADGET
  QML_ANONYMOUS
  Q_PROPERTY(QString id READ id CONSTANT)
  Q_PROPERTY(QString title READ title CONSTANT)
  Q_PROPERTY(QString subheading READ subheading CONSTANT)
  Q_PROPERTY(QString description READ description CONSTANT)
  Q_PROPERTY(QString badge READ badge CONSTANT)
  Q_PROPERTY(bool isVideo READ isVideo CONSTANT)
  Q_PROPERTY(QVariantList actions READ actions CONSTANT)

 public:
  Item() = default;
  Item(std::shared_ptr<const orvo::Context> context, orvo::Shared<orvo::ContentItem> content);
  Item(std::shared_ptr<const orvo::Context> context, orvo::Shared<orvo::Page> page);

  [[nodiscard]] QString id() const;
  [[nodiscard]] QString title() const;
  [[nodiscard]] QString subheading() const;
  [[nodiscard]] QString description() const;
  /// What is said of it in a word: how long it is, or that it is live; may be empty.
  [[nodiscard]] QString badge() const;
  [[nodiscard]] bool isVideo() const { return video_ != nullptr; }
  [[nodiscard]] bool isPlayable() const;
  /// The buttons to offer, each with `id`, `label` and `kind`.
  [[nodiscard]] QVariantList actions() const;
  [[nodiscard]] const std::vector<orvo::CollectionReference>& collections() const;
  /// Its picture in that size, in the units of the window; empty when it has none.
  Q_INVOKABLE [[nodiscard]] QUrl image(double width, double height) const;

 private:
  /// What `of` makes of the video or page; a default before there is one.
  template <class Of>
  std::invoke_result_t<Of, const orvo::Video&> with(Of of) const {
    if (video_ != nullptr) return of(*video_);
    if (page_ != nullptr) return of(*page_);
    return {};
  }

  std::shared_ptr<const orvo::Context> context_;
  orvo::Shared<orvo::Video> video_;  // at most one of the two
  orvo::Shared<orvo::Page> page_;
};
