#include <OrvoAPI/Linear/LinearProgram.h>
#include <OrvoAPI/Model/ContentItem.h>
#include <OrvoAPI/Model/ItemCollection.h>
#include <OrvoAPI/Model/LineupTemplateImage.h>
#include <OrvoAPI/Model/SearchCollection.h>
#include <gtest/gtest.h>

namespace orvo {
namespace {

/// All cases in order: the name, and the raw value where it is another.
template <NamedEnum E>
std::string cases() {
  std::string text;
  for (std::size_t i = 0; i < std::size(enumCases<E>); ++i) {
    const auto value = static_cast<E>(i);
    text.append(i ? " " : "").append(caseName(value));
    if constexpr (RawValueEnum<E>) {
      if (rawValue(value) != caseName(value)) text.append("=").append(rawValue(value));
      EXPECT_EQ(fromRawValue<E>(rawValue(value)), value);
    }
  }
  return text;
}

// A case is found by its place in the table, so the declarations are pinned by their last cases.
static_assert(caseName(StatusCode::unknown) == "unknown");
static_assert(caseName(ImageResourceKey::coverSquare) == "coverSquare");
static_assert(caseName(ImageResourceKey::logoLandscape) == "logoLandscape");
static_assert(caseName(LineupTemplateImage::ResourceKey::icon) == "icon");
static_assert(caseName(Page::ContentKind::generic) == "generic");
static_assert(caseName(Video::ContentKind::generic) == "generic");
static_assert(rawValue(SearchCollection::ResultsKind::top) == "top_results");
static_assert(!RawValueEnum<Video::PlaybackStatus>);

TEST(RawValue, IsWhatTheServiceSends) {
  EXPECT_EQ(cases<StatusCode>(), "post unconfirmed pre trim delayed canceled live unknown");
  EXPECT_EQ(cases<AppAction::Kind>(), "play playlist view tv");
  EXPECT_EQ(cases<Video::ContentKind>(), "episode clip film liveProgram=live_program generic");
  EXPECT_EQ(cases<Video::PlaybackStatus>(), "available unavailable");
  EXPECT_EQ(cases<LinearProgram::PlaybackStatus>(), "available unavailable");
  EXPECT_EQ(cases<Page::ContentKind>(),
            "show film stop channel subchannel format event year generic");
  EXPECT_EQ(cases<ContentItem::Kind>(), "video page");
  EXPECT_EQ(cases<ItemCollection::Kind>(), "generic featured schedule");
  EXPECT_EQ(cases<ItemCollection::ContentsKind>(), "videos pages mixed");
  EXPECT_EQ(cases<SearchCollection::ContentsKind>(), "videos pages mixed");
  EXPECT_EQ(cases<SearchCollection::ResultsKind>(),
            "videos pages events channels films shows top=top_results");
  EXPECT_EQ(cases<LineupDisplayKind>(), "grid lineup");
}

TEST(RawValue, NamesTheResources) {
  const std::string shared =
      "banner=orvo_display_art_banner landscape=orvo_display_art_landscape "
      "portrait=orvo_display_art_portrait square=orvo_display_art_square "
      "coverBanner=orvo_cover_art_banner coverLandscape=orvo_cover_art_landscape "
      "coverPortrait=orvo_cover_art_portrait coverSquare=orvo_cover_art_square "
      "backgroundPortrait=orvo_background_portrait "
      "backgroundLandscape=orvo_background_landscape ";
  EXPECT_EQ(cases<ImageResourceKey>(),
            shared +
                "backgroundSquare=orvo_background_square backgroundBanner=orvo_background_banner "
                "titleTreatmentLandscape=orvo_title_treatment_landscape "
                "titleTreatmentSquare=orvo_title_treatment_square "
                "logoLandscape=orvo_logo_landscape");
  EXPECT_EQ(cases<LineupTemplateImage::ResourceKey>(), shared + "icon");
  EXPECT_EQ(cases<VideoPreviewKey>(),
            "low=short_preview_mp4_low medium=short_preview_mp4_medium "
            "high=short_preview_mp4_high");
  EXPECT_EQ(cases<ImageResourceCrop>(), "Fill=fill Fit=fit");
  EXPECT_EQ(cases<ImageResourceFormat>(), "PNG=png JPG=jpg");
  EXPECT_EQ(cases<LineupTemplateImage::Crop>(), "fill fit");
  EXPECT_EQ(cases<LineupTemplateImage::Format>(), "png jpg");
}

TEST(RawValue, IsMatchedExactly) {
  for (const char* text : {"", "Live", "live ", "liv", "cancelled"}) {
    EXPECT_EQ(fromRawValue<StatusCode>(text), std::nullopt) << text;
  }
  EXPECT_EQ(fromRawValue<Video::ContentKind>("liveProgram"), std::nullopt);
}

}  // namespace
}  // namespace orvo
