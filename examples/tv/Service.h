#pragma once

#include <QVariantList>
#include <memory>

#include "Loadable.h"

/// The way to the service: made once, opened at the start, and again when that has failed.
class Service : public Loadable {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("there is one, the window's")
  Q_PROPERTY(QVariantList views READ views NOTIFY stateChanged)

 public:
  Service(orvo::URL api, orvo::URL resources, orvo::BootstrapOptions options);

  void load() override;

  /// Null until it is ready.
  [[nodiscard]] const std::shared_ptr<const orvo::Context>& context() const { return context_; }
  /// The views to start from, each with `id` and `label`.
  [[nodiscard]] QVariantList views() const;

 private:
  const orvo::URL api_;
  const orvo::URL resources_;
  const orvo::BootstrapOptions options_;
  std::shared_ptr<const orvo::Context> context_;
  std::shared_ptr<orvo::SessionRenewal> renewal_;
};
