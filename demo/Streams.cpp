#include <demo/Bytes.h>
#include <demo/Streams.h>

#include <charconv>

namespace orvo::demo {

namespace {

// 300 frames of 1024 samples at 48 kHz are 6.4 seconds, without a remainder.
constexpr int kFrames = 300;
constexpr std::int64_t kSegmentMilliseconds = 6400;
constexpr std::int64_t kLiveSegments = 6;
constexpr std::string_view kSegmentPrefix = "segment-";
constexpr std::string_view kSegmentSuffix = ".aac";

/// A frame of AAC-LC, one channel: the ADTS header (13 bytes in all), then one channel element
/// whose only section is zero, then the end of the block.
constexpr std::string_view kSilentFrame("\xFF\xF1\x4C\x40\x01\xBF\xFC\x00\xC8\x00\x80\x23\x80", 13);

/// An MP4 box: its length, its type, its content.
std::string box(std::string_view type, const std::string& content) {
  std::string out;
  appendBigEndian(out, content.size() + 8, 4);
  return out.append(type).append(content);
}

}  // namespace

std::string masterPlaylist() {
  return "#EXTM3U\n"
         "#EXT-X-VERSION:3\n"
         "#EXT-X-STREAM-INF:BANDWIDTH=8000,CODECS=\"mp4a.40.2\"\n"
         "audio.m3u8\n";
}

std::string mediaPlaylist(const Product& video, Instant now) {
  const bool live = video.kind == "live_program";
  std::int64_t first = 0;
  std::int64_t count =
      (video.durationMilliseconds + kSegmentMilliseconds - 1) / kSegmentMilliseconds;
  if (live) {
    first = now.time_since_epoch().count() * 1000 / kSegmentMilliseconds - kLiveSegments;
    count = kLiveSegments;
  }
  std::string text = "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:7\n";
  text += "#EXT-X-MEDIA-SEQUENCE:" + std::to_string(first) + "\n";
  if (!live) text += "#EXT-X-PLAYLIST-TYPE:VOD\n";
  for (std::int64_t number = first; number < first + count; ++number) {
    text += "#EXTINF:6.4,\n";
    text.append(kSegmentPrefix).append(std::to_string(number)).append(kSegmentSuffix) += '\n';
  }
  if (!live) text += "#EXT-X-ENDLIST\n";
  return text;
}

std::optional<std::int64_t> segmentNumber(std::string_view name) {
  if (!name.starts_with(kSegmentPrefix) || !name.ends_with(kSegmentSuffix)) return std::nullopt;
  name.remove_prefix(kSegmentPrefix.size());
  name.remove_suffix(kSegmentSuffix.size());
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
  if (error != std::errc() || end != name.data() + name.size() || number < 0) return std::nullopt;
  return number;
}

std::string segment(std::int64_t number) {
  // Packed audio tells the player its time in an ID3 tag, in 90 kHz ticks of 33 bits.
  constexpr std::string_view kOwner = "com.apple.streaming.transportStreamTimestamp";
  const std::uint64_t ticks = static_cast<std::uint64_t>(number) * kSegmentMilliseconds * 90;
  std::string content(kOwner);
  content += '\0';
  appendBigEndian(content, ticks & 0x1'FFFF'FFFF, 8);
  std::string frame("PRIV");
  appendBigEndian(frame, content.size(), 4);
  frame.append(2, '\0').append(content);
  std::string out("ID3\4\0\0", 6);
  appendBigEndian(out, frame.size(), 4);
  out += frame;
  for (int count = 0; count < kFrames; ++count) out += kSilentFrame;
  return out;
}

std::string previewFile() {
  std::string header(12, '\0');  // version, flags, creation and modification times
  appendBigEndian(header, 1000, 4);
  header.append(4, '\0');                   // duration
  appendBigEndian(header, 0x0001'0000, 4);  // normal rate
  appendBigEndian(header, 0x0100, 2);       // full volume
  header.append(10, '\0');
  for (const unsigned element :
       {0x0001'0000U, 0U, 0U, 0U, 0x0001'0000U, 0U, 0U, 0U, 0x4000'0000U}) {
    appendBigEndian(header, element, 4);  // the unit matrix
  }
  header.append(24, '\0');
  appendBigEndian(header, 1, 4);  // the next track's number
  const std::string brand("isom\0\0\2\0isommp42", 16);
  return box("ftyp", brand) + box("moov", box("mvhd", header));
}

}  // namespace orvo::demo
