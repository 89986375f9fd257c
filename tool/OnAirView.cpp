#include <fmt/format.h>
#include <tool/OnAirView.h>
#include <tool/Present.h>
#include <tool/Text.h>
#include <tool/Wording.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>
#include <vector>

namespace orvo::tool {

namespace {

constexpr std::size_t kFollowing = 5;

/// How the times of a guide are written: with seconds if its programmes need them.
auto timeText(const GuideUpdate& update) {
  const auto isWholeMinute = [](Date date) { return date.millisecondsSince1970() % 60'000 == 0; };
  return isWholeMinute(update.program.startTime) && isWholeMinute(update.program.endTime)
             ? clockText
             : preciseClockText;
}

std::string between(Date from, Date to) {
  return durationText(std::max(0.0, std::round(static_cast<double>((to - from).count()) / 1000)));
}

bool hasBegun(const LinearProgram& program, Date now) { return program.startTime <= now; }

/// `12 min left`, or when it begins.
std::string remainder(const LinearProgram& program, Date now) {
  return hasBegun(program, now) ? between(now, program.endTime) + " left"
                                : "in " + between(now, program.startTime);
}

std::string bar(const LinearProgram& program, Date now, std::size_t cells) {
  const auto length = std::max<std::int64_t>((program.endTime - program.startTime).count(), 1);
  const auto passed =
      std::clamp<std::int64_t>((now - program.startTime).count(), std::int64_t{0}, length);
  const auto filled = static_cast<std::size_t>(
      static_cast<double>(cells) * static_cast<double>(passed) / static_cast<double>(length));
  std::string text;
  for (std::size_t cell = 0; cell < cells; ++cell) text += cell < filled ? "█" : "░";
  return text;
}

/// What comes after the update's programme; each with the heading of its day, except today's.
std::vector<std::pair<std::string, LinearProgram>> following(const GuideUpdate& update) {
  std::vector<std::pair<std::string, LinearProgram>> result;
  for (const GuideDay& day : update.days) {
    for (const LinearProgram& program : day.programs) {
      if (program.startTime < update.program.endTime) continue;
      result.emplace_back(day.title == "TODAY" ? "" : day.title, program);
    }
  }
  std::ranges::stable_sort(result, {}, [](const auto& entry) { return entry.second.startTime; });
  return result;
}

struct Times {
  std::string start;
  std::string end;
  /// How long there is to go.
  std::string rest;
};

/// In one line with a bar between start and end, if there is room for that.
void drawTimes(Screen& screen, const LinearProgram& program, Date now, const Times& times) {
  constexpr std::size_t kFewestCells = 4, kMostCells = 48;
  const auto& [start, end, rest] = times;
  const std::size_t both = start.size() + end.size() + 6;
  const std::size_t all = both + rest.size() + 2;
  const std::string good = "  " + screen.in(Style::good, rest);
  if (screen.columns() < both + kFewestCells) {
    screen.line("  " + start + " –\n  " + end + "\n" + good);
    return;
  }
  const bool isNarrow = screen.columns() < all + kFewestCells;
  const std::size_t room = screen.columns() - (isNarrow ? both : all);
  const std::size_t cells = std::min(room, kMostCells);
  screen.line("  " + start + " " + screen.in(Style::good, bar(program, now, cells)) + " " + end +
              (isNarrow ? "\n" : "") + good);
}

}  // namespace

std::string onAirLine(const GuideUpdate& update, Date now) {
  const LinearProgram& program = update.program;
  const auto next = following(update);
  const auto text = timeText(update);
  return printable(fmt::format("{}  {}  {}  {} – {}  {}{}", preciseClockText(now),
                               hasBegun(program, now) ? "on air" : "next", program.title,
                               text(program.startTime), text(program.endTime),
                               remainder(program, now),
                               next.empty() ? "" : "  then  " + next.front().second.title));
}

void drawOnAir(Screen& screen, const std::string& channel, const GuideUpdate& update, Date now) {
  const LinearProgram& program = update.program;
  const bool onAir = hasBegun(program, now);
  const auto text = [&](Style style, const std::string& words) {
    screen.line("  " + screen.in(style, cut(printable(words), screen.columns() - 3)));
  };
  screen.title(channel, preciseClockText(now));
  screen.heading(onAir ? "▶ On air" : "Next", onAir ? "" : remainder(program, now));
  text(Style::strong, program.title);
  text(Style::faint, program.subheading.value_or(""));
  const std::string start = timeText(update)(program.startTime);
  const std::string end = timeText(update)(program.endTime);
  const std::string rest = onAir ? remainder(program, now) : "";
  drawTimes(screen, program, now, {start, end, rest});
  auto next = following(update);
  if (next.empty()) return;
  next.resize(std::min(next.size(), kFollowing));
  Table table{.columns = {{.right = true}, {.least = 16}, {.least = 8, .optional = 1}, {}}};
  for (const auto& [day, item] : next) {
    table.rows.push_back({{timeText(update)(item.startTime)},
                          {item.title},
                          {item.subheading.value_or(""), Style::faint},
                          {day, Style::faint}});
  }
  screen.heading("Then");
  screen.table(table);
}

void OnAirView::show(const GuideUpdate& update) {
  update_ = update;
  if (moves()) return draw();
  print(onAirLine(update, presentClock()->now()) + "\n");
}

void OnAirView::draw() {
  Screen screen(standardOutput());
  drawOnAir(screen, channel_, *update_, presentClock()->now());
  const std::string over = lines_ > 0 ? fmt::format("\x1b[{}F\x1b[J", lines_) : "";
  lines_ = static_cast<std::size_t>(std::ranges::count(screen.text(), '\n'));
  print(over + screen.text());
}

}  // namespace orvo::tool
