#pragma once

#include <OrvoAPI/Base/RawValue.h>
#include <OrvoAPI/HTTP/URL.h>
#include <OrvoAPI/Model/ResourceHost.h>
#include <OrvoAPI/Model/ResourceTable.h>
#include <OrvoAPI/Parsing/JSONValue.h>

#include <optional>
#include <string>
#include <string_view>

namespace orvo {

/// The renditions of an item's artwork.
enum class ImageResourceKey {
  banner,
  landscape,
  portrait,
  square,
  coverBanner,
  coverLandscape,
  coverPortrait,
  coverSquare,
  backgroundPortrait,
  backgroundLandscape,
  backgroundSquare,
  backgroundBanner,
  titleTreatmentLandscape,
  titleTreatmentSquare,
  logoLandscape
};

template <>
inline constexpr EnumCase enumCases<ImageResourceKey>[] = {
    {"banner", "orvo_display_art_banner"},
    {"landscape", "orvo_display_art_landscape"},
    {"portrait", "orvo_display_art_portrait"},
    {"square", "orvo_display_art_square"},
    {"coverBanner", "orvo_cover_art_banner"},
    {"coverLandscape", "orvo_cover_art_landscape"},
    {"coverPortrait", "orvo_cover_art_portrait"},
    {"coverSquare", "orvo_cover_art_square"},
    {"backgroundPortrait", "orvo_background_portrait"},
    {"backgroundLandscape", "orvo_background_landscape"},
    {"backgroundSquare", "orvo_background_square"},
    {"backgroundBanner", "orvo_background_banner"},
    {"titleTreatmentLandscape", "orvo_title_treatment_landscape"},
    {"titleTreatmentSquare", "orvo_title_treatment_square"},
    {"logoLandscape", "orvo_logo_landscape"}};

/// How an image is fitted into the size asked for.
enum class ImageResourceCrop { Fill, Fit };

template <>
inline constexpr EnumCase enumCases<ImageResourceCrop>[] = {{"Fill", "fill"}, {"Fit", "fit"}};

/// The format that the image server is asked for.
enum class ImageResourceFormat { PNG, JPG };

template <>
inline constexpr EnumCase enumCases<ImageResourceFormat>[] = {{"PNG", "png"}, {"JPG", "jpg"}};

/// Without a crop a JPG fills the size and a PNG is not cropped.
struct ImageURLOptions {
  std::optional<ImageResourceCrop> crop = std::nullopt;
  ImageResourceFormat format = ImageResourceFormat::JPG;
};

/// As `ImageURLOptions`; titles are transparent, so they come as PNG unless asked otherwise.
struct TitleURLOptions {
  std::optional<ImageResourceCrop> crop = std::nullopt;
  ImageResourceFormat format = ImageResourceFormat::PNG;
};

/// One image of a product.
struct ImageResource {
  ImageResourceKey key = ImageResourceKey::banner;
  std::string productID;

  /// The image's address. Never fails: a product identifier that makes no URL gives "/". A size
  /// that is not a finite 64-bit number of pixels terminates the process, here and below.
  [[nodiscard]] URL url(ImageSize size, const ImageURLOptions& options,
                        const ResourceHost& host) const;

  /// As `url`, with the image's empty border cut off.
  [[nodiscard]] URL titleUrl(ImageSize size, const TitleURLOptions& options,
                             const ResourceHost& host) const;

  friend bool operator==(const ImageResource&, const ImageResource&) = default;
};

/// The images that a product has.
using ImageResources = ResourceTable<ImageResourceKey, ImageResource>;

/// Reads which images there are. Stateless; may be called from any thread.
struct ImageResourceParser {
  /// Takes a document's list of resource names; other names are skipped.
  [[nodiscard]] static ImageResources parse(const JSONStrings& json, std::string_view id);
};

}  // namespace orvo
