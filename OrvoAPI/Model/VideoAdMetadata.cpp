#include <OrvoAPI/Model/RecordsInternal.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>
#include <OrvoAPI/Model/VideoAdMetadata.h>

namespace orvo {
namespace {

constexpr detail::TextIndex kSegmentKeys({"ad", "start", "duration"});
using SegmentMembers = detail::JSONMembers<kSegmentKeys>;

class VideoSegmentReader : public detail::RequiredMembers {
 public:
  explicit VideoSegmentReader(const SegmentMembers& members)
      : detail::RequiredMembers("VideoSegment"),
        ad_(boolean(members["ad"])),
        start_(number(members["start"])),
        duration_(number(members["duration"])) {}
  explicit VideoSegmentReader(const JSONObject& json) : VideoSegmentReader(SegmentMembers(json)) {}

  [[nodiscard]] VideoSegment record() const {
    return {.ad = ad_, .start = start_, .duration = duration_};
  }

 private:
  bool ad_;
  double start_;
  double duration_;
};

constexpr detail::TextIndex kBeaconKeys({"name", "time", "url"});
using BeaconMembers = detail::JSONMembers<kBeaconKeys>;

class VideoBeaconReader : public detail::RequiredMembers {
 public:
  explicit VideoBeaconReader(const BeaconMembers& members)
      : detail::RequiredMembers("VideoBeacon"),
        name_(text(members["name"])),
        time_(number(members["time"])),
        url_(absoluteURL(members["url"])) {}
  explicit VideoBeaconReader(const JSONObject& json) : VideoBeaconReader(BeaconMembers(json)) {}

  [[nodiscard]] VideoBeacon record() const {
    return {.name = std::string(name_), .time = time_, .url = url_};
  }

 private:
  /// A relative address has nothing to be relative to.
  [[nodiscard]] URL absoluteURL(const detail::JSONMember& member) {
    auto found = url(member);
    if (!found.isAbsolute()) fail(member.fault(Wanted::string), member.key());
    return found;
  }

  std::string_view name_;
  double time_;
  URL url_;
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
