#include <OrvoAPI/Platform/Calendar.h>
#include <tool/LineupView.h>
#include <tool/Text.h>
#include <tool/TimeAxis.h>
#include <tool/Wording.h>

#include <algorithm>
#include <array>
#include <map>
#include <span>

namespace orvo::tool {

namespace {

using std::chrono::hours;
using std::chrono::milliseconds;

struct Channel {
  std::string name;
  std::vector<const LineupSlot*> slots;
};

std::string countOf(std::size_t count, const std::string& noun) {
  return countText(static_cast<std::int64_t>(count), noun);
}

/// The channels in their order; those that share a place, in the order of their identifiers.
std::vector<Channel> channelsOf(const LineupSlots& slots) {
  std::map<std::pair<std::int64_t, std::string_view>, Channel> byPlace;
  for (const LineupSlot& slot : slots) {
    Channel& channel = byPlace[{slot.channelOrder, slot.channelID}];
    channel.name = slot.channelName;
    channel.slots.push_back(&slot);
  }
  std::vector<Channel> channels;
  for (auto& [place, channel] : byPlace) channels.push_back(std::move(channel));
  return channels;
}

Style styleOf(const LineupSlot& slot, Date now) {
  if (slot.end <= now) return Style::faint;
  return slot.start <= now ? Style::marked : Style::plain;
}

/// A line of the grid.
struct GridRow {
  std::string name;
  /// In the order of their starts and of their ends: none lies within another.
  std::vector<TimeBox> boxes{};

