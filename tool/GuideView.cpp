#include <OrvoAPI/Platform/Calendar.h>
#include <tool/GuideView.h>
#include <tool/TimeAxis.h>
#include <tool/Wording.h>

#include <algorithm>
#include <optional>

namespace orvo::tool {

namespace {

using std::chrono::milliseconds;

bool isOnAir(const LinearProgram& program, Date now) {
  return program.startTime <= now && now < program.endTime;
}

bool hasSeconds(const std::vector<LinearProgram>& programs) {
  return std::any_of(programs.begin(), programs.end(), [](const LinearProgram& program) {
    return program.startTime.millisecondsSince1970() % 60'000 != 0;
  });
}

/// About five programmes around the present, or from the first one on when the present is not in
/// the guide.
TimeAxis axisAround(const std::vector<LinearProgram>& programs, Date now, std::size_t columns) {
  constexpr std::int64_t kColumnsPerProgram = 18;
  const Date first = programs.front().startTime;
  const milliseconds all = programs.back().endTime - first;
  const auto count = static_cast<std::int64_t>(programs.size());
  const milliseconds span =
      std::min(all, all / count * static_cast<std::int64_t>(columns) / kColumnsPerProgram);
  const milliseconds step = roundStep(span / 12);
  Date start = first;
  if (first <= now && now < programs.back().endTime) {
    const Date midnight = Calendar().startOfDay(now);
    const Date before = midnight + (now - span / 4 - midnight) / step * step;
    start = std::clamp(before, first, programs.back().endTime - span);
  }
  return TimeAxis(start, span, columns);
}

void drawStrip(Screen& screen, const std::vector<LinearProgram>& programs, Date now) {
  const std::string margin = "  ";
  const TimeAxis axis = axisAround(programs, now, screen.columns() - 2 * margin.size());
  std::vector<TimeBox> boxes;
  for (const LinearProgram& program : programs) {
    const Style style = program.endTime <= now  ? Style::faint
                        : isOnAir(program, now) ? Style::marked
                                                : Style::plain;
    boxes.push_back({program.startTime, program.endTime, program.title, style});
  }
  screen.blank();
  screen.line(margin + screen.in(Style::faint, axis.labels()));
  screen.line(margin + boxLine(screen, axis, boxes));
  if (now < axis.start() || now >= axis.end()) return;
  const std::string label = "▲ now, " + clockText(now);
  const std::size_t room = axis.columns() - std::min(axis.columns(), label.size());
  const std::size_t column = axis.column(now);
  // Near the right edge the words stand on the other side of the mark.
  constexpr std::size_t kWords = 10;
  const std::size_t before = std::max(column, kWords) - kWords;
  const std::string text = column <= room ? std::string(column, ' ') + label
                                          : std::string(before, ' ') + clockText(now) + " now ▲";
  screen.line(margin + screen.in(Style::good, text));
}

std::string dayHeading(Date date, Date now) {
  Calendar calendar;
  const std::string day = dayText(date);
  if (calendar.isToday(date, now)) return "Today, " + day;
  if (calendar.isTomorrow(date, now)) return "Tomorrow, " + day;
  return day;
}

std::vector<Cell> row(const LinearProgram& program, Date now, bool precise) {
  const auto seconds = [](milliseconds span) { return static_cast<double>(span.count()) / 1000; };
  const bool onAir = isOnAir(program, now);
  const Style past = program.endTime <= now ? Style::faint : Style::plain;
  const std::string length = onAir ? durationText(seconds(program.endTime - now)) + " left"
                                   : durationText(seconds(program.endTime - program.startTime));
  return {onAir ? Cell{"▶", Style::good} : Cell{},
          {precise ? preciseClockText(program.startTime) : clockText(program.startTime), past},
          {program.title, onAir ? Style::strong : past},
          {program.subheading.value_or(""), past},
          {length, onAir ? Style::good : past},
          {program.id, Style::faint}};
}

}  // namespace

void drawGuide(Screen& screen, const LinearProgramGuide& guide, const LinearStream& stream,
               Date now) {
  screen.title(stream.label, countText(guide.meta.total, "programme"));
  screen.paragraph(stream.description, Style::faint);
  if (guide.items.empty()) return;
  drawStrip(screen, guide.items, now);
  const bool precise = hasSeconds(guide.items);
  std::vector<Section> days;
  std::optional<Date> day;
  for (const LinearProgram& program : guide.items) {
    const Date start = Calendar().startOfDay(program.startTime);
    if (start != day) days.push_back({.heading = dayHeading(start, now)});
    day = start;
    days.back().rows.push_back(row(program, now, precise));
  }
  screen.tables(
      {{}, {}, {.least = 12}, {.least = 16, .optional = 1}, {.right = true}, {.optional = 2}},
      days);
}

}  // namespace orvo::tool
