#include <OrvoAPI/Configuration/Configuration.h>
#include <OrvoAPI/Parsing/JSONParseError.h>

#include <string_view>
#include <utility>

namespace orvo {
namespace {

/// What `Parser` makes of the section, or nothing when it is missing or cannot be read.
template <class Parser>
auto section(const JSONObject& json, std::string_view key) {
  using Record = typename decltype(Parser::parse(json))::Value;
  std::optional<Record> record;
  if (const auto object = json.object(key)) {
    auto parsed = Parser::parse(*object);
    if (Record* found = parsed.value()) record = std::move(*found);
  }
  return record;
}

/// The views of "nav" that the client knows, or nothing unless it is an object of objects.
std::optional<std::vector<Configuration::SystemView>> systemViews(const JSONObject& json) {
  const auto nav = json.object("nav");
  if (!nav) return std::nullopt;
  for (const auto& [name, value] : *nav) {
    if (!value.object()) return std::nullopt;
  }
  std::vector<Configuration::SystemView> views;
  for (const std::string_view name : {"discover", "calendar", "channels"}) {
    const auto view = nav->object(name);
    const auto label = view ? view->string("label") : std::nullopt;
    const auto id = view ? view->string("id") : std::nullopt;
    if (label && id) {
      views.push_back({std::string(name), std::string(*label), std::string(*id)});
    }
  }
  return views;
}

Requirements requirements(const JSONObject& json) {
  return {.appVersion =
              section<AppVersionParser>(json, "app_update").value_or(Requirements::AppVersion{}),
          .osVersion =
              section<OSVersionParser>(json, "device_update").value_or(Requirements::OSVersion{}),
          .killSwitch =
              section<KillSwitchParser>(json, "end_of_life").value_or(Requirements::KillSwitch{})};
}

Configuration::UpcomingEvents upcomingEvents(const JSONObject& json) {
  Configuration::UpcomingEvents events;
  if (const auto object = json.object("upcoming_events")) {
    if (const auto label = object->string("label")) events.label = *label;
    if (const auto id = object->string("id")) events.id = *id;
  }
  return events;
}

/// The stream with the texts of "tv", or nothing unless all three are there.
std::optional<LinearStream> linearStream(const JSONObject& json, std::string_view id) {
  const auto tv = json.object("tv");
  if (!tv) return std::nullopt;
  const auto label = tv->string("label");
  const auto description = tv->string("description");
  const auto icon = tv->string("icon");
  if (!label || !description || !icon) return std::nullopt;
  return LinearStream{std::string(id), std::string(*label), std::string(*description),
                      std::string(*icon)};
}

}  // namespace

Result<Configuration> ConfigurationParser::parse(const JSONObject& json, Environment environment) {
  // A section's own error is discarded: what counts is which section failed.
  constexpr std::string_view kType = "Configuration";
  auto views = systemViews(json);
  if (!views) return unableToParse(kType, "nav");
  const auto colors = json.object("colors");
  if (!colors) return unableToParse(kType, "colors");
  auto links = section<LinksParser>(json, "links");
  if (!links) return unableToParse(kType, "links");
  auto constants = ConstantsParser::parse(json);
  if (constants.failed()) return unableToParse(kType, "constants");
  // The constants hold it too, so that this can only fail if they once cease to.
  const auto linearStreamID = json.string("linear_stream_id");
  if (!linearStreamID) return unableToParse(kType, "linear_stream_id");
  auto stream = linearStream(json, *linearStreamID);
  if (!stream) return unableToParse(kType, "linear_stream");

  return Configuration{
      .systemViews = *std::move(views),
      .constants = std::move(*constants.value()),
      .colorPalette = ColorPaletteParser::parse(*colors),
      .links = *std::move(links),
      .requirements = requirements(json),
      .ratingPromptConfig = section<RatingPromptConfigParser>(json, "user_rating_prompt")
                                .value_or(RatingPromptConfig::defaultConfig()),
      .displayAd = section<DisplayAdParser>(json, "display_ads"),
      .linearStream = *std::move(stream),
      .upcomingEvents = upcomingEvents(json),
      .environment = environment};
}

}  // namespace orvo
