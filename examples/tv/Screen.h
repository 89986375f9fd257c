#pragma once

#include <QQmlParserStatus>
#include <memory>
#include <optional>

#include "Service.h"

/// The model of one screen. It loads when QML has made it, and when it goes, all that it was
/// fetching ends with it.
class Screen : public Loadable, public QQmlParserStatus {
  Q_OBJECT
  Q_INTERFACES(QQmlParserStatus)
  QML_ANONYMOUS
  Q_PROPERTY(Service* service MEMBER service_ REQUIRED)

 public:
  void load() override { load(renew()); }
  void classBegin() override {}
  void componentComplete() override { load(); }

 protected:
  using Context = std::shared_ptr<const orvo::Context>;

  virtual void load(const Context& context) = 0;
  /// Ends what is under way; returns the context for what comes next.
  const Context& renew() { return scope_.emplace(service_->context()).context(); }
  [[nodiscard]] const Context& context() const { return scope_->context(); }

 private:
  Service* service_ = nullptr;
  std::optional<orvo::FetchScope> scope_;
};
