#include <OrvoAPI/Model/ContentItem.h>
#include <OrvoAPI/Model/LineupTemplateImage.h>
#include <OrvoAPI/Model/SearchCollection.h>
#include <OrvoAPI/Model/VideoAdMetadata.h>
#include <tests/support/Test.h>

#include <span>

namespace orvo {
namespace {

// A case is found by its place in its table. These hold the tables to their declarations: a case
// that one of them lacks or has too often moves the last one.
static_assert(caseName(StatusCode::unknown) == "unknown" && std::size(enumCases<StatusCode>) == 8);
static_assert(caseName(ImageResourceKey::coverSquare) == "coverSquare");
static_assert(caseName(ImageResourceKey::logoLandscape) == "logoLandscape");
static_assert(caseName(LineupTemplateImage::ResourceKey::icon) == "icon");
// A lineup's images have the same names as the others.
static_assert(std::ranges::equal(std::span(enumCases<LineupTemplateImage::ResourceKey>).first<10>(),
                                 std::span(enumCases<ImageResourceKey>).first<10>(),
                                 [](const auto& lhs, const auto& rhs) {
                                   return lhs.name == rhs.name && lhs.rawValue == rhs.rawValue;
                                 }));
static_assert(caseName(Page::ContentKind::generic) == "generic");
static_assert(caseName(Video::ContentKind::generic) == "generic");
static_assert(rawValue(SearchCollection::ResultsKind::top) == "top_results");
static_assert(caseName(ImageResourceFormat::JPG) == "JPG" &&
              rawValue(ImageResourceFormat::JPG) == "jpg");
static_assert(!RawValueEnum<Video::PlaybackStatus>);

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
  const ContentItem page(Page{.id = "b", .title = "P"});
  EXPECT_NE(item, ContentItem(Page{.id = "a", .title = "T"}));
  EXPECT_EQ(item.id() + item.title() + page.id() + page.title(), "aTbP");
}

TEST(VideoSegment, ContainsNeitherOfItsEnds) {
  const VideoSegment segment{.ad = true, .start = 10, .duration = 5};
  EXPECT_FALSE(segment.contains(10));
  EXPECT_TRUE(segment.contains(14.999));
  EXPECT_FALSE(segment.contains(15));
}

}  // namespace
}  // namespace orvo
