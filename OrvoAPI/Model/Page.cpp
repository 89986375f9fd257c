#include <OrvoAPI/Model/ContentFieldsInternal.h>
#include <OrvoAPI/Model/Page.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>

namespace orvo {
namespace {

std::vector<Page::Sibling> siblings(const std::optional<JSONObjects>& links) {
  std::vector<Page::Sibling> siblings;
  if (!links) return siblings;
  for (const JSONObject& link : *links) {
    if (link.string("type") != "sibling") continue;
    const auto id = link.string("id");
    const auto label = link.string("label");
    if (id && label) siblings.push_back({.label = std::string(*label), .id = std::string(*id)});
  }
  return siblings;
}

}  // namespace

Result<Page> PageParser::parse(const JSONObject& json, std::optional<std::string_view> title) {
  RequiredMembers required(json, "Page");
  const auto id = required.text("id");
  if (!title) title = required.text("title");
  if (required.failed()) return required.failure();

  Page page{.id = std::string(id), .title = std::string(*title)};
  page.subheading = json.string("subheading");
  page.shortDescription = json.string("short_description");
  page.longDescription = json.string("long_description");
  page.kind = detail::rawValueOr(json, "content_type", Page::ContentKind::generic);
  page.iconID = json.string("icon").value_or(id);
  page.collections = detail::collections(json);
  if (const auto resources = json.strings("resources")) {
    page.imageResources = ImageResourceParser::parse(*resources, id);
    page.videoPreviews = VideoPreviewsParser::parse(*resources, id);
  }
  page.status = detail::status(json);
  const auto links = json.objects("links");
  page.appActions = detail::appActions(links);
  page.siblings = siblings(links);
  page.lineupMeta = detail::lineupMeta(json);
  page.shareURL = detail::optionalURL(json, "share_url");
  return page;
}

}  // namespace orvo
