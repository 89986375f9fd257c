#include <OrvoAPI/Model/ContentItem.h>
#include <OrvoAPI/Model/SearchCollection.h>
#include <OrvoAPI/Model/VideoAdMetadata.h>
#include <gtest/gtest.h>

namespace orvo {
namespace {

TEST(Video, IsEqualByTextsAndDuration) {
  const Video video{.id = "a", .title = "T", .subheading = "U", .shortDescription = "S"};
  Video other = video;
  other.status.code = StatusCode::live;
  EXPECT_EQ(video, other);
  for (auto field : {&Video::id, &Video::title, &Video::subheading, &Video::shortDescription}) {
    other = video;
    other.*field = "x";
    EXPECT_NE(video, other);
  }
  other = video;
  other.duration = 0;
  EXPECT_NE(video, other);
}

TEST(Page, DiffersByItsStatusNotByWhatDescribesIt) {
  const Page page{.id = "p", .title = "T"};
  Page other{.id = "p", .title = "T", .shortDescription = "S", .iconID = "i"};
  EXPECT_EQ(page, other);
  other.status.code = StatusCode::live;
  EXPECT_NE(page, other);
}

TEST(Status, IsEqualByCodeAndTimes) {
  const Status status{.code = StatusCode::live, .startTime = Date(1), .endTime = Date(2)};
  Status other{.code = StatusCode::live, .label = "b", .ttl = 7, .message = "M"};
  EXPECT_NE(status, other);
  other.startTime = Date(1);
  EXPECT_NE(status, other);
  other.endTime = Date(2);
  EXPECT_EQ(status, other);
  other.code = StatusCode::post;
  EXPECT_NE(status, other);
}

TEST(ContentItem, LivesAsItsContentAndEqualsNoOtherKind) {
  Video video{.id = "a", .title = "T", .status = {.ttl = 7}};
  const ContentItem item(video);
  EXPECT_EQ(item.ttl(), 300) << "nobody knows an unknown state's end";
  video.status.code = StatusCode::live;
  EXPECT_EQ(ContentItem(video).ttl(), 7);
  EXPECT_EQ((Page{.id = "a", .title = "T", .status = video.status}.ttl()), 7);
  EXPECT_NE(item, ContentItem(Page{.id = "a", .title = "T"}));
}

TEST(SearchCollection, MadeLocallyIsLabelledByItsKind) {
  const auto none = SearchCollection::empty("q", SearchCollection::ResultsKind::top);
  EXPECT_EQ(none.query + none.label + none.shortLabel, "qtop_resultstop_results");
  EXPECT_TRUE(none.meta == PagingMeta{} && none.items.empty());
}

TEST(VideoSegment, ContainsNeitherOfItsEnds) {
  const VideoSegment segment{.ad = true, .start = 10, .duration = 5};
  EXPECT_FALSE(segment.contains(10));
  EXPECT_TRUE(segment.contains(14.999));
  EXPECT_FALSE(segment.contains(15));
}

}  // namespace
}  // namespace orvo
