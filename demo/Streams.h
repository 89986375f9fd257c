#pragma once

#include <demo/Catalogue.h>
#include <demo/Times.h>

#include <cstdint>
#include <optional>
#include <string>

namespace orvo::demo {

/// An HLS stream of silence: one rendition, packed audio. A video is as long as it says, a live
/// programme is a window that moves with the time.

[[nodiscard]] std::string masterPlaylist();
[[nodiscard]] std::string mediaPlaylist(const Product& video, Instant now);
/// The number in the name of a segment, such as `segment-12.aac`.
[[nodiscard]] std::optional<std::int64_t> segmentNumber(std::string_view name);
[[nodiscard]] std::string segment(std::int64_t number);

/// An MP4 file that holds no track: a preview with nothing to see.
[[nodiscard]] std::string previewFile();

}  // namespace orvo::demo
