#include <OrvoAPI/Model/VideoAdMetadata.h>
#include <gtest/gtest.h>

#include "tests/support/Document.h"

namespace orvo {
namespace {

const Document kBeacon{{"name", R"("start")"}, {"time", "5"}, {"url", R"("http://b.example")"}};
const Document kSegment{{"ad", "true"}, {"start", "10"}, {"duration", "5.5"}};

TEST(VideoAdMetadataParser, DropsWhatItCannotRead) {
  const auto metadata = VideoAdMetadataParser::parse(
      Document{{"events", "[" + kBeacon.text() + "," + kBeacon.with("time", R"("5")").text() + "]"},
               {"segments", "[" + kSegment.without("ad").text() + "," + kSegment.text() + "]"}});
  ASSERT_EQ(metadata.beacons.size(), 1U);
  EXPECT_EQ(metadata.beacons[0].name + metadata.beacons[0].url.text(), "starthttp://b.example");
  EXPECT_EQ(metadata.beacons[0].time, 5);
  ASSERT_EQ(metadata.segments.size(), 1U);
  EXPECT_TRUE(metadata.segments[0].ad);
  EXPECT_EQ(metadata.segments[0].start + metadata.segments[0].duration, 15.5);
  const auto none = VideoAdMetadataParser::parse(object(R"({"events": {}, "segments": [1]})"));
  EXPECT_TRUE(none.beacons.empty() && none.segments.empty());
}

TEST(VideoAdMetadataParser, ReportsEachRequiredMember) {
  expectRequired("VideoBeacon", kBeacon, {"name", "time", "url"}, VideoBeaconParser::parse);
  expectRequired("VideoSegment", kSegment, {"ad", "start", "duration"}, VideoSegmentParser::parse);
  for (const char* url : {R"("/relative")", R"("")", R"("http://a b")"}) {
    EXPECT_EQ(failureOf(VideoBeaconParser::parse(kBeacon.with("url", url))), "VideoBeacon: url");
  }
}

TEST(VideoSegment, ContainsNeitherOfItsEnds) {
  const VideoSegment segment{.ad = true, .start = 10, .duration = 5};
  EXPECT_FALSE(segment.contains(10));
  EXPECT_TRUE(segment.contains(14.999));
  EXPECT_FALSE(segment.contains(15));
}

}  // namespace
}  // namespace orvo
