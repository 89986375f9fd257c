#pragma once

#include <OrvoAPI/Configuration/Configuration.h>
#include <OrvoAPI/Linear/LinearProgramGuide.h>
#include <OrvoAPI/Linear/LinearProgramGuideMonitor.h>
#include <OrvoAPI/Linear/Lineup.h>
#include <OrvoAPI/Model/ContentItem.h>
#include <OrvoAPI/Model/ItemCollection.h>
#include <OrvoAPI/Model/Playlist.h>
#include <OrvoAPI/Model/SearchCollection.h>
#include <OrvoAPI/Model/VideoAdMetadata.h>
#include <OrvoAPI/Network/Session.h>
#include <OrvoAPI/Parsing/JSONValue.h>
#include <demo/Json.h>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace orvo::tool {

using demo::Json;

/// The JSON of the models: keys are the field names, enumerations their case name, an absent
/// optional null, tables objects keyed by case name, dates UTC text with milliseconds, URLs text,
/// durations seconds. The keys are an interface: scripts read them.

[[nodiscard]] inline Json toJson(const std::string& text) { return text; }
template <class T>
requires std::is_arithmetic_v<T>
[[nodiscard]] Json toJson(T value) { return value; }
template <NamedEnum E>
[[nodiscard]] Json toJson(E value) {
  return caseName(value);
}
[[nodiscard]] Json toJson(Date date);
[[nodiscard]] Json toJson(const URL& url);
[[nodiscard]] Json toJson(const JSONValue& value);
[[nodiscard]] Json toJson(const PagingMeta& meta);

[[nodiscard]] Json toJson(const CollectionReference& collection);
[[nodiscard]] Json toJson(const LineupReference& lineup);
[[nodiscard]] Json toJson(const ImageResource& resource);
[[nodiscard]] Json toJson(const ImageResources& resources);
[[nodiscard]] Json toJson(const VideoPreview& preview);
[[nodiscard]] Json toJson(const VideoPreviews& previews);
[[nodiscard]] Json toJson(const Status& status);
[[nodiscard]] Json toJson(const AppAction& action);
[[nodiscard]] Json toJson(const Video& video);
[[nodiscard]] Json toJson(const Page& page);
[[nodiscard]] Json toJson(const Page::Sibling& sibling);
[[nodiscard]] Json toJson(const ContentItem& item);
[[nodiscard]] Json toJson(const ItemCollection& collection);
[[nodiscard]] Json toJson(const SearchCollection& collection);
[[nodiscard]] Json toJson(const Playlist& playlist);
[[nodiscard]] Json toJson(const VideoAdMetadata& metadata);
[[nodiscard]] Json toJson(const VideoBeacon& beacon);
[[nodiscard]] Json toJson(const VideoSegment& segment);

[[nodiscard]] Json toJson(const Session& session);

[[nodiscard]] Json toJson(const Configuration& configuration);
[[nodiscard]] Json toJson(const Configuration::SystemView& view);
[[nodiscard]] Json toJson(const Configuration::UpcomingEvents& events);
[[nodiscard]] Json toJson(const Constants& constants);
/// `#rrggbb`
[[nodiscard]] Json toJson(const Color& color);
[[nodiscard]] Json toJson(const ColorResource& resource);
[[nodiscard]] Json toJson(const ColorPalette& palette);
[[nodiscard]] Json toJson(const Links& links);
[[nodiscard]] Json toJson(const LinearStream& stream);
[[nodiscard]] Json toJson(const Requirements& requirements);
[[nodiscard]] Json toJson(const Requirements::AppVersion& version);
[[nodiscard]] Json toJson(const Requirements::OSVersion& version);
[[nodiscard]] Json toJson(const Requirements::KillSwitch& killSwitch);
[[nodiscard]] Json toJson(const RatingPromptConfig& config);
[[nodiscard]] Json toJson(const DisplayAd& ad);

[[nodiscard]] Json toJson(const LineupTemplateImage& image);
[[nodiscard]] Json toJson(const LineupTemplateImages& images);
[[nodiscard]] Json toJson(const LineupSlot& slot);
[[nodiscard]] Json toJson(const LineupSlots& slots);
[[nodiscard]] Json toJson(const LineupHour& hour);
[[nodiscard]] Json toJson(const LineupDay& day);
[[nodiscard]] Json toJson(const Lineup& lineup);
[[nodiscard]] Json toJson(const LinearProgram& program);
[[nodiscard]] Json toJson(const LinearProgramGuide& guide);
[[nodiscard]] Json toJson(const GuideDay& day);
[[nodiscard]] Json toJson(const GuideUpdate& update);

/// `#rrggbb`
[[nodiscard]] std::string hexText(const Color& color);

/// `value` is not null.
template <class T>
[[nodiscard]] Json toJson(const Shared<T>& value) {
  return toJson(*value);
}

template <class T>
[[nodiscard]] Json toJson(const std::optional<T>& value) {
  return value ? toJson(*value) : Json();
}

template <class T>
[[nodiscard]] Json toJson(const std::vector<T>& list) {
  return Json::list(list, [](const T& element) { return toJson(element); });
}

/// The object with one more member for each value. `names` are separated by ", "; one that ends in
/// "_", because the language or a toolkit takes the word, loses it.
template <class... Values>
[[nodiscard]] Json withMembers(Json object, std::string_view names, const Values&... values) {
  const auto add = [&](const auto& value) {
    const std::string_view name = names.substr(0, names.find(','));
    names.remove_prefix(std::min(names.size(), name.size() + 2));
    object.set(std::string(name.substr(0, name.find_last_not_of('_') + 1)), toJson(value));
  };
  (add(values), ...);
  return object;
}

}  // namespace orvo::tool

/// The object with the fields of `record` after what it holds. All of them are named, in the order
/// of their declaration: with one too few or too many it does not compile, so that a new field
/// cannot be forgotten here.
#define ORVO_WITH_FIELDS(object, record, ...)                            \
  [&] {                                                                  \
    const auto& [__VA_ARGS__] = record;                                  \
    return ::orvo::tool::withMembers(object, #__VA_ARGS__, __VA_ARGS__); \
  }()
/// The fields of `record` as an object.
#define ORVO_FIELDS(record, ...) ORVO_WITH_FIELDS(::orvo::demo::Json::object(), record, __VA_ARGS__)
