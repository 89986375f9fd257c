#pragma once

#include <OrvoAPI/Base/RawValue.h>
#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Model/Page.h>
#include <OrvoAPI/Model/Video.h>
#include <OrvoAPI/Parsing/JSONValue.h>

#include <concepts>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>

namespace orvo {

/// A listed item: a video or a page. A value.
class ContentItem {
 public:
  /// Which of the two it is.
  enum class Kind { video, page };

  template <class Content>
  requires std::same_as<std::remove_cvref_t<Content>, Video> ||
      std::same_as<std::remove_cvref_t<Content>, Page>
      ContentItem(Content&& content)  // NOLINT(google-explicit-constructor): a video is an item
      : value_(std::forward<Content>(content)) {}

  /// The video or page made in place of these arguments.
  template <class Content, class... Arguments>
  explicit ContentItem(std::in_place_type_t<Content> content, Arguments&&... arguments)
      : value_(content, std::forward<Arguments>(arguments)...) {}

  [[nodiscard]] Kind kind() const { return static_cast<Kind>(value_.index()); }
  /// Null when it is a page.
  [[nodiscard]] const Video* video() const { return std::get_if<Video>(&value_); }
  /// Null when it is a video.
  [[nodiscard]] const Page* page() const { return std::get_if<Page>(&value_); }

  /// The video's or the page's.
  [[nodiscard]] const std::string& id() const { return member(&Video::id, &Page::id); }
  [[nodiscard]] const std::string& title() const { return member(&Video::title, &Page::title); }
  [[nodiscard]] const ImageResources& imageResources() const {
    return member(&Video::imageResources, &Page::imageResources);
  }
  [[nodiscard]] double ttl() const {
    return std::visit([](const auto& content) { return content.ttl(); }, value_);
  }

  /// Equal when both are the same sort and equal as such.
  friend bool operator==(const ContentItem&, const ContentItem&) = default;

 private:
  template <class M>
  [[nodiscard]] const M& member(M Video::*ofVideo, M Page::*ofPage) const {
    return video() != nullptr ? video()->*ofVideo : page()->*ofPage;
  }

  std::variant<Video, Page> value_;
};

template <>
inline constexpr EnumCase enumCases<ContentItem::Kind>[] = {{"video"}, {"page"}};

/// Reads a video or a page, as its "type" says. Stateless; may be called from any thread.
struct ContentItemParser {
  /// `collectionID`: the collection or playlist in which the item is listed; a video's
  /// `playlistID`.
  [[nodiscard]] static Result<ContentItem> parse(
      const JSONObject& json, const std::optional<std::string>& collectionID = {});
};

}  // namespace orvo
