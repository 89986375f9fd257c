#pragma once

#include <OrvoAPI/Base/RawValue.h>
#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/HTTP/URL.h>
#include <OrvoAPI/Model/AppAction.h>
#include <OrvoAPI/Model/CollectionReference.h>
#include <OrvoAPI/Model/ImageResource.h>
#include <OrvoAPI/Model/LineupReference.h>
#include <OrvoAPI/Model/Status.h>
#include <OrvoAPI/Model/VideoPreview.h>
#include <OrvoAPI/Parsing/JSONValue.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvo {

/// A place to browse that cannot itself be played: a show, a channel, an event, …
struct Page {
  /// What the page is about.
  enum class ContentKind { show, film, stop, channel, subchannel, format, event, year, generic };

  /// A neighbouring page.
  struct Sibling {
    std::string label;
    std::string id;

    friend bool operator==(const Sibling&, const Sibling&) = default;
  };

  std::string id;
  std::string title;
  std::optional<std::string> subheading = {};
  std::optional<std::string> shortDescription = {};
  std::optional<std::string> longDescription = {};
  ContentKind kind = ContentKind::generic;
  /// The collections shown on the page, in server order.
  std::vector<CollectionReference> collections = {};
  std::optional<LineupReference> lineupMeta = {};
  ImageResources imageResources = {};
  VideoPreviews videoPreviews = {};
  /// The page's own `id` when the server names no icon.
  std::string iconID = {};
  Status status = {};
  std::vector<AppAction> appActions = {};
  /// In server order.
  std::vector<Sibling> siblings = {};
  /// A public address for sharing.
  std::optional<URL> shareURL = {};

  [[nodiscard]] double ttl() const { return status.contentTTL(); }

  friend bool operator==(const Page& lhs, const Page& rhs) {
    return lhs.id == rhs.id && lhs.title == rhs.title && lhs.kind == rhs.kind &&
           lhs.status == rhs.status;
  }
};

template <>
inline constexpr EnumCase enumCases<Page::ContentKind>[] = {
    {"show"},   {"film"},  {"stop"}, {"channel"}, {"subchannel"},
    {"format"}, {"event"}, {"year"}, {"generic"}};

/// Reads a page. Stateless; may be called from any thread.
struct PageParser {
  /// `title` stands in for the document's "title", which is then not looked at.
  [[nodiscard]] static Result<Page> parse(const JSONObject& json,
                                          std::optional<std::string_view> title = {});
};

/// A system view is a page that the configuration names: its title is the configuration's label.
struct SystemViewParser {
  [[nodiscard]] static Result<Page> parse(const JSONObject& json, std::string_view label);
};

}  // namespace orvo
