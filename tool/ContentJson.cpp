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

Json toJson(const PagingMeta& meta) {
  return Json::object({{"total", meta.total}, {"limit", meta.limit}, {"offset", meta.offset}});
}

Json toJson(const CollectionReference& collection) {
  return Json::object({{"id", collection.id}, {"label", collection.label}});
}

Json toJson(const LineupReference& lineup) {
  return Json::object({{"url", toJson(lineup.url)}, {"displayKind", caseName(lineup.displayKind)}});
}

namespace {

template <class Table>
Json tableJson(const Table& table) {
  Json json = Json::object();
  for (const auto& [key, resource] : table) {
    json.set(std::string(caseName(key)),
             Json::object({{"key", caseName(resource.key)}, {"productID", resource.productID}}));
  }
  return json;
}

}  // namespace

Json toJson(const ImageResources& resources) { return tableJson(resources); }

Json toJson(const VideoPreviews& previews) { return tableJson(previews); }

Json toJson(const Status& status) {
  return Json::object({{"code", caseName(status.code)},
                       {"label", status.label},
                       {"ttl", status.ttl},
                       {"message", status.message},
                       {"startTime", toJson(status.startTime)},
                       {"endTime", toJson(status.endTime)}});
}

Json toJson(const AppAction& action) {
  return Json::object({{"id", action.id},
                       {"label", action.label},
                       {"kind", caseName(action.kind)},
                       {"icon", action.icon}});
}

Json toJson(const Video& video) {
  return Json::object({{"id", video.id},
                       {"title", video.title},
                       {"subheading", video.subheading},
                       {"shortDescription", video.shortDescription},
                       {"kind", caseName(video.kind)},
                       {"duration", video.duration},
                       {"playbackStatus", caseName(video.playbackStatus)},
                       {"collections", toJson(video.collections)},
                       {"lineupMeta", toJson(video.lineupMeta)},
                       {"imageResources", toJson(video.imageResources)},
                       {"videoPreviews", toJson(video.videoPreviews)},
                       {"status", toJson(video.status)},
                       {"appActions", toJson(video.appActions)},
                       {"playlistID", video.playlistID},
                       {"deepLinkPlaylistID", video.deepLinkPlaylistID},
                       {"nextPlaylistID", video.nextPlaylistID},
                       {"shareURL", toJson(video.shareURL)}});
}

Json toJson(const Page::Sibling& sibling) {
  return Json::object({{"label", sibling.label}, {"id", sibling.id}});
}

Json toJson(const Page& page) {
  return Json::object({{"id", page.id},
                       {"title", page.title},
                       {"subheading", page.subheading},
                       {"shortDescription", page.shortDescription},
                       {"longDescription", page.longDescription},
                       {"kind", caseName(page.kind)},
                       {"collections", toJson(page.collections)},
                       {"lineupMeta", toJson(page.lineupMeta)},
                       {"imageResources", toJson(page.imageResources)},
                       {"videoPreviews", toJson(page.videoPreviews)},
                       {"iconID", page.iconID},
                       {"status", toJson(page.status)},
                       {"appActions", toJson(page.appActions)},
                       {"siblings", toJson(page.siblings)},
                       {"shareURL", toJson(page.shareURL)}});
}

Json toJson(const ContentItem& item) {
  if (const Video* video = item.video()) return Json::object({{"video", toJson(*video)}});
  return Json::object({{"page", toJson(*item.page())}});
}

Json toJson(const ItemCollection& collection) {
  return Json::object({{"id", collection.id},
                       {"label", collection.label},
                       {"shortLabel", collection.shortLabel},
                       {"kind", caseName(collection.kind)},
                       {"contentsKind", caseName(collection.contentsKind)},
                       {"meta", toJson(collection.meta)},
                       {"items", toJson(collection.items)}});
}

Json toJson(const SearchCollection& collection) {
  return Json::object({{"query", collection.query},
                       {"label", collection.label},
                       {"shortLabel", collection.shortLabel},
                       {"kind", caseName(collection.kind)},
                       {"contentsKind", caseName(collection.contentsKind)},
                       {"resultsKind", caseName(collection.resultsKind)},
                       {"meta", toJson(collection.meta)},
                       {"items", toJson(collection.items)}});
}

Json toJson(const Playlist& playlist) {
  return Json::object({{"id", playlist.id},
                       {"label", playlist.label},
                       {"shortLabel", playlist.shortLabel},
                       {"meta", toJson(playlist.meta)},
                       {"kind", caseName(playlist.kind)},
                       {"items", toJson(playlist.items)}});
}

Json toJson(const VideoBeacon& beacon) {
  return Json::object({{"name", beacon.name}, {"time", beacon.time}, {"url", toJson(beacon.url)}});
}

Json toJson(const VideoSegment& segment) {
  return Json::object(
      {{"ad", segment.ad}, {"start", segment.start}, {"duration", segment.duration}});
}

Json toJson(const VideoAdMetadata& metadata) {
  return Json::object(
      {{"beacons", toJson(metadata.beacons)}, {"segments", toJson(metadata.segments)}});
}

}  // namespace orvo::tool
