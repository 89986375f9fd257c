#include <fmt/format.h>
#include <tool/ContentViews.h>
#include <tool/Wording.h>

namespace orvo::tool {

namespace {

/// The place of an item in the whole list, from 1 on. Offsets come from the service and may be
/// absurd, so the sum wraps around rather than overflowing.
std::string positionText(std::int64_t offset, std::size_t index) {
  return std::to_string(static_cast<std::int64_t>(static_cast<std::uint64_t>(offset) + index + 1));
}

template <class Resources>
std::string keyNames(const Resources& resources) {
  std::vector<std::string> names;
  for (const auto& [key, resource] : resources) names.emplace_back(caseName(key));
  return joined(names);
}

/// What videos and pages have in common, below their descriptions.
template <class Content>
void drawFields(Screen& screen, const Content& content) {
  screen.field("id", content.id);
  screen.field("status", statusText(content.status), styleOf(content.status.code));
  if (content.status.message) screen.field("", *content.status.message);
  screen.field("images", keyNames(content.imageResources));
  screen.field("previews", keyNames(content.videoPreviews));
  if (content.lineupMeta) {
    screen.field("lineup", fmt::format("{} ({})", content.lineupMeta->url.text(),
                                       caseName(content.lineupMeta->displayKind)));
  }
  screen.field("share", urlText(content.shareURL));
  screen.field("kept for", durationText(content.ttl()));
}

void drawCollections(Screen& screen, const std::vector<CollectionReference>& collections) {
  if (collections.empty()) return;
  Table table{.columns = {{.least = 20}, {}}};
  for (const CollectionReference& collection : collections) {
    table.rows.push_back({{collection.label}, {collection.id, Style::faint}});
  }
  screen.heading("Collections");
  screen.table(table);
}

void drawActions(Screen& screen, const std::vector<AppAction>& actions) {
  if (actions.empty()) return;
  Table table{.columns = {{.least = 20}, {}, {}}};
  for (const AppAction& action : actions) {
    table.rows.push_back(
        {{action.label}, {std::string(caseName(action.kind))}, {action.id, Style::faint}});
  }
  screen.heading("Actions");
  screen.table(table);
}

Cell symbol(const Video& video) {
  const bool playable = video.playbackStatus == Video::PlaybackStatus::available;
  return playable ? Cell{"▶", Style::good} : Cell{"▷", Style::faint};
}

std::vector<Cell> row(const Video& video, const std::string& number) {
  return {{number, Style::faint},
          symbol(video),
          {video.title, Style::strong},
          {video.subheading},
          {std::string(caseName(video.kind))},
          {durationText(video.duration)},
          {video.status.label, styleOf(video.status.code)},
          {video.id, Style::faint}};
}

std::vector<Cell> row(const Page& page, const std::string& number) {
  return {{number, Style::faint},
          {"▤", Style::accent},
          {page.title, Style::strong},
          {page.subheading.value_or("")},
          {std::string(caseName(page.kind))},
          {},
          {page.status.label, styleOf(page.status.code)},
          {page.id, Style::faint}};
}

std::vector<Cell> row(const ContentItem& item, const std::string& number) {
  return item.video() != nullptr ? row(*item.video(), number) : row(*item.page(), number);
}

template <class Item>
void drawTable(Screen& screen, const std::vector<Item>& items, std::int64_t offset) {
  Table table{.columns = {{.right = true},
                          {},
                          {.least = 24},
                          {.least = 16, .optional = 4},
                          {.optional = 3},
                          {.right = true, .optional = 2},
                          {.least = 8, .optional = 1},
                          {}}};
  for (std::size_t index = 0; index < items.size(); ++index) {
    table.rows.push_back(row(items[index], positionText(offset, index)));
  }
  screen.table(table);
}

}  // namespace

void draw(Screen& screen, const Video& video) {
  const bool playable = video.playbackStatus == Video::PlaybackStatus::available;
  screen.title(video.title, joined({std::string(caseName(video.kind)), durationText(video.duration),
                                    playable ? "available" : "unavailable"}));
  screen.paragraph(video.subheading, Style::faint);
  screen.blank();
  screen.paragraph(video.shortDescription);
  if (!video.shortDescription.empty()) screen.blank();
  drawFields(screen, video);
  screen.field("playlist", video.playlistID.value_or(""));
  screen.field("deep link", video.deepLinkPlaylistID.value_or(""));
  screen.field("next playlist", video.nextPlaylistID.value_or(""));
  drawCollections(screen, video.collections);
  drawActions(screen, video.appActions);
}

void draw(Screen& screen, const Page& page) {
  screen.title(page.title, caseName(page.kind));
  screen.paragraph(page.subheading.value_or(""), Style::faint);
  for (const auto& description : {page.shortDescription, page.longDescription}) {
    if (!description || description->empty()) continue;
    screen.blank();
    screen.paragraph(*description);
  }
  screen.blank();
  drawFields(screen, page);
  screen.field("icon", page.iconID);
  drawCollections(screen, page.collections);
  drawActions(screen, page.appActions);
  if (page.siblings.empty()) return;
  Table table{.columns = {{.least = 20}, {}}};
  for (const Page::Sibling& sibling : page.siblings) {
    table.rows.push_back({{sibling.label}, {sibling.id, Style::faint}});
  }
  screen.heading("Siblings");
  screen.table(table);
}

void draw(Screen& screen, const ContentItem& item) {
  item.video() != nullptr ? draw(screen, *item.video()) : draw(screen, *item.page());
}

void drawItems(Screen& screen, const std::vector<ContentItem>& items, std::int64_t offset) {
  drawTable(screen, items, offset);
}

void drawItems(Screen& screen, const std::vector<Video>& videos, std::int64_t offset) {
  drawTable(screen, videos, offset);
}

void draw(Screen& screen, const ItemCollection& collection) {
  screen.title(collection.label, extentText(collection.meta, collection.items.size()));
  screen.paragraph(joined({std::string(caseName(collection.kind)),
                           std::string(caseName(collection.contentsKind)), collection.id}),
                   Style::faint);
  screen.blank();
  drawItems(screen, collection.items, collection.meta.offset);
}

void draw(Screen& screen, const Playlist& playlist) {
  screen.title(playlist.label, extentText(playlist.meta, playlist.items.size()));
  screen.paragraph(playlist.id, Style::faint);
  screen.blank();
  drawItems(screen, playlist.items, playlist.meta.offset);
}

std::string extentText(const PagingMeta& meta, std::size_t shown) {
  const std::string total = countText(meta.total, "item");
  const auto count = static_cast<std::int64_t>(shown);
  if (count == meta.total) return total;
  if (count == 0) return total + ", none shown";
  // A video that was put in front is not among those that the service counts.
  if (count > meta.total) return fmt::format("{}, {} shown", total, countText(count));
  return fmt::format("{}, {} shown from {} on", total, countText(count),
                     positionText(meta.offset, 0));
}

}  // namespace orvo::tool
