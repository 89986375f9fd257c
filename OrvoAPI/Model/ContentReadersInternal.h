#pragma once

#include <OrvoAPI/Model/AppAction.h>
#include <OrvoAPI/Model/ContentItem.h>
#include <OrvoAPI/Model/RecordsInternal.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>

#include <optional>
#include <string>
#include <string_view>
#include <variant>

/// The readers (see RecordsInternal.h) of the records that several documents list.
namespace orvo::detail {

/// The keys of an element of "links".
inline constexpr TextIndex kLinkKeys({"type", "id", "label", "action", "icon"});
using LinkMembers = JSONMembers<kLinkKeys>;

class AppActionReader : public RequiredMembers {
 public:
  explicit AppActionReader(const LinkMembers& link);
  explicit AppActionReader(const JSONObject& json) : AppActionReader(LinkMembers(json)) {}
  [[nodiscard]] AppAction record() const;

 private:
  std::string_view id_;
  std::string_view label_;
  AppAction::Kind kind_;
  std::string_view icon_;
};

inline constexpr TextIndex kVideoKeys({"id", "title", "short_description", "subheading",
                                       "content_type", "duration", "playable", "deeplink_playlist",
                                       "next_playlist", "collections", "lineup", "share_url",
                                       "resources", "status", "links"});

class VideoReader : public RequiredMembers {
 public:
  explicit VideoReader(const JSONObject& json);
  [[nodiscard]] Video record(const std::optional<std::string>& playlistID) const;

 private:
  JSONMembers<kVideoKeys> members_;
  std::string_view id_;
  std::string_view title_;
  std::string_view shortDescription_;
};

inline constexpr TextIndex kPageKeys({"id", "title", "subheading", "short_description",
                                      "long_description", "content_type", "icon", "collections",
                                      "resources", "status", "links", "lineup", "share_url"});

class PageReader : public RequiredMembers {
 public:
  /// `title` stands in for the document's.
  explicit PageReader(const JSONObject& json, std::optional<std::string_view> title = {});
  [[nodiscard]] Page record() const;

 private:
  JSONMembers<kPageKeys> members_;
  std::string_view id_;
  std::string_view title_;
};

class ContentItemReader {
 public:
  explicit ContentItemReader(const JSONObject& json);
  [[nodiscard]] bool failed() const;
  [[nodiscard]] Failure failure() const;
  void drop(const JSONObject& json) const;
  [[nodiscard]] ContentItem record(const std::optional<std::string>& collectionID) const;

 private:
  /// The reader of what the item is; if it is neither, a failure that says so.
  std::variant<RequiredMembers, VideoReader, PageReader> reader_;
};

}  // namespace orvo::detail
