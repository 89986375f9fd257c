#pragma once

#include <OrvoAPI/HTTP/URL.h>
#include <OrvoAPI/Model/AppAction.h>
#include <OrvoAPI/Model/CollectionReference.h>
#include <OrvoAPI/Model/ImageResource.h>
#include <OrvoAPI/Model/LineupReference.h>
#include <OrvoAPI/Model/Page.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>
#include <OrvoAPI/Model/Status.h>
#include <OrvoAPI/Model/VideoPreview.h>

#include <optional>
#include <string_view>
#include <vector>

/// The members that documents share; none of them can make a document fail.
namespace orvo::detail {

/// A raw value of `E`, or else `fallback`.
template <RawValueEnum E>
[[nodiscard]] E rawValueOr(const JSONMember& member, E fallback) {
  return member.stringAs([](std::string_view text) { return caseOf<E>(text); }).value_or(fallback);
}

[[nodiscard]] std::optional<URL> optionalURL(const JSONMember& member);

/// "collections", without the entries that lack an "id" or a "label".
[[nodiscard]] std::vector<CollectionReference> collections(const JSONMember& member);

/// "lineup", or nothing when its address or its display kind is none.
[[nodiscard]] std::optional<LineupReference> lineupMeta(const JSONMember& member);

/// "status", or the one that stands in for it.
[[nodiscard]] Status status(const JSONMember& member);

/// "links", without those that cannot be read.
struct ContentLinks {
  explicit ContentLinks(const JSONMember& member);
  std::vector<AppAction> actions;
  std::vector<Page::Sibling> siblings;
};

/// "resources": both tables, from one walk.
struct ContentResources {
  ContentResources(const JSONMember& member, std::string_view productID);
  ImageResources images;
  VideoPreviews previews;
};

}  // namespace orvo::detail
