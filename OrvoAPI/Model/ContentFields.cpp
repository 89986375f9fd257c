#include <OrvoAPI/Model/ContentFieldsInternal.h>
#include <OrvoAPI/Model/ContentReadersInternal.h>

#include <iterator>

namespace orvo::detail {
namespace {

constexpr TextIndex kReferenceKeys({"id", "label"});

/// The image keys and after them the preview keys.
constexpr std::size_t kImageKeys = std::size(enumCases<ImageResourceKey>);

consteval TextIndex resourceNames() {
  std::string_view names[kImageKeys + std::size(enumCases<VideoPreviewKey>)];
  auto* name = names;
  for (const auto& key : enumCases<ImageResourceKey>) *name++ = key.rawValue;
  for (const auto& key : enumCases<VideoPreviewKey>) *name++ = key.rawValue;
  return TextIndex(names);
}

constexpr TextIndex kResourceNames = resourceNames();

}  // namespace

std::optional<URL> optionalURL(const JSONMember& member) {
  return member.stringAs([](std::string_view text) { return URL::parse(text); });
}

std::vector<CollectionReference> collections(const JSONMember& member) {
  std::vector<CollectionReference> references;
  const auto entries = member.objects();
  if (!entries) return references;
  reserve(references, entries->size());
  for (const JSONObject& entry : *entries) {
    const JSONMembers<kReferenceKeys> members(entry);
    const auto id = members["id"].token().string();
    const auto label = members["label"].token().string();
    if (!id || !label) {
      drop(entry, id ? "label" : "id");
      continue;
    }
    appendMade(references, [&] {
      return CollectionReference{.id = std::string(*id), .label = std::string(*label)};
    });
  }
  return references;
}

std::optional<LineupReference> lineupMeta(const JSONMember& member) {
  static constexpr TextIndex kKeys({"url", "display_type"});
  const auto lineup = member.object();
  if (!lineup) return std::nullopt;
  const JSONMembers<kKeys> members(*lineup);
  const auto displayKind = caseOf<LineupDisplayKind>(members["display_type"].token().string());
  const auto text = displayKind ? members["url"].token().string() : std::nullopt;
  auto url = text ? URL::parse(*text) : std::nullopt;
  if (!url) {
    drop(*lineup, displayKind ? "url" : "display_type");
    return std::nullopt;
  }
  return LineupReference{.url = *std::move(url), .displayKind = *displayKind};
}

Status status(const JSONMember& member) {
  const auto object = member.object();
  return object ? StatusParser::parse(*object) : Status{};
}

ContentLinks::ContentLinks(const JSONMember& member) {
  const auto links = member.objects();
  if (!links) return;
  std::size_t buttons = 0, siblingLinks = 0;
  for (const JSONObject& link : *links) {
    const auto type = link.string("type");
    buttons += type == "button";
    siblingLinks += type == "sibling";
  }
  reserve(actions, buttons);
  reserve(siblings, siblingLinks);
  for (const JSONObject& link : *links) {
    const LinkMembers members(link);
    const auto type = members["type"].token().string();
    if (type == "button") {
      const AppActionReader action(members);
      if (action.failed()) {
        action.drop(link);
      } else {
        appendMade(actions, [&] { return action.record(); });
      }
    } else if (type == "sibling") {
      const auto id = members["id"].token().string();
      const auto label = members["label"].token().string();
      if (id && label) {
        siblings.push_back({.label = std::string(*label), .id = std::string(*id)});
      } else {
        drop(link, id ? "label" : "id");
      }
    } else {
      drop(link, "type");
    }
  }
}

ContentResources::ContentResources(const JSONMember& member, std::string_view productID) {
  const std::uint32_t names = member.names(kResourceNames);
  constexpr std::uint32_t kImages = (1U << kImageKeys) - 1;
  if (names == 0) return;
  SharedText id(productID);
  images = {id, KeySet<ImageResourceKey>::fromBits(names & kImages)};
  previews = {std::move(id), KeySet<VideoPreviewKey>::fromBits(names >> kImageKeys)};
}

}  // namespace orvo::detail
