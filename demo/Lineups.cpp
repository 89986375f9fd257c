#include <demo/CatalogueTexts.h>
#include <demo/Lineups.h>

#include <array>

namespace orvo::demo {

namespace {

using std::chrono::hours;
using std::chrono::minutes;

/// Makes the slots of one channel, one after the other.
class ChannelSlots {
 public:
  ChannelSlots(const Catalogue& catalogue, const Addresses& addresses, std::size_t channel)
      : catalogue_(catalogue), addresses_(addresses), channel_(channel) {}

  /// Fills the time between with programmes.
  void fill(Json& slots, Instant from, Instant until) {
    static constexpr std::array<int, 7> kMinutes{60, 30, 95, 25, 30, 90, 150};
    std::size_t number = channel_ * 3;
    while (from < until) {
      const Instant end = from + minutes(kMinutes[number % kMinutes.size()]);
      slots.push(slot(number, withMilliseconds(from), withMilliseconds(end)));
      from = end;
      ++number;
    }
  }

  Json slot(std::size_t number, const std::string& start, const std::string& end) const {
    const auto& episodes = catalogue_.episodes();
    const Product& product = *episodes[(number * 23 + channel_ * 41) % episodes.size()];
    const texts::Channel& channel = texts::kChannels[channel_];
    const auto artwork = [&](const std::string& key) {
      return Json::object({{"template", addresses_.resources() + "lineup/{c_transform}/" +
                                            product.id + "/" + key}});
    };
    return Json::object(
        {{"start", start},
         {"end", end},
         {"title", product.title},
         {"channel", Json::object({{"id", std::string("channel-").append(channel.slug)},
                                   {"name", channel.name},
                                   {"order", channel_ + 1}})},
         {"images", Json::object({{"orvo_display_art_landscape", artwork("landscape")},
                                  {"icon", artwork("icon")}})}});
  }

 private:
  const Catalogue& catalogue_;
  const Addresses& addresses_;
  std::size_t channel_;
};

/// 01:00 UTC on the last Sunday of the month.
Instant lastSunday(std::chrono::year_month month) {
  return std::chrono::sys_days(month / std::chrono::Sunday[std::chrono::last]) + hours(1);
}

/// Half-hour slots in the local time of the place, with its zone in every date.
void fillClockChange(Json& slots, const ChannelSlots& channel, Instant change) {
  const std::chrono::year_month_day date(std::chrono::floor<std::chrono::days>(change));
  const bool toSummer = date.month() == std::chrono::March;
  const auto written = [&](Instant instant) {
    return withColonZone(instant, hours((instant < change) == toSummer ? 1 : 2));
  };
  std::size_t number = 0;
  for (Instant start = change - hours(31); start < change + hours(29); start += minutes(30)) {
    slots.push(channel.slot(number++, written(start), written(start + minutes(30))));
  }
}

}  // namespace

Instant nextClockChange(Instant now) {
  const std::chrono::year_month_day today(std::chrono::floor<std::chrono::days>(now));
  for (std::chrono::year year = today.year();; ++year) {
    for (const auto month : {std::chrono::March, std::chrono::October}) {
      const Instant change = lastSunday(year / month);
      if (change > now) return change;
    }
  }
}

std::optional<Json> lineup(std::string_view name, const Catalogue& catalogue,
                           const Addresses& addresses, Instant now) {
  const Instant today = std::chrono::floor<std::chrono::days>(now);
  Json slots = Json::array();
  if (name == "grid") {
    for (std::size_t channel = 0; channel < texts::kChannels.size(); ++channel) {
      ChannelSlots(catalogue, addresses, channel).fill(slots, today, today + hours(72));
    }
  } else if (name == "list") {
    ChannelSlots(catalogue, addresses, 0).fill(slots, today, today + hours(120));
  } else if (name == "clock-change") {
    fillClockChange(slots, ChannelSlots(catalogue, addresses, 0), nextClockChange(now));
  } else {
    return std::nullopt;
  }
  return slots;
}

}  // namespace orvo::demo
