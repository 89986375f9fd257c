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
#include <OrvoAPI/Parsing/JSONValue.h>
#include <demo/Json.h>

namespace orvo::tool {

using demo::Json;

/// The JSON of the models: keys are the field names, enumerations their case name, an absent
/// optional null, tables objects keyed by case name, dates UTC text with milliseconds, URLs text,
/// durations seconds. The keys are an interface: scripts read them.

[[nodiscard]] inline Json toJson(const std::string& text) { return text; }
[[nodiscard]] Json toJson(Date date);
[[nodiscard]] Json toJson(const URL& url);
[[nodiscard]] Json toJson(const JSONValue& value);
[[nodiscard]] Json toJson(const PagingMeta& meta);

[[nodiscard]] Json toJson(const CollectionReference& collection);
[[nodiscard]] Json toJson(const LineupReference& lineup);
[[nodiscard]] Json toJson(const ImageResources& resources);
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

[[nodiscard]] Json toJson(const Configuration& configuration);
[[nodiscard]] Json toJson(const Configuration::SystemView& view);
[[nodiscard]] Json toJson(const Constants& constants);
[[nodiscard]] Json toJson(const ColorResource& resource);
[[nodiscard]] Json toJson(const ColorPalette& palette);
[[nodiscard]] Json toJson(const Links& links);
[[nodiscard]] Json toJson(const Requirements::AppVersion& version);
[[nodiscard]] Json toJson(const Requirements::OSVersion& version);
[[nodiscard]] Json toJson(const Requirements::KillSwitch& killSwitch);
[[nodiscard]] Json toJson(const RatingPromptConfig& config);
[[nodiscard]] Json toJson(const DisplayAd& ad);

[[nodiscard]] Json toJson(const LineupSlot& slot);
[[nodiscard]] Json toJson(const LineupHour& hour);
[[nodiscard]] Json toJson(const LineupDay& day);
[[nodiscard]] Json toJson(const Lineup& lineup);
[[nodiscard]] Json toJson(const LinearProgram& program);
[[nodiscard]] Json toJson(const LinearProgramGuide& guide);
[[nodiscard]] Json toJson(const GuideDay& day);
[[nodiscard]] Json toJson(const GuideUpdate& update);

/// `#rrggbb`
[[nodiscard]] std::string hexText(const Color& color);

template <class T>
[[nodiscard]] Json toJson(const std::optional<T>& value) {
  return value ? toJson(*value) : Json();
}

template <class T>
[[nodiscard]] Json toJson(const std::vector<T>& list) {
  return Json::list(list, [](const T& element) { return toJson(element); });
}

}  // namespace orvo::tool
