#include <tool/Records.h>

#include <iterator>
#include <utility>

namespace orvo::tool {

namespace {

template <class Element>
std::function<Json()> modelOf(const Element& element) {
  return [&element] { return toJson(element); };
}

Record record(const Video& video) {
  const Status& status = video.status;
  return {
      {video.id, "video", toJson(video.kind), video.title, video.subheading, toJson(status.code),
       toJson(status.startTime), toJson(status.endTime), toJson(video.duration)},
      modelOf(video)};
}

Record record(const Page& page) {
  const Status& status = page.status;
  return {{page.id, "page", toJson(page.kind), page.title, toJson(page.subheading),
           toJson(status.code), toJson(status.startTime), toJson(status.endTime), nullptr},
          modelOf(page)};
}

Record record(const ContentItem& item) {
  Record record =
      item.video() != nullptr ? tool::record(*item.video()) : tool::record(*item.page());
  record.model = modelOf(item);
  return record;
}

Record record(const LinearProgram& program) {
  return {{program.id, program.title, toJson(program.subheading), toJson(program.startTime),
           toJson(program.endTime)},
          modelOf(program)};
}

Record record(const LineupSlot& slot) {
  return {{slot.channelID, slot.channelName, slot.title, toJson(slot.start), toJson(slot.end)},
          modelOf(slot)};
}

Record record(const Configuration::SystemView& view) {
  return {{view.id, view.name, view.label}, modelOf(view)};
}

Record record(const std::string& text) { return {{text}, modelOf(text)}; }

template <class List>
Records records(const List& list) {
  Records records;
  records.reserve(std::size(list));
  for (const auto& element : list) records.push_back(record(element));
  return records;
}

}  // namespace

Records recordsOf(const ItemCollection& collection) { return records(collection.items); }
Records recordsOf(const Playlist& playlist) { return records(playlist.items); }

Records recordsOf(const SearchCollection& collection) {
  Records found = records(collection.items);
  for (Record& record : found) record.values.push_back(toJson(collection.resultsKind));
  return found;
}

Records recordsOf(const std::vector<SearchCollection>& results) {
  Records all;
  for (const SearchCollection& collection : results) {
    Records found = recordsOf(collection);
    std::move(found.begin(), found.end(), std::back_inserter(all));
  }
  return all;
}

Records recordsOf(const LinearProgramGuide& guide) { return records(guide.items); }
Records recordsOf(const Lineup& lineup) { return records(lineup.slots_); }
Records recordsOf(const std::vector<Configuration::SystemView>& views) { return records(views); }
Records recordsOf(const std::vector<std::string>& texts) { return records(texts); }

Records recordsOf(const ColorPalette& palette) {
  Records records;
  for (const ColorPalette::Entry& entry : ColorPalette::entries) {
    const ColorResource& resource = palette.*entry.resource;
    records.push_back({{entry.name, hexText(resource.color), resource.transform},
                       [&] { return toJson(resource); }});
  }
  return records;
}

}  // namespace orvo::tool
