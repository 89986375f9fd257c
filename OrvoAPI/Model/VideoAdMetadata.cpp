#include <OrvoAPI/Model/ContentFieldsInternal.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>
#include <OrvoAPI/Model/VideoAdMetadata.h>

namespace orvo {

Result<VideoSegment> VideoSegmentParser::parse(const JSONObject& json) {
  RequiredMembers required(json, "VideoSegment");
  return required.result(VideoSegment{.ad = required.boolean("ad"),
                                      .start = required.number("start"),
                                      .duration = required.number("duration")});
}

Result<VideoBeacon> VideoBeaconParser::parse(const JSONObject& json) {
  RequiredMembers required(json, "VideoBeacon");
  VideoBeacon beacon{
      .name = required.string("name"), .time = required.number("time"), .url = required.url("url")};
  // A relative address has nothing to be relative to.
  if (!beacon.url.isAbsolute()) required.fail("url");
  return required.result(std::move(beacon));
}

VideoAdMetadata VideoAdMetadataParser::parse(const JSONObject& json) {
  VideoAdMetadata metadata;
  if (const auto events = json.objects("events")) {
    metadata.beacons = detail::parsedItems<VideoBeaconParser, VideoBeacon>(*events);
  }
  if (const auto segments = json.objects("segments")) {
    metadata.segments = detail::parsedItems<VideoSegmentParser, VideoSegment>(*segments);
  }
  return metadata;
}

}  // namespace orvo
