#include <OrvoAPI/Model/ItemCollection.h>
#include <OrvoAPI/Model/LineupTemplateImage.h>
#include <OrvoAPI/Model/SearchCollection.h>
#include <gtest/gtest.h>

#include <algorithm>
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

TEST(RawValue, IsMatchedExactly) {
  for (const char* text : {"", "Live", "live ", "liv", "cancelled"}) {
    EXPECT_EQ(fromRawValue<StatusCode>(text), std::nullopt) << text;
  }
  EXPECT_EQ(fromRawValue<StatusCode>("canceled"), StatusCode::canceled);
  EXPECT_EQ(fromRawValue<Video::ContentKind>("liveProgram"), std::nullopt);
}

}  // namespace
}  // namespace orvo
