#pragma once

#include <QAbstractListModel>
#include <vector>

#include "Screen.h"

/// The programmes of the guide as cells of a grid: a row for each day, minutes from left to right.
class ProgramList : public QAbstractListModel {
  Q_OBJECT
  QML_ANONYMOUS

 public:
  enum Role { Title = Qt::UserRole, ProgramId, Time, Day, Minute, Length, IsNow };

  using QAbstractListModel::QAbstractListModel;

  void clear(orvo::Date firstDay);
  void append(const orvo::Shared<orvo::LinearProgramGuide>& part);
  [[nodiscard]] const std::vector<orvo::Shared<orvo::LinearProgram>>& programs() const {
    return programs_;
  }

  /// The programme that is on now, or -1.
  Q_INVOKABLE [[nodiscard]] int now() const;
  /// The programme so many days later at the time of that one; itself when there is none.
  Q_INVOKABLE [[nodiscard]] int daysLater(int index, int days) const;

  [[nodiscard]] int rowCount(const QModelIndex&) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

 private:
  [[nodiscard]] int at(orvo::Date date) const;
  /// Within the days of the grid, from its beginning.
  [[nodiscard]] int minuteOf(orvo::Date date) const;

  orvo::Date firstDay_;
  std::vector<orvo::Shared<orvo::LinearProgram>> programs_;
};

/// The guide of the next days.
class GuideScreen : public Screen {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(ProgramList* programs READ programs CONSTANT)
  Q_PROPERTY(QStringList days READ days CONSTANT)

 public:
  static constexpr int kDays = 4;

  [[nodiscard]] ProgramList* programs() { return &programs_; }
  /// The names of the rows.
  [[nodiscard]] static QStringList days();

 protected:
  void load(const Context& context) override;

 private:
  void loadRest(const orvo::ListWalk<orvo::LinearProgramGuide>& walk);

  ProgramList programs_;
};