  /// Those that show on the axis.
  [[nodiscard]] std::span<const TimeBox> on(const TimeAxis& axis) const {
    const auto first = std::ranges::upper_bound(boxes, axis.start(), {}, &TimeBox::end);
    auto last = first;
    // A box that reaches the end hides all that begin after it.
    while (last != boxes.end() && last->start < axis.end()) {
      if (last++->end >= axis.end()) break;
    }
    return {first, last};
  }
};

GridRow gridRow(const Channel& channel, std::size_t columns, Date now) {
  std::vector<const LineupSlot*> slots = channel.slots;
  std::ranges::stable_sort(slots, {}, &LineupSlot::start);
  GridRow row{.name = printable(channel.name)};
  for (const LineupSlot* slot : slots) {
    if (!row.boxes.empty() && slot->end <= row.boxes.back().end) continue;
    row.boxes.push_back(
        {slot->start, slot->end, cut(printable(slot->title), columns), styleOf(*slot, now)});
  }
  return row;
}

/// As many hours as can be read in that many columns, of those that divide a day evenly.
int hoursPerBlock(std::size_t columns) {
  constexpr std::size_t kColumnsPerHour = 20;
  constexpr std::array kChoices{12, 8, 6, 4, 3, 2};
  for (const int choice : kChoices) {
    if (static_cast<std::size_t>(choice) * kColumnsPerHour <= columns + kColumnsPerHour / 2) {
      return choice;
    }
  }
  return 1;
}

/// Some hours of all channels, one line each; nothing when none has anything then.
void drawBlock(Screen& screen, const std::vector<GridRow>& rows, const TimeAxis& axis,
               std::size_t nameWidth, Date now) {
  const bool any =
      std::ranges::any_of(rows, [&](const GridRow& row) { return !row.on(axis).empty(); });
  if (!any) return;
  const std::string margin(nameWidth + 3, ' ');
  screen.blank();
  if (axis.start() <= now && now < axis.end()) {
    // Near the right edge the word stands on the other side of the mark.
    constexpr std::size_t kWord = 4;
    const std::size_t column = axis.column(now);
    const bool isLeft = column >= kWord && column + kWord >= axis.columns();
    screen.line(margin + std::string(isLeft ? column - kWord : column, ' ') +
                screen.in(Style::good, isLeft ? "now ▼" : "▼ now"));
  }
  screen.line(margin + screen.in(Style::faint, axis.labels()));
  for (const GridRow& row : rows) {
    screen.line("  " + screen.in(Style::strong, padded(row.name, nameWidth)) + " " +
                boxLine(screen, axis, row.on(axis)));
  }
}

/// The days that a grid shows: all, or a fortnight from today on.
std::span<const LineupDay> shownDays(const std::vector<LineupDay>& days, Date now) {
  constexpr std::size_t kMost = 14;
  if (days.size() <= kMost) return days;
  const auto next = std::ranges::upper_bound(days, now, {}, &LineupDay::startTime);
  const auto today = static_cast<std::size_t>(next - days.begin()) - (next != days.begin() ? 1 : 0);
  return std::span(days).subspan(std::min(today, days.size() - kMost), kMost);
}

void drawGrid(Screen& screen, const Lineup& lineup, std::vector<Channel> channels, Date now) {
  constexpr std::size_t kMostChannels = 50;
  constexpr std::size_t kWidestName = 20;
  const std::size_t all = channels.size();
  channels.resize(std::min(all, kMostChannels));
  std::size_t nameWidth = 0;
  for (const Channel& channel : channels) {
    nameWidth = std::max(nameWidth, displayWidth(printable(channel.name)));
  }
  nameWidth = std::min({nameWidth, kWidestName, screen.columns() / 4});
  const std::size_t columns = screen.columns() - nameWidth - 4;
  const hours block(hoursPerBlock(columns));
  std::vector<GridRow> rows;
  for (const Channel& channel : channels) rows.push_back(gridRow(channel, columns, now));
  const auto days = shownDays(lineup.days, now);
  const auto leftOut = [](std::size_t count, const char* noun) {
    return count > 0 ? countOf(count, noun) + " left out" : "";
  };
  screen.paragraph(joined({leftOut(lineup.days.size() - days.size(), "day"),
                           leftOut(all - rows.size(), "channel")}),
                   Style::warning);
  Calendar calendar;
  for (const LineupDay& day : days) {
    screen.heading(dayText(day.startTime));
    // A day on which the clocks change has 23 or 25 hours.
    const Date end = calendar.addingDays(day.startTime, 1);
    for (Date start = day.startTime; start < end; start = start + block) {
      const milliseconds span = std::min<milliseconds>(block, end - start);
      drawBlock(screen, rows, TimeAxis(start, span, columns), nameWidth, now);
    }
  }
}

void drawList(Screen& screen, const Lineup& lineup, Date now) {
  std::vector<Section> days;
  for (const LineupDay& day : lineup.days) {
    days.push_back({.heading = dayText(day.startTime)});
    for (const LineupHour& hour : day.hours) {
      for (const LineupSlot& slot : hour.slots_) {
        const bool onAir = slot.start <= now && now < slot.end;
        const Style style = slot.end <= now ? Style::faint : Style::plain;
        const auto length = static_cast<double>((slot.end - slot.start).count()) / 1000;
        days.back().rows.push_back({onAir ? Cell{"▶", Style::good} : Cell{},
                                    {clockText(slot.start), style},
                                    {slot.title, onAir ? Style::strong : style},
                                    {durationText(length), style},
                                    {slot.channelName, Style::faint}});
      }
    }
  }
  screen.tables({{}, {}, {.least = 20}, {.right = true}, {.least = 20}}, days);
}

}  // namespace

void drawLineup(Screen& screen, const Lineup& lineup, std::optional<LineupDisplayKind> display,
                Date now) {
  std::vector<Channel> channels = channelsOf(lineup.slots_);
  screen.title("Lineup",
               joined({countOf(lineup.slots_.size(), "slot"), countOf(channels.size(), "channel"),
                       countOf(lineup.days.size(), "day")}));
  const bool grid = display ? *display == LineupDisplayKind::grid : channels.size() > 1;
  grid ? drawGrid(screen, lineup, std::move(channels), now) : drawList(screen, lineup, now);
}

}  // namespace orvo::tool
