#include <OrvoAPI/Configuration/Configuration.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>
#include <OrvoAPI/Parsing/JSONParseError.h>

#include <string_view>
#include <utility>

namespace orvo {
namespace {

constexpr detail::TextIndex kConfigurationKeys({"nav", "colors", "links", "linear_stream_id", "tv",
                                                "app_update", "device_update", "end_of_life",
                                                "user_rating_prompt", "display_ads",
                                                "upcoming_events"});
using Members = detail::JSONMembers<kConfigurationKeys>;

/// What `Parser` makes of the section, or nothing when it is missing or cannot be read.
template <class Parser>
auto section(const detail::JSONMember& member) {
  using Record = typename decltype(Parser::parse(std::declval<const JSONObject&>()))::Value;
  std::optional<Record> record;
  if (const auto object = member.object()) {
    auto parsed = Parser::parse(*object);
    if (Record* found = parsed.value()) {
      record = std::move(*found);
    } else {
      detail::drop(*object);
    }
  }
  return record;
}

/// The views of "nav" that the client knows, or nothing unless it is an object of objects.
std::optional<std::vector<Configuration::SystemView>> systemViews(
    const detail::JSONMember& member) {
  static constexpr detail::TextIndex kViewKeys({"label", "id"});
  const auto nav = member.requiredObject();
  if (!nav) return std::nullopt;
  for (const auto& [name, value] : *nav) {
    if (!value.object()) return std::nullopt;
  }
  std::vector<Configuration::SystemView> views;
  for (const std::string_view name : {"discover", "calendar", "channels"}) {
    const auto view = nav->object(name);
    if (!view) continue;
    const detail::JSONMembers<kViewKeys> members(*view);
    detail::RequiredMembers required("SystemView");
    const auto label = required.text(members["label"]);
    const auto id = required.text(members["id"]);
    if (required.failed()) {
      required.drop(*view);
    } else {
      views.push_back({std::string(name), std::string(label), std::string(id)});
    }
  }
  return views;
}

Requirements requirements(const Members& members) {
  return {
      .appVersion =
          section<AppVersionParser>(members["app_update"]).value_or(Requirements::AppVersion{}),
      .osVersion =
          section<OSVersionParser>(members["device_update"]).value_or(Requirements::OSVersion{}),
      .killSwitch =
          section<KillSwitchParser>(members["end_of_life"]).value_or(Requirements::KillSwitch{})};
}

Configuration::UpcomingEvents upcomingEvents(const detail::JSONMember& member) {
  static constexpr detail::TextIndex kEventsKeys({"label", "id"});
  Configuration::UpcomingEvents events;
  if (const auto object = member.object()) {
    const detail::JSONMembers<kEventsKeys> members(*object);
    if (const auto label = members["label"].string()) events.label = *label;
    if (const auto id = members["id"].string()) events.id = *id;
  }
  return events;
}

/// The stream with the texts of "tv", or nothing unless all three are there.
std::optional<LinearStream> linearStream(const detail::JSONMember& member, std::string_view id) {
  static constexpr detail::TextIndex kStreamKeys({"label", "description", "icon"});
  const auto tv = member.requiredObject();
  if (!tv) return std::nullopt;
  const detail::JSONMembers<kStreamKeys> members(*tv);
  const auto label = members["label"].string();
  const auto description = members["description"].string();
  const auto icon = members["icon"].string();
  if (!label || !description || !icon) return std::nullopt;
  return LinearStream{std::string(id), std::string(*label), std::string(*description),
                      std::string(*icon)};
}

}  // namespace

Result<Configuration> ConfigurationParser::parse(const JSONObject& json, Environment environment) {
  // A section's own error is discarded: what counts is which section failed.
  constexpr std::string_view kType = "Configuration";
  const Members members(json);
  auto views = systemViews(members["nav"]);
  if (!views) return unableToParse(kType, "nav");
  const auto colors = members["colors"].object();
  if (!colors) return unableToParse(kType, "colors");
  auto links = section<LinksParser>(members["links"]);
  if (!links) return unableToParse(kType, "links");
  auto constants = ConstantsParser::parse(json);
  if (constants.failed()) return unableToParse(kType, "constants");
  // The constants hold it too, so that this can only fail if they ever cease to.
  const auto linearStreamID = members["linear_stream_id"].string();
  if (!linearStreamID) return unableToParse(kType, "linear_stream_id");
  auto stream = linearStream(members["tv"], *linearStreamID);
  if (!stream) return unableToParse(kType, "linear_stream");

  return Configuration{
      .systemViews = *std::move(views),
      .constants = std::move(*constants.value()),
      .colorPalette = ColorPaletteParser::parse(*colors),
      .links = *std::move(links),
      .requirements = requirements(members),
      .ratingPromptConfig = section<RatingPromptConfigParser>(members["user_rating_prompt"])
                                .value_or(RatingPromptConfig::defaultConfig()),
      .displayAd = section<DisplayAdParser>(members["display_ads"]),
      .linearStream = *std::move(stream),
      .upcomingEvents = upcomingEvents(members["upcoming_events"]),
      .environment = environment};
}

}  // namespace orvo
