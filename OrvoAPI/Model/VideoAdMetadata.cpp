#include <OrvoAPI/Model/RecordsInternal.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>
#include <OrvoAPI/Model/VideoAdMetadata.h>

namespace orvo {
namespace {

class VideoSegmentReader : public detail::RequiredMembers {
 public:
  explicit VideoSegmentReader(const JSONObject& json) : detail::RequiredMembers("VideoSegment") {
    static constexpr detail::TextIndex kKeys({"ad", "start", "duration"});
    const detail::JSONMembers<kKeys> members(json);
    segment_ = {.ad = boolean(members["ad"]),
                .start = number(members["start"]),
                .duration = number(members["duration"])};
  }
  [[nodiscard]] VideoSegment record() const { return segment_; }

 private:
  VideoSegment segment_;
};

class VideoBeaconReader : public detail::RequiredMembers {
 public:
  explicit VideoBeaconReader(const JSONObject& json) : detail::RequiredMembers("VideoBeacon") {
    static constexpr detail::TextIndex kKeys({"name", "time", "url"});
    const detail::JSONMembers<kKeys> members(json);
    name_ = text(members["name"]);
    time_ = number(members["time"]);
    const auto address = text(members["url"]);
    if (!failed()) url_ = URL::parse(address);
    // A relative address has nothing to be relative to.
    if (!url_ || !url_->isAbsolute()) fail("url");
  }
  [[nodiscard]] VideoBeacon record() const {
    return {.name = std::string(name_), .time = time_, .url = *url_};
  }

 private:
  std::string_view name_;
  double time_ = 0;
  std::optional<URL> url_;
};

}  // namespace

Result<VideoSegment> VideoSegmentParser::parse(const JSONObject& json) {
  return detail::parsed<VideoSegmentReader>(json);
}

Result<VideoBeacon> VideoBeaconParser::parse(const JSONObject& json) {
  return detail::parsed<VideoBeaconReader>(json);
}

VideoAdMetadata VideoAdMetadataParser::parse(const JSONObject& json) {
  static constexpr detail::TextIndex kKeys({"events", "segments"});
  const detail::JSONMembers<kKeys> members(json);
  VideoAdMetadata metadata;
  if (const auto events = members["events"].objects()) {
    metadata.beacons = detail::parsedItems<VideoBeaconReader>(*events);
  }
  if (const auto segments = members["segments"].objects()) {
    metadata.segments = detail::parsedItems<VideoSegmentReader>(*segments);
  }
  return metadata;
}

}  // namespace orvo
