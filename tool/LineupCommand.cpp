#include <OrvoAPI/Platform/Calendar.h>
#include <tool/Arguments.h>
#include <tool/Commands.h>
#include <tool/Text.h>
#include <tool/TimeAxis.h>
#include <tool/Wording.h>

#include <algorithm>
#include <array>
#include <map>

namespace orvo::tool {

namespace {

using std::chrono::hours;
using std::chrono::milliseconds;

struct Written {
  std::string url{};
  std::string display{};
};

struct Channel {
  std::string name;
  std::vector<const LineupSlot*> slots;
};

/// The channels in their order; of several with one place, in the order of their identifiers.
std::vector<Channel> channelsOf(const LineupSlots& slots) {
  std::map<std::pair<std::int64_t, std::string>, Channel> byPlace;
  for (const LineupSlot& slot : slots) {
    Channel& channel = byPlace[{slot.channelOrder, slot.channelID}];
    channel.name = slot.channelName;
    channel.slots.push_back(&slot);
  }
  std::vector<Channel> channels;
  for (auto& [place, channel] : byPlace) {
    std::stable_sort(channel.slots.begin(), channel.slots.end(),
                     [](const auto* lhs, const auto* rhs) { return lhs->start < rhs->start; });
    channels.push_back(std::move(channel));
  }
  return channels;
}

Style styleOf(const LineupSlot& slot, Date now) {
  if (slot.end <= now) return Style::faint;
  return slot.start <= now ? Style::marked : Style::plain;
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
void drawBlock(Screen& screen, const std::vector<Channel>& channels, const TimeAxis& axis,
               std::size_t nameWidth, Date now) {
  std::vector<std::string> lines;
  bool any = false;
  for (const Channel& channel : channels) {
    std::vector<TimeBox> boxes;
    for (const LineupSlot* slot : channel.slots) {
      if (slot->end <= axis.start() || slot->start >= axis.end()) continue;
      boxes.push_back({slot->start, slot->end, slot->title, styleOf(*slot, now)});
    }
    any = any || !boxes.empty();
    lines.push_back("  " + screen.in(Style::strong, padded(printable(channel.name), nameWidth)) +
                    " " + boxLine(screen, axis, boxes));
  }
  if (!any) return;
  const std::string margin(nameWidth + 3, ' ');
  screen.blank();
  if (axis.start() <= now && now < axis.end()) {
    screen.line(margin + std::string(axis.column(now), ' ') + screen.in(Style::good, "▼ now"));
  }
  screen.line(margin + screen.in(Style::faint, axis.labels()));
  for (const std::string& line : lines) screen.line(line);
}

void drawGrid(Screen& screen, const Lineup& lineup, Date now) {
  constexpr std::size_t kWidestName = 20;
  const std::vector<Channel> channels = channelsOf(lineup.slots_);
  std::size_t nameWidth = 0;
  for (const Channel& channel : channels) {
    nameWidth = std::max(nameWidth, displayWidth(printable(channel.name)));
  }
  nameWidth = std::min({nameWidth, kWidestName, screen.columns() / 4});
  const std::size_t columns = screen.columns() - nameWidth - 4;
  const hours block(hoursPerBlock(columns));
  Calendar calendar;
  for (const LineupDay& day : lineup.days) {
    screen.heading(dayText(day.startTime));
    // A day on which clocks change has 23 or 25 hours.
    const Date end = calendar.addingDays(day.startTime, 1);
    for (Date start = day.startTime; start < end; start = start + block) {
      const milliseconds span = std::min<milliseconds>(block, end - start);
      drawBlock(screen, channels, TimeAxis(start, span, columns), nameWidth, now);
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

void drawLineup(Screen& screen, const Lineup& lineup, const std::string& display) {
  const Date now = Clock::system()->now();
  const std::size_t channels = channelsOf(lineup.slots_).size();
  const auto count = [](std::size_t value) { return static_cast<std::int64_t>(value); };
  screen.title("Lineup", joined({countText(count(lineup.slots_.size()), "slot"),
                                 countText(count(channels), "channel"),
                                 countText(count(lineup.days.size()), "day")}));
  // The document does not say how it is meant; that is known to what refers to it.
  const bool grid = display.empty() ? channels > 1 : display == "grid";
  grid ? drawGrid(screen, lineup, now) : drawList(screen, lineup, now);
}

int runLineup(Tool& tool, const Written& written) {
  return fetchAndAnswer(
      tool, "fetching the lineup",
      [&](const Context& context) { return context.fetchLineup(*absoluteURL(written.url)); },
      [&](Screen& screen, const Lineup& lineup) { drawLineup(screen, lineup, written.display); });
}

}  // namespace

void addLineupCommand(Commands& commands) {
  const auto written = std::make_shared<Written>();
  CLI::App* command = commands.add("lineup", "A schedule that a video or page refers to",
                                   [written](Tool& tool) { return runLineup(tool, *written); });
  command->add_option("URL", written->url)->required()->check(isAbsoluteURL());
  command->add_option("--display", written->display, "Draw a grid of channels, or one list")
      ->check(CLI::IsMember({"grid", "lineup"}));
}

}  // namespace orvo::tool
