#include <OrvoAPI/Parsing/DateFormatter.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <tool/ModelJson.h>
#include <tool/Parse.h>

#include <algorithm>

namespace orvo::tool {

namespace {

using Arguments = ParseArguments;
using Outcome = Result<Json>;

/// Reads the body as an object, runs the parser, which may fail or not, and turns what it returns
/// into JSON.
template <class Parse>
Outcome object(std::string_view body, Parse parse) {
  return JSONDataParser::object(Data(body)).map(parse).map([](const auto& model) {
    return toJson(model);
  });
}

/// The same for the parsers that need nothing but the document.
template <class Parser>
Outcome plain(std::string_view body, const Arguments&) {
  return object(body, [](const JSONObject& json) { return Parser::parse(json); });
}

Outcome anyObject(std::string_view body, const Arguments&) {
  return object(body, [](const JSONObject& json) { return json.asValue(); });
}

Outcome array(std::string_view body, const Arguments&) {
  return JSONDataParser::array(Data(body)).map([](const JSONObjects& objects) {
    Json list = Json::array();
    for (const JSONObject& element : objects) list.push(toJson(element.asValue()));
    return list;
  });
}

Outcome stringArray(std::string_view body, const Arguments&) {
  return JSONDataParser::stringArray(Data(body)).map([](const std::vector<std::string>& texts) {
    return Json::list(texts, [](const std::string& text) { return Json(text); });
  });
}

Outcome session(std::string_view body, const Arguments&) {
  return JSONDataParser::object(Data(body)).map(SessionParser::parse).map([](const Session& model) {
    return toJson(model);
  });
}

Outcome configuration(std::string_view body, const Arguments& arguments) {
  return object(body, [&](const JSONObject& json) {
    return ConfigurationParser::parse(json, arguments.environment);
  });
}

Outcome video(std::string_view body, const Arguments& arguments) {
  return object(
      body, [&](const JSONObject& json) { return VideoParser::parse(json, arguments.playlistID); });
}

Outcome contentItem(std::string_view body, const Arguments& arguments) {
  return object(body, [&](const JSONObject& json) {
    return ContentItemParser::parse(json, arguments.collectionID);
  });
}

Outcome searchCollection(std::string_view body, const Arguments& arguments) {
  return object(body, [&](const JSONObject& json) {
    return SearchCollectionParser::parse(json, arguments.query);
  });
}

Outcome searchResults(std::string_view body, const Arguments& arguments) {
  return object(body, [&](const JSONObject& json) {
    return SearchResultsParser::parse(json, arguments.query);
  });
}

Outcome playlist(std::string_view body, const Arguments& arguments) {
  return object(body, [&](const JSONObject& json) {
    return PlaylistParser::parse(json, arguments.include ? &*arguments.include : nullptr);
  });
}

Outcome systemView(std::string_view body, const Arguments& arguments) {
  return object(
      body, [&](const JSONObject& json) { return SystemViewParser::parse(json, arguments.label); });
}

Outcome lineup(std::string_view body, const Arguments&) {
  return JSONDataParser::array(Data(body)).map([](const JSONObjects& slots) {
    return toJson(LineupParser::parse(slots));
  });
}

Outcome linearProgramGuide(std::string_view body, const Arguments& arguments) {
  return object(body, [&](const JSONObject& json) {
    return LinearProgramGuideParser::parse(json, arguments.start, arguments.end);
  });
}

/// Bare text comes with the line end that editors and shells append to it.
std::string_view withoutLineEnd(std::string_view text) {
  if (text.ends_with('\n')) text.remove_suffix(1);
  if (text.ends_with('\r')) text.remove_suffix(1);
  return text;
}

Outcome eventDate(std::string_view body, const Arguments&) {
  return fromEventDate(withoutLineEnd(body)).map([](Date date) { return toJson(date); });
}

Outcome iso8601Date(std::string_view body, const Arguments&) {
  return from8601(withoutLineEnd(body)).map([](Date date) { return toJson(date); });
}

Outcome resourceDate(std::string_view body, const Arguments&) {
  return toJson(resourceTime(withoutLineEnd(body)));
}

struct Kind {
  std::string_view name;
  Outcome (*parse)(std::string_view, const Arguments&);
};

constexpr Kind kKinds[] = {
    {"object", anyObject},
    {"array", array},
    {"string-array", stringArray},
    {"session", session},
    {"configuration", configuration},
    {"constants", plain<ConstantsParser>},
    {"links", plain<LinksParser>},
    {"app-version", plain<AppVersionParser>},
    {"os-version", plain<OSVersionParser>},
    {"kill-switch", plain<KillSwitchParser>},
    {"rating-prompt-config", plain<RatingPromptConfigParser>},
    {"display-ad", plain<DisplayAdParser>},
    {"color-palette", plain<ColorPaletteParser>},
    {"status", plain<StatusParser>},
    {"app-action", plain<AppActionParser>},
    {"video", video},
    {"page", plain<PageParser>},
    {"content-item", contentItem},
    {"item-collection", plain<ItemCollectionParser>},
    {"search-collection", searchCollection},
    {"search-results", searchResults},
    {"playlist", playlist},
    {"system-view", systemView},
    {"video-ad-metadata", plain<VideoAdMetadataParser>},
    {"video-beacon", plain<VideoBeaconParser>},
    {"video-segment", plain<VideoSegmentParser>},
    {"lineup", lineup},
    {"lineup-slot", plain<LineupSlotParser>},
    {"lineup-template-image", plain<LineupTemplateImageParser>},
    {"linear-program", plain<LinearProgramParser>},
    {"linear-program-guide", linearProgramGuide},
    {"event-date", eventDate},
    {"iso8601-date", iso8601Date},
    {"resource-date", resourceDate},
};

}  // namespace

std::vector<std::string> parseKinds() {
  std::vector<std::string> names;
  for (const Kind& kind : kKinds) names.emplace_back(kind.name);
  return names;
}

Result<Json> parseDocument(std::string_view kind, std::string_view body,
                           const ParseArguments& arguments) {
  const Kind* found = std::find_if(std::begin(kKinds), std::end(kKinds),
                                   [&](const Kind& entry) { return entry.name == kind; });
  return found->parse(body, arguments);
}

}  // namespace orvo::tool
