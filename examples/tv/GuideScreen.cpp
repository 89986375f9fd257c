#include "GuideScreen.h"

#include <QDate>
#include <QDateTime>
#include <QLocale>
#include <algorithm>
#include <chrono>

namespace {

constexpr int kDay = 24 * 60;

orvo::Date now() { return orvo::Clock::system()->now(); }

QString timeOf(orvo::Date date) {
  return QDateTime::fromMSecsSinceEpoch(date.millisecondsSince1970()).toString("HH:mm");
}

}  // namespace

void ProgramList::clear(orvo::Date firstDay) {
  beginResetModel();
  firstDay_ = firstDay;
  programs_.clear();
  endResetModel();
}

void ProgramList::append(const orvo::Shared<orvo::LinearProgramGuide>& part) {
  if (part->items.empty()) return;
  const auto first = rowCount({});
  beginInsertRows({}, first, first + static_cast<int>(part->items.size()) - 1);
  for (const orvo::LinearProgram& program : part->items) programs_.emplace_back(part, &program);
  endInsertRows();
}

int ProgramList::now() const { return at(::now()); }

int ProgramList::daysLater(int index, int days) const {
  if (index < 0 || index >= rowCount({})) return index;
  const orvo::LinearProgram& program = *programs_[static_cast<std::size_t>(index)];
  const auto begin = std::max(program.startTime, firstDay_);
  const int found = at(begin + std::chrono::minutes(1 + days * kDay));
  return found < 0 ? index : found;
}

int ProgramList::rowCount(const QModelIndex&) const { return static_cast<int>(programs_.size()); }

QVariant ProgramList::data(const QModelIndex& index, int role) const {
  const orvo::LinearProgram& program = *programs_.at(static_cast<std::size_t>(index.row()));
  const int begin = std::max(0, minuteOf(program.startTime));
  switch (role) {
    case Title:
      return QString::fromStdString(program.title);
    case ProgramId:
      return QString::fromStdString(program.id);
    case Time:
      return timeOf(program.startTime) + " – " + timeOf(program.endTime);
    case Day:
      return begin / kDay;
    case Minute:
      return begin % kDay;
    case Length:
      return minuteOf(program.endTime) - begin;
    default:
      return index.row() == now();
  }
}

QHash<int, QByteArray> ProgramList::roleNames() const {
  return {{Title, "title"},   {ProgramId, "programId"}, {Time, "time"},  {Day, "day"},
          {Minute, "minute"}, {Length, "length"},       {IsNow, "isNow"}};
}

int ProgramList::at(orvo::Date date) const {
  const auto found = std::find_if(programs_.begin(), programs_.end(), [&](const auto& program) {
    return program->startTime <= date && date < program->endTime;
  });
  return found == programs_.end() ? -1 : static_cast<int>(found - programs_.begin());
}

int ProgramList::minuteOf(orvo::Date date) const {
  return static_cast<int>((date - firstDay_) / std::chrono::minutes(1));
}

QStringList GuideScreen::days() {
  QStringList names{"Today", "Tomorrow"};
  for (int day = 2; day < kDays; ++day) {
    names.append(QLocale().dayName(QDate::currentDate().addDays(day).dayOfWeek()));
  }
  return names;
}

void GuideScreen::load(const Context& context) {
  orvo::Calendar calendar;
  const auto begin = calendar.startOfDay(now());
  const auto end = calendar.addingDays(begin, kDays);
  programs_.clear(begin);
  loadRest(orvo::ListWalk(context, [context, begin, end] {
    return context->fetchLinearProgramGuide(context->linearStream().id, begin, end,
                                            {.page = {{.offset = 0, .limit = 50}}});
  }));
}

void GuideScreen::loadRest(const orvo::ListWalk<orvo::LinearProgramGuide>& walk) {
  await(walk.next(), [this, walk](const orvo::Shared<orvo::LinearProgramGuide>& part) {
    if (part == nullptr) return;
    programs_.append(part);
    if (!walk.ended()) loadRest(walk);
  });
}
