#pragma once

// Qt's come first: moc of Qt 6.4 does not read the standard library's concepts before them.
#include <QObject>
#include <QString>
#include <QtQmlIntegration>

#include <OrvoAPI/Integration/Qt.h>
#include <OrvoAPI/OrvoAPI.h>
#include <utility>

/// What is fetched to be shown: on its way, there, or failed with a text that says so.
class Loadable : public QObject {
  Q_OBJECT
  QML_ANONYMOUS
  Q_PROPERTY(bool loading READ isLoading NOTIFY stateChanged)
  Q_PROPERTY(bool ready READ isReady NOTIFY stateChanged)
  Q_PROPERTY(QString error READ error NOTIFY stateChanged)

 public:
  using QObject::QObject;

  /// Begins, or tries again.
  Q_INVOKABLE virtual void load() = 0;

  [[nodiscard]] bool isLoading() const { return state_ == State::loading; }
  [[nodiscard]] bool isReady() const { return state_ == State::ready; }
  [[nodiscard]] const QString& error() const { return error_; }

 signals:
  void stateChanged();

 protected:
  /// Shows the value when it is there. What an earlier call waits for is not shown any more.
  template <class T, class Show>
  void await(const orvo::Future<T>& future, Show show) {
    setState(State::loading);
    orvo::onMain(this, future,
                 [this, round = ++round_, show = std::move(show)](const orvo::Result<T>& result) {
                   if (round != round_) return;
                   if (result.failed()) return setState(State::failed, textOf(*result.error()));
                   show(*result.value());
                   setState(State::ready);
                 });
  }
  /// What is waited for is not wanted any more.
  void forget() {
    ++round_;
    setState(State::waiting);
  }

 private:
  enum class State { waiting, loading, ready, failed };

  void setState(State state, const QString& error = {});
  static QString textOf(const orvo::AnyError& error);

  State state_ = State::waiting;
  QString error_;
  unsigned round_ = 0;
};
