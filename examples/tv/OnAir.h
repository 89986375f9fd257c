#pragma once

#include <memory>

#include "Screen.h"

/// What is on now, as it changes.
class OnAir : public Screen {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QString title READ title NOTIFY updated)
  Q_PROPERTY(QString until READ until NOTIFY updated)

 public:
  [[nodiscard]] const QString& title() const { return title_; }
  [[nodiscard]] const QString& until() const { return until_; }

 signals:
  void updated();

 protected:
  void load(const Context& context) override;

 private:
  void show(const orvo::GuideUpdate& update);

  std::shared_ptr<orvo::LinearProgramGuideMonitor> monitor_;
  QString title_;
  QString until_;
};
