#include <OrvoAPI/Parsing/DateFormatter.h>
#include <tool/ModelJson.h>

namespace orvo::tool {

Json toJson(const JSONValue& value) {
  switch (value.kind()) {
    case JSONValue::Kind::null:
      return nullptr;
    case JSONValue::Kind::boolean:
      return *value.boolean();
    case JSONValue::Kind::number:
      return value.integer() ? Json(*value.integer()) : Json(*value.number());
    case JSONValue::Kind::string:
      return *value.string();
    case JSONValue::Kind::array: {
      const JSONArray elements = *value.array();
      Json array = Json::array();
      for (const JSONValue& element : elements) array.push(toJson(element));
      return array;
    }
    case JSONValue::Kind::object:
      break;
  }
  const JSONObject members = *value.object();
  Json object = Json::object();
  for (const auto& [key, member] : members) object.set(std::string(key), toJson(member));
  return object;
}

Json toJson(Date date) {
  std::string text = startResourceDateFormatter().string(date);
  const std::size_t zone = text.rfind("+0000");
  if (zone != std::string::npos) text.erase(zone).append(1, 'Z');
  return text;
}

Json toJson(const URL& url) { return url.text(); }

Json toJson(const Session& session) { return ORVO_FIELDS(session, token); }

Json toJson(const PagingMeta& meta) { return ORVO_FIELDS(meta, total, limit, offset); }

Json toJson(const CollectionReference& collection) { return ORVO_FIELDS(collection, id, label); }

Json toJson(const LineupReference& lineup) { return ORVO_FIELDS(lineup, url, displayKind); }

namespace {

template <class Table>
Json tableJson(const Table& table) {
  Json json = Json::object();
  for (const auto& [key, resource] : table) {
    json.set(std::string(caseName(key)), toJson(resource));
  }
  return json;
}

}  // namespace

Json toJson(const ImageResource& resource) { return ORVO_FIELDS(resource, key, productID); }

Json toJson(const VideoPreview& preview) { return ORVO_FIELDS(preview, key, productID); }

Json toJson(const ImageResources& resources) { return tableJson(resources); }

Json toJson(const VideoPreviews& previews) { return tableJson(previews); }

Json toJson(const Status& status) {
  return ORVO_FIELDS(status, code, label, ttl, message, startTime, endTime);
}

Json toJson(const AppAction& action) { return ORVO_FIELDS(action, id, label, kind, icon); }

Json toJson(const Video& video) {
  return ORVO_FIELDS(video, id, title, subheading, shortDescription, kind, duration, playbackStatus,
                     collections, lineupMeta, imageResources, videoPreviews, status, appActions,
                     playlistID, deepLinkPlaylistID, nextPlaylistID, shareURL);
}

Json toJson(const Page::Sibling& sibling) { return ORVO_FIELDS(sibling, label, id); }

Json toJson(const Page& page) {
  return ORVO_FIELDS(page, id, title, subheading, shortDescription, longDescription, kind,
                     collections, lineupMeta, imageResources, videoPreviews, iconID, status,
                     appActions, siblings, shareURL);
}

Json toJson(const ContentItem& item) {
  if (const Video* video = item.video()) return Json::object({{"video", toJson(*video)}});
  return Json::object({{"page", toJson(*item.page())}});
}

Json toJson(const ItemCollection& collection) {
  return ORVO_FIELDS(collection, id, label, shortLabel, kind, contentsKind, meta, items);
}

Json toJson(const SearchCollection& collection) {
  return ORVO_FIELDS(collection, query, label, shortLabel, kind, contentsKind, resultsKind, meta,
                     items);
}

Json toJson(const Playlist& playlist) {
  return ORVO_FIELDS(playlist, id, label, shortLabel, meta, kind, items);
}

Json toJson(const VideoBeacon& beacon) { return ORVO_FIELDS(beacon, name, time, url); }

Json toJson(const VideoSegment& segment) { return ORVO_FIELDS(segment, ad, start, duration); }

Json toJson(const VideoAdMetadata& metadata) { return ORVO_FIELDS(metadata, beacons, segments); }

}  // namespace orvo::tool
