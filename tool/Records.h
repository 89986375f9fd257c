#pragma once

#include <OrvoAPI/Configuration/Configuration.h>
#include <OrvoAPI/Linear/LinearProgramGuide.h>
#include <OrvoAPI/Linear/Lineup.h>
#include <OrvoAPI/Model/ItemCollection.h>
#include <OrvoAPI/Model/Playlist.h>
#include <OrvoAPI/Model/SearchCollection.h>
#include <tool/ModelJson.h>

#include <functional>
#include <span>
#include <string>
#include <vector>

namespace orvo::tool {

/// What a list shows of one of its elements.
struct Record {
  /// One for each field of the list.
  std::vector<Json> values;
  /// The whole element. It refers to the list.
  std::function<Json()> model;
};
using Records = std::vector<Record>;

/// The fields of a kind of list, in an order that stays: scripts count on it.
using Fields = std::span<const char* const>;

inline constexpr const char* kItemFields[] = {"id",     "type",  "kind", "title",   "subheading",
                                              "status", "start", "end",  "duration"};
/// With the category that each was found in.
inline constexpr const char* kFoundFields[] = {"id",     "type",  "kind", "title",    "subheading",
                                               "status", "start", "end",  "duration", "category"};
inline constexpr const char* kProgramFields[] = {"id", "title", "subheading", "start", "end"};
inline constexpr const char* kSlotFields[] = {"channelID", "channelName", "title", "start", "end"};
inline constexpr const char* kViewFields[] = {"id", "name", "label"};
inline constexpr const char* kTextFields[] = {"text"};
inline constexpr const char* kColorFields[] = {"name", "color", "transform"};

/// The elements of a list, which has to outlive them.
[[nodiscard]] Records recordsOf(const ItemCollection& collection);
[[nodiscard]] Records recordsOf(const Playlist& playlist);
[[nodiscard]] Records recordsOf(const SearchCollection& collection);
[[nodiscard]] Records recordsOf(const std::vector<SearchCollection>& results);
[[nodiscard]] Records recordsOf(const LinearProgramGuide& guide);
[[nodiscard]] Records recordsOf(const Lineup& lineup);
[[nodiscard]] Records recordsOf(const std::vector<Configuration::SystemView>& views);
[[nodiscard]] Records recordsOf(const std::vector<std::string>& texts);
[[nodiscard]] Records recordsOf(const ColorPalette& palette);

}  // namespace orvo::tool
