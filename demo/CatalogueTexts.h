#pragma once

#include <array>
#include <string_view>

/// The names and texts of the invented channel. The rest of the catalogue is made of them.
namespace orvo::demo::texts {

struct Show {
  std::string_view slug, title, subheading;
  /// The title of an episode; "{}" stands for a place.
  std::string_view episode;
  int minutes;
  /// Its channel's place in `kChannels`.
  unsigned channel;
  std::string_view description;
};

inline constexpr std::array<Show, 12> kShows{{
    {"lantern-keepers", "The Lantern Keepers", "Lights at the edge of the map", "The Light at {}",
     44, 0, "Storms, lamps and long watches: a year with the last crews of the coast's lights."},
    {"nine-ferries", "Nine Ferries", "One crossing at a time", "Crossing to {}", 26, 0,
     "Nine boats, their crews, and the islands that cannot do without them."},
    {"slow-rivers", "Slow Rivers", "Downstream without a motor", "Downstream from {}", 52, 1,
     "Two friends, one raft and every weir in the country."},
    {"workbench", "Workbench", "Things made to be mended", "The Toolmaker of {}", 22, 2,
     "A visit to people who repair what others throw away, one object at a time."},
    {"hut-kitchen", "Kitchen Above the Clouds", "Mountain huts and their cooks", "Supper at {}", 30,
     1, "What the helicopter brings has to last a week. Recipes from above the tree line."},
    {"glass-and-fire", "Glass and Fire", "Twelve hundred degrees", "The Furnace of {}", 35, 2,
     "Glassmakers, potters and smiths, and the one mistake that teaches them everything."},
    {"night-trains", "Night Trains", "Sleepers, stations, stories", "Night Train to {}", 48, 4,
     "Who travels while the country sleeps? Conversations between two platforms."},
    {"small-orchestras", "Small Orchestras", "Four chairs and a draughty hall", "Rehearsal in {}",
     58, 3, "Village bands and chamber groups on the evening before it counts."},
    {"weather-room", "The Weather Room", "Tomorrow, explained", "Forecast for {}", 15, 1,
     "One place, one day, one forecast, and what the weather then really did."},
    {"herbarium", "Herbarium", "A plant and its people", "The Gardens of {}", 28, 1,
     "Each garden keeps one plant that grows nowhere else, and somebody who looks after it."},
    {"night-market", "夜の市場", "After the last train", "夜の市場: {}", 24, 4,
     "屋台 and their regulars: what is cooked between midnight and four."},
    // The tilde is a combining character, as some editors write it.
    {"cafe-senales", "Café Sen\u0303ales", "A table for two strangers", "Table for Two in {}", 33,
     3, "Two people who have never met, one song each, and a pot of coffee."},
}};

inline constexpr std::array<std::string_view, 20> kPlaces{
    "Aldermere",    "Brannoch", "Corvale",   "Dunmarrow",    "Eskerfield",
    "Fern Hollow",  "Garrowby", "Hartsease", "Ilverstone",   "Juniper Bay",
    "Kestrelmoor",  "Lowmarsh", "Merrowick", "Nordle Point", "Ostermoor",
    "Pellin Reach", "Quarrow",  "Rushenby",  "Saltings",     "Thornholm"};

struct Film {
  std::string_view slug, title, subheading;
  int minutes;
  std::string_view description;
};

inline constexpr std::array<Film, 8> kFilms{{
    {"long-thaw", "The Long Thaw", "A winter that would not end", 96,
     "Snow closes the pass in October. In May it is still there, and so are they."},
    {"salt-road", "Salt Road", "Forty days on foot", 88,
     "Mules, a map with a hole in it, and the oldest trade route of the coast."},
    {"forty-bells", "Forty Bells", "How a valley got its sound back", 74,
     "A founder's last commission, and the granddaughter who has to finish it."},
    {"quiet-engine", "The Quiet Engine", "A race nobody heard", 102,
     "Three workshops build the first boat that leaves no wake."},
    {"letters-mainland", "Letters to the Mainland", "A correspondence in wind and ink", 81,
     "The postmistress of an island reads what was never sent."},
    {"harbour-in-winter", "A Harbour in Winter", "The season without visitors", 67,
     "What a seaside town does when the last hotel turns off its sign."},
    {"everything-floats", "Everything That Floats", "The raft builders of Lowmarsh", 79,
     "A competition, a flood, and a very bad idea that holds water."},
    {"second-violin", "Second Violin", "Twenty years beside the spotlight", 93,
     "The musician next to the soloist tells her side of it."},
}};

struct Channel {
  std::string_view slug, name, subheading;
};

inline constexpr std::array<Channel, 5> kChannels{{
    {"one", "Orvo One", "The channel for everybody"},
    {"outdoors", "Orvo Outdoors", "Rivers, ridges, weather"},
    {"workshop", "Orvo Workshop", "Made by hand"},
    {"music", "Orvo Music", "Played by people"},
    {"night", "Orvo 夜", "For those who are still awake"},
}};

inline constexpr std::array<Channel, 2> kSubchannels{{
    {"one-extra", "Orvo One Extra", "More of everything"},
    {"outdoors-water", "Orvo Outdoors: Water", "Boats only"},
}};

struct Event {
  std::string_view slug, title, subheading;
  int hoursFromNow;
  int minutes;
  /// The state that the newsroom has set by hand; by default the clock decides.
  std::string_view code;
};

inline constexpr std::array<Event, 9> kEvents{{
    {"harbour-merrowick", "Harbour Days: Merrowick", "The quay, live", -1, 240, ""},
    {"harbour-juniper-bay", "Harbour Days: Juniper Bay", "Tall ships at noon", 26, 240, ""},
    {"harbour-saltings", "Harbour Days: Saltings", "The last leg", 74, 300, ""},
    {"lantern-night", "Lantern Night", "A thousand lights on the river", 122, 180, "unconfirmed"},
    {"regatta-lowmarsh", "Regatta at Lowmarsh", "Eights and fours", -50, 150, ""},
    {"orchestras-live", "Small Orchestras Live", "From the draughty hall", 2, 90, "delayed"},
    {"open-workshops", "Open Workshop Day", "Every door in the street", 8, 360, "canceled"},
    {"first-snow-run", "First Snow Run", "Down before breakfast", -20, 45, "trim"},
    {"balloon-morning", "Balloon Morning", "Forty envelopes over Corvale", 170, 120, "unknown"},
}};

/// The stops of "Harbour Days"; their live programmes are the first events.
inline constexpr std::array<std::string_view, 3> kHarbourStops{"Merrowick", "Juniper Bay",
                                                               "Saltings"};

}  // namespace orvo::demo::texts
