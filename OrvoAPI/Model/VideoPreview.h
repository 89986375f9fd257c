#pragma once

#include <OrvoAPI/Base/RawValue.h>
#include <OrvoAPI/HTTP/URL.h>
#include <OrvoAPI/Model/ResourceHost.h>
#include <OrvoAPI/Model/ResourceTable.h>
#include <OrvoAPI/Parsing/JSONValue.h>

#include <string>
#include <string_view>

namespace orvo {

/// The qualities of a short preview clip.
enum class VideoPreviewKey { low, medium, high };

template <>
inline constexpr EnumCase enumCases<VideoPreviewKey>[] = {{"low", "short_preview_mp4_low"},
                                                          {"medium", "short_preview_mp4_medium"},
                                                          {"high", "short_preview_mp4_high"}};

/// One preview clip of a product.
struct VideoPreview {
  VideoPreviewKey key = VideoPreviewKey::low;
  std::string productID;

  /// The clip's address. Never fails: a product identifier that makes no URL gives "/".
  [[nodiscard]] URL url(const ResourceHost& host) const;

  friend bool operator==(const VideoPreview&, const VideoPreview&) = default;
};

/// The preview clips that the server holds for a product.
using VideoPreviews = ResourceTable<VideoPreviewKey, VideoPreview>;

/// Reads which previews there are. Stateless; may be called from any thread.
struct VideoPreviewsParser {
  /// Takes a document's list of resource names; other names are skipped.
  [[nodiscard]] static VideoPreviews parse(const JSONStrings& json, std::string_view productID);
};

}  // namespace orvo
