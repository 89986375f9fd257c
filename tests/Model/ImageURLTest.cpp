#include <OrvoAPI/Model/IconResource.h>
#include <OrvoAPI/Model/ImageResource.h>
#include <OrvoAPI/Model/LineupTemplateImage.h>
#include <OrvoAPI/Model/VideoPreview.h>
#include <gmock/gmock.h>
#include <tests/support/Document.h>
#include <tests/support/Test.h>

namespace orvo {
namespace {

ResourceHost host(double displayScale = 1) {
  return {.baseURL = URL::parse("https://r.example/v3/").value(), .displayScale = displayScale};
}

const ImageResource kImage{.key = ImageResourceKey::coverSquare, .productID = "AP-123"};
constexpr auto kPNG = ImageResourceFormat::PNG;
constexpr auto kJPG = ImageResourceFormat::JPG;

/// The transformation of an image's URL.
std::string tokens(ImageSize size, const ImageURLOptions& options, double scale = 1) {
  const auto text = kImage.url(size, options, host(scale)).text();
  return text.substr(text.rfind("im:i:") + 5);
}

TEST(ImageURL, IsBuiltOnTheResourceHost) {
  const std::string base = "https://r.example/v3/AP-123/orvo_cover_art_square/im:i:";
  EXPECT_EQ(kImage.url({300, 200}, {}, host(2)).text(), base + "c_fill,w_600,h_400,f_jpg,q_65");
  EXPECT_EQ(kImage.titleUrl({300, 200}, {}, host(2)).text(), base + "e_trim,w_600,h_400,f_png");
  const IconResource icon{.productID = "AP-123"};
  EXPECT_EQ(icon.iconURL(host(2)).text(), "https://r.example/v3/icon/AP-123/im:i:w_60,h_60,f_png");
  EXPECT_EQ(icon.iconURL(host(), {.size = {0, 8}, .format = kJPG}).text(),
            "https://r.example/v3/icon/AP-123/im:i:h_8,f_jpg");
  const VideoPreview preview{.key = VideoPreviewKey::high, .productID = "AP-123"};
  EXPECT_EQ(preview.url(host(2)).text(),
            "https://r.example/v3/AP-123/short_preview_mp4_high/video.mp4");
}

TEST(ImageURL, LeavesOutTokensWhoseConditionFailsAndPartsOfAPixel) {
  constexpr auto kFit = ImageResourceCrop::Fit;
  EXPECT_EQ(tokens({}, {}), "c_fill,f_jpg,q_65");
  EXPECT_EQ(tokens({-5, 10}, {}), "c_fill,h_10,f_jpg,q_65");
  EXPECT_EQ(tokens({1, 1}, {.crop = kFit, .format = kPNG}), "c_fit,w_1,h_1,f_png");
  EXPECT_EQ(tokens({100.7, 0.9}, {.format = kPNG}), "w_100,f_png");
  EXPECT_EQ(tokens({0.5, 33.5}, {.format = kPNG}, 3), "w_1,h_100,f_png");
  EXPECT_EQ(tokens({9.2e18, 1}, {.format = kPNG}), "w_9200000000000000000,h_1,f_png");
  EXPECT_THAT(kImage.titleUrl({1, 1}, {.format = kJPG}, host()).text(),
              testing::EndsWith("/im:i:e_trim,c_fill,w_1,h_1,f_jpg,q_65"));
}

TEST(ImageURLDeathTest, StopsAtASizeThatIsNoNumberOfPixels) {
  for (const double size : {std::numeric_limits<double>::quiet_NaN(),
                            -std::numeric_limits<double>::infinity(), 9.3e18}) {
    EXPECT_DEATH((void)kImage.url({size, 1}, {}, host()), "image size");
  }
}

TEST(ImageURL, TakesTheProductIdentifierAsItIs) {
  for (const auto& [productID, address] :
       {std::pair("", "https://r.example/short_preview_mp4_low/video.mp4"),
        std::pair("a:b", "https://r.example/v3/a:b/short_preview_mp4_low/video.mp4"),
        std::pair("a b", "/"), std::pair("100%", "/")}) {
    EXPECT_EQ(VideoPreview{.productID = productID}.url(host()).text(), address);
  }
}

TEST(TemplateURL, FillsInTheTransformation) {
  const LineupTemplateImage image{"https://t.example/{c_transform}/b c.jpg?x={c_transform}"};
  const LineupTemplateURLOptions options{.crop = LineupTemplateImage::Crop::fit,
                                         .format = LineupTemplateImage::Format::png,
                                         .displayScale = 3};
  EXPECT_EQ(image.url({1, 2}, options)->text(),
            "https://t.example/c_fit,w_3,h_6,f_png/b%20c.jpg?x=c_fit,w_3,h_6,f_png");
  EXPECT_EQ(LineupTemplateImage::URLForTemplateString("x:{c_transform}", {10, 10})->text(),
            "x:c_fill,w_10,h_10,f_jpg,q_65");
}

TEST(TemplateURL, NeedsATemplateOfAnAbsoluteURL) {
  for (const char* text : {"", "a/{c_transform}", "https://t.example/{other}"}) {
    EXPECT_EQ(LineupTemplateImage{text}.url({1, 1}), std::nullopt) << text;
  }
}

TEST(ResourceTable, HoldsEachKnownNameOnceInDeclarationOrder) {
  const auto names = object(
      R"({"n": ["orvo_logo_landscape", "x", "orvo_display_art_banner", "orvo_logo_landscape"]})");
  const auto table = ImageResourceParser::parse(*names.strings("n"), "id");
  std::string walk;
  for (const auto& [key, image] : table) walk.append(caseName(image.key)).append(image.productID);
  EXPECT_EQ(walk, "banneridlogoLandscapeid");
  EXPECT_EQ(table.size(), 2U);
  EXPECT_EQ(table.find(ImageResourceKey::square), std::nullopt);
  EXPECT_NE(table, ImageResourceParser::parse(*names.strings("n"), "other"));
}

}  // namespace
}  // namespace orvo
