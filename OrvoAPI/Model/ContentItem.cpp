#include <OrvoAPI/Model/ContentItem.h>
#include <OrvoAPI/Model/ContentReadersInternal.h>

namespace orvo {

namespace detail {

ContentItemReader::ContentItemReader(const JSONObject& json)
    // Reported for ItemCollection, where items are listed: the error has always read so.
    : reader_(std::in_place_type<RequiredMembers>, "ItemCollection") {
  // Mostly the first member: no walk over all of them.
  const auto kind = caseOf<ContentItem::Kind>(json.string("type"));
  if (!kind) {
    const JSONPlace place{json.node().document(), json.node().position()};
    std::get<RequiredMembers>(reader_).fail({place, "type", JSONValue::Kind::string}, "type");
  } else if (kind == ContentItem::Kind::video) {
    reader_.emplace<VideoReader>(json);
  } else {
    reader_.emplace<PageReader>(json);
  }
}

bool ContentItemReader::failed() const {
  return std::visit([](const RequiredMembers& required) { return required.failed(); }, reader_);
}

Failure ContentItemReader::failure() const {
  return std::visit([](const RequiredMembers& required) { return required.failure(); }, reader_);
}

void ContentItemReader::drop(const JSONObject& json) const {
  std::visit([&](const RequiredMembers& required) { required.drop(json); }, reader_);
}

ContentItem ContentItemReader::record(const std::optional<std::string>& collectionID) const {
  if (const auto* video = std::get_if<VideoReader>(&reader_)) {
    return ContentItem(std::in_place_type<Video>,
                       Made{[&] { return video->record(collectionID); }});
  }
  const auto& page = std::get<PageReader>(reader_);
  return ContentItem(std::in_place_type<Page>, Made{[&] { return page.record(); }});
}

}  // namespace detail

Result<ContentItem> ContentItemParser::parse(const JSONObject& json,
                                             const std::optional<std::string>& collectionID) {
  return detail::parsed<detail::ContentItemReader>(json, collectionID);
}

}  // namespace orvo
