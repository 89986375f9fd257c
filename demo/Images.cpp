#include <demo/Bytes.h>
#include <demo/Images.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <vector>

namespace orvo::demo {

namespace {

using Colour = std::array<std::uint8_t, 3>;

constexpr int kLargestSide = 2048;
constexpr std::array<Colour, 6> kColours{{{0x1E, 0x4D, 0x6B},
                                          {0xC8, 0x40, 0x2F},
                                          {0xF2, 0xC2, 0x30},
                                          {0x2F, 0x7D, 0x5B},
                                          {0x5A, 0x3E, 0x78},
                                          {0xE8, 0x84, 0x24}}};
constexpr Colour kGround{0x10, 0x15, 0x1C};

constexpr Colour kLight{0xFF, 0xF4, 0xDC};

/// How much wider than high a rendition is.
double shapeOf(std::string_view rendition) {
  if (rendition.ends_with("banner")) return 3.0;
  if (rendition.ends_with("portrait")) return 2.0 / 3;
  if (rendition.ends_with("square")) return 1.0;
  return 16.0 / 9;
}

Colour mixed(const Colour& from, const Colour& to, double part) {
  Colour result{};
  for (std::size_t i = 0; i < result.size(); ++i) {
    result[i] = static_cast<std::uint8_t>(std::lround(from[i] + (to[i] - from[i]) * part));
  }
  return result;
}

/// A sky in a colour of its own, a sun, and two ranges of hills: what the name chooses.
class Landscape {
 public:
  Landscape(std::string_view name, ImageSize size) : size_(size) {
    std::uint32_t hash = 2166136261;
    for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619;
    sky_ = kColours[hash % kColours.size()];
    const double shorter = std::min(size.width, size.height);
    sunX_ = (0.2 + (hash >> 8 & 0xFF) / 425.0) * size.width;
    sunY_ = (0.2 + (hash >> 16 & 0xFF) / 1020.0) * size.height;
    sunRadius_ = 0.13 * shorter;
    const double phase = (hash >> 24) / 20.0;
    for (int x = 0; x < size.width; ++x) {
      const double at = 5.0 * x / size.width;
      far_.push_back((0.66 + 0.07 * std::sin(at + phase) + 0.03 * std::sin(2.7 * at)) *
                     size.height);
      near_.push_back((0.82 + 0.05 * std::sin(1.3 * at + 2 * phase)) * size.height);
    }
  }

  [[nodiscard]] Colour at(int x, int y) const {
    const auto column = static_cast<std::size_t>(x);
    if (y >= near_[column]) return kGround;
    if (y >= far_[column]) return mixed(sky_, kGround, 0.6);
    if (std::hypot(x - sunX_, y - sunY_) < sunRadius_) return mixed(sky_, kLight, 0.9);
    return mixed(sky_, kLight, 0.6 * y / size_.height);
  }

 private:
  ImageSize size_;
  Colour sky_{};
  double sunX_ = 0;
  double sunY_ = 0;
  double sunRadius_ = 0;
  /// Where the hills begin, for each column.
  std::vector<double> far_;
  std::vector<double> near_;
};

void appendChunk(std::string& png, std::string_view type, std::string_view content) {
  appendBigEndian(png, content.size(), 4);
  const std::size_t start = png.size();
  png.append(type).append(content);
  const auto* checked = reinterpret_cast<const Bytef*>(png.data()) + start;
  appendBigEndian(png, crc32(0, checked, static_cast<uInt>(png.size() - start)), 4);
}

std::string compressed(const std::string& bytes) {
  uLongf size = compressBound(bytes.size());
  std::string out(size, '\0');
  compress2(reinterpret_cast<Bytef*>(out.data()), &size,
            reinterpret_cast<const Bytef*>(bytes.data()), bytes.size(), Z_BEST_SPEED);
  out.resize(size);
  return out;
}

std::string pngFile(const Landscape& landscape, ImageSize size) {
  std::string header;
  appendBigEndian(header, static_cast<std::uint64_t>(size.width), 4);
  appendBigEndian(header, static_cast<std::uint64_t>(size.height), 4);
  header.append("\x08\x02\x00\x00\x00", 5);  // 8 bits of each colour, no interlacing
  std::string pixels;
  for (int y = 0; y < size.height; ++y) {
    pixels += '\0';  // no filter
    for (int x = 0; x < size.width; ++x) {
      const Colour colour = landscape.at(x, y);
      pixels.append(colour.begin(), colour.end());
    }
  }
  std::string png("\x89PNG\r\n\x1A\n");
  appendChunk(png, "IHDR", header);
  appendChunk(png, "IDAT", compressed(pixels));
  appendChunk(png, "IEND", "");
  return png;
}

/// Writes the entropy-coded part of a JPEG file.
class BitWriter {
 public:
  explicit BitWriter(std::string& out) : out_(out) {}

