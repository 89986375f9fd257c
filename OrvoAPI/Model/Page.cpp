#include <OrvoAPI/Model/ContentFieldsInternal.h>
#include <OrvoAPI/Model/ContentReadersInternal.h>
#include <OrvoAPI/Model/Page.h>

namespace orvo {

namespace detail {

PageReader::PageReader(const JSONObject& json, std::optional<std::string_view> title)
    : RequiredMembers("Page"),
      members_(json),
      id_(text(members_["id"])),
      title_(title ? *title : text(members_["title"])) {}

Page PageReader::record() const {
  ContentResources resources(members_["resources"], id_);
  ContentLinks links(members_["links"]);
  return {.id = std::string(id_),
          .title = std::string(title_),
          .subheading = members_["subheading"].text(),
          .shortDescription = members_["short_description"].text(),
          .longDescription = members_["long_description"].text(),
          .kind = rawValueOr(members_["content_type"], Page::ContentKind::generic),
          .collections = collections(members_["collections"]),
          .lineupMeta = lineupMeta(members_["lineup"]),
          .imageResources = std::move(resources.images),
          .videoPreviews = std::move(resources.previews),
          .iconID = std::string(members_["icon"].string().value_or(id_)),
          .status = status(members_["status"]),
          .appActions = std::move(links.actions),
          .siblings = std::move(links.siblings),
          .shareURL = optionalURL(members_["share_url"])};
}

}  // namespace detail

Result<Page> PageParser::parse(const JSONObject& json, std::optional<std::string_view> title) {
  const detail::PageReader reader(json, title);
  if (reader.failed()) return reader.failure();
  return reader.record();
}

Result<Page> SystemViewParser::parse(const JSONObject& json, std::string_view label) {
  return PageParser::parse(json, label);
}

}  // namespace orvo
