#pragma once

#include <OrvoAPI/Base/RawValue.h>
#include <OrvoAPI/Base/detail/SharedText.h>
#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/HTTP/URL.h>
#include <OrvoAPI/Model/KeySet.h>
#include <OrvoAPI/Model/ResourceHost.h>
#include <OrvoAPI/Parsing/JSONValue.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvo {

namespace detail {
class LineupSlotReader;
}

/// How an image is fitted into the size asked for.
enum class LineupTemplateImageCrop { fill, fit };

template <>
inline constexpr EnumCase enumCases<LineupTemplateImageCrop>[] = {{"fill"}, {"fit"}};

/// The format that the image server is asked for.
enum class LineupTemplateImageFormat { png, jpg };

template <>
inline constexpr EnumCase enumCases<LineupTemplateImageFormat>[] = {{"png"}, {"jpg"}};

/// Without a crop a jpg fills the size and a png is not cropped.
struct LineupTemplateURLOptions {
  std::optional<LineupTemplateImageCrop> crop = std::nullopt;
  LineupTemplateImageFormat format = LineupTemplateImageFormat::jpg;
  /// Pixels per point of the display.
  double displayScale = 1;
};

/// An image of a lineup's slot: a whole URL as text, with "{c_transform}" where the transformation
/// is to go.
struct LineupTemplateImage {
  /// The renditions of a slot's artwork.
  enum class ResourceKey {
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
    icon
  };
  using Crop = LineupTemplateImageCrop;
  using Format = LineupTemplateImageFormat;

  std::string template_;

  /// The image's address; nothing when the template makes no valid absolute URL. A size that is not
  /// a finite 64-bit number of pixels terminates the process.
  [[nodiscard]] std::optional<URL> url(ImageSize size,
                                       const LineupTemplateURLOptions& options = {}) const;
  [[nodiscard]] static std::optional<URL> URLForTemplateString(
      std::string_view templateString, ImageSize size,
      const LineupTemplateURLOptions& options = {});

  friend bool operator==(const LineupTemplateImage&, const LineupTemplateImage&) = default;
};

template <>
inline constexpr EnumCase enumCases<LineupTemplateImage::ResourceKey>[] = {
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
    {"icon"}};

/// A slot's images by key. Immutable and thread-safe. All templates are one shared text; the
/// records are made on access.
class LineupTemplateImages {
 public:
  using Key = LineupTemplateImage::ResourceKey;
  using Value = LineupTemplateImage;
  using Iterator = KeyedTableIterator<LineupTemplateImages, Key>;

  LineupTemplateImages() = default;

  [[nodiscard]] std::optional<LineupTemplateImage> find(Key key) const;
  [[nodiscard]] bool contains(Key key) const { return keys_.contains(key); }
  [[nodiscard]] std::size_t size() const { return keys_.size(); }
  [[nodiscard]] bool empty() const { return keys_.empty(); }

  /// Pairs of key and image, in declaration order of the keys.
  [[nodiscard]] Iterator begin() const { return {this, keys_}; }
  [[nodiscard]] Iterator end() const { return {this, {}}; }

  friend bool operator==(const LineupTemplateImages&, const LineupTemplateImages&) = default;

 private:
  friend class detail::LineupSlotReader;
  using Length = std::uint32_t;

  /// A template for each key, in declaration order of the keys.
  LineupTemplateImages(KeySet<Key> keys, const std::string_view* templates);

  KeySet<Key> keys_;
  /// The lengths of the templates, in the order of `keys_`, and after them the templates.
  detail::SharedText templates_;
};

/// Reads an image's template. Stateless; may be called from any thread.
struct LineupTemplateImageParser {
  [[nodiscard]] static Result<LineupTemplateImage> parse(const JSONObject& json);
};

}  // namespace orvo