  void write(std::uint32_t bits, int count) {
    while (count-- > 0) {
      byte_ = byte_ << 1 | (bits >> count & 1);
      if (++filled_ == 8) flush();
    }
  }
  void finish() {
    while (filled_ != 0) write(1, 1);
  }

 private:
  void flush() {
    out_ += static_cast<char>(byte_);
    if (byte_ == 0xFF) out_ += '\0';  // else it would read as a marker
    byte_ = 0;
    filled_ = 0;
  }

  std::string& out_;
  std::uint32_t byte_ = 0;
  int filled_ = 0;
};

std::array<int, 3> luminanceAndChroma(const Colour& colour) {
  const double r = colour[0];
  const double g = colour[1];
  const double b = colour[2];
  return {static_cast<int>(0.299 * r + 0.587 * g + 0.114 * b) - 128,
          static_cast<int>(-0.168736 * r - 0.331264 * g + 0.5 * b),
          static_cast<int>(0.5 * r - 0.418688 * g - 0.081312 * b)};
}

/// The head of a baseline file with three components. The quantisation tables hold nothing but
/// eights, so that a block's first coefficient is its mean value; the Huffman tables know the
/// sizes 0 to 8 of that coefficient's difference, and the end of the block.
std::string jpegHead(ImageSize size) {
  std::string jpeg("\xFF\xD8", 2);
  const auto segment = [&](char marker, const std::string& content) {
    jpeg += '\xFF';
    jpeg += marker;
    appendBigEndian(jpeg, content.size() + 2, 2);
    jpeg += content;
  };
  segment('\xE0', std::string("JFIF\0\1\1\0\0\1\0\1\0\0", 14));
  segment('\xDB', std::string(1, '\0') + std::string(64, '\x08'));
  std::string frame("\x08", 1);
  appendBigEndian(frame, static_cast<std::uint64_t>(size.height), 2);
  appendBigEndian(frame, static_cast<std::uint64_t>(size.width), 2);
  segment('\xC0', frame + std::string("\3\1\x11\0\2\x11\0\3\x11\0", 10));
  segment('\xC4', std::string("\x00\1\0\0\0\x08\0\0\0\0\0\0\0\0\0\0\0", 17) +
                      std::string("\0\1\2\3\4\5\6\7\x08", 9));
  segment('\xC4', std::string("\x10\1\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 18));
  segment('\xDA', std::string("\3\1\0\2\0\3\0\0\x3F\0", 10));
  return jpeg;
}

/// Every block is of one colour: the difference to the block before it, and the block's end.
std::string jpegFile(const Landscape& landscape, ImageSize size) {
  std::string jpeg = jpegHead(size);
  BitWriter bits(jpeg);
  std::array<int, 3> previous{};
  for (int y = 0; y < size.height; y += 8) {
    for (int x = 0; x < size.width; x += 8) {
      const auto wanted = luminanceAndChroma(
          landscape.at(std::min(x + 4, size.width - 1), std::min(y + 4, size.height - 1)));
      for (std::size_t component = 0; component < 3; ++component) {
        const int difference = wanted[component] - previous[component];
        previous[component] = wanted[component];
        const auto magnitude = static_cast<unsigned>(std::abs(difference));
        const int length = static_cast<int>(std::bit_width(magnitude));
        if (length == 0) {
          bits.write(0, 1);
        } else {
          bits.write(0x10U + static_cast<unsigned>(length) - 1, 5);
          bits.write(difference > 0 ? magnitude : ~magnitude, length);
        }
        bits.write(0, 1);
      }
    }
  }
  bits.finish();
  return jpeg.append("\xFF\xD9", 2);
}

}  // namespace

Transformation parseTransformation(std::string_view text, std::string_view rendition) {
  Transformation result{.size = {.width = 0, .height = 0}};
  while (!text.empty()) {
    const std::string_view token = text.substr(0, text.find(','));
    text.remove_prefix(std::min(text.size(), token.size() + 1));
    if (token == "f_png") result.png = true;
    int* side = token.starts_with("w_")   ? &result.size.width
                : token.starts_with("h_") ? &result.size.height
                                          : nullptr;
    if (side == nullptr) continue;
    int value = kLargestSide;  // stays so when the number is too large to be read
    std::from_chars(token.data() + 2, token.data() + token.size(), value);
    *side = std::clamp(value, 1, kLargestSide);
  }
  const double shape = shapeOf(rendition);
  ImageSize& size = result.size;
  if (size.width == 0 && size.height == 0) size.width = 640;
  if (size.width == 0) size.width = static_cast<int>(size.height * shape);
  if (size.height == 0) size.height = static_cast<int>(size.width / shape);
  size.width = std::clamp(size.width, 1, kLargestSide);
  size.height = std::clamp(size.height, 1, kLargestSide);
  return result;
}

std::string imageFile(std::string_view name, const Transformation& transformation) {
  const Landscape landscape(name, transformation.size);
  return transformation.png ? pngFile(landscape, transformation.size)
                            : jpegFile(landscape, transformation.size);
}

}  // namespace orvo::demo
