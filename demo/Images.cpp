#include <demo/Bytes.h>
#include <demo/Images.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstdint>

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

const Colour& colourOf(std::string_view name) {
  std::uint32_t hash = 2166136261;
  for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619;
  return kColours[hash % kColours.size()];
}

/// The lower fifth of the picture is the ground.
bool isGround(int row, int height) { return row >= height - height / 5; }

std::uint32_t crc32(std::string_view bytes) {
  std::uint32_t crc = 0xFFFFFFFF;
  for (const char c : bytes) {
    crc ^= static_cast<unsigned char>(c);
    for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320 : 0);
  }
  return ~crc;
}

std::uint32_t adler32(std::string_view bytes) {
  std::uint32_t low = 1;
  std::uint32_t high = 0;
  for (const char c : bytes) {
    low = (low + static_cast<unsigned char>(c)) % 65521;
    high = (high + low) % 65521;
  }
  return high << 16 | low;
}

void appendChunk(std::string& png, std::string_view type, std::string_view content) {
  appendBigEndian(png, content.size(), 4);
  const std::size_t start = png.size();
  png.append(type).append(content);
  appendBigEndian(png, crc32(std::string_view(png).substr(start)), 4);
}

/// A zlib stream of stored blocks: nothing is compressed.
std::string stored(std::string_view bytes) {
  constexpr std::size_t kLargestBlock = 65535;
  std::string out("\x78\x01");
  for (std::size_t offset = 0; offset < bytes.size(); offset += kLargestBlock) {
    const std::string_view block = bytes.substr(offset, kLargestBlock);
    out += offset + block.size() == bytes.size() ? '\1' : '\0';
    for (const std::size_t length : {block.size(), ~block.size()}) {
      out += static_cast<char>(length & 0xFF);
      out += static_cast<char>(length >> 8 & 0xFF);
    }
    out += block;
  }
  appendBigEndian(out, adler32(bytes), 4);
  return out;
}

/// One bit per pixel, with a palette of two colours.
std::string pngFile(const Colour& colour, ImageSize size) {
  std::string header;
  appendBigEndian(header, static_cast<std::uint64_t>(size.width), 4);
  appendBigEndian(header, static_cast<std::uint64_t>(size.height), 4);
  header.append("\x01\x03\x00\x00\x00", 5);  // depth 1, palette, no interlacing
  std::string palette(colour.begin(), colour.end());
  palette.append(kGround.begin(), kGround.end());
  std::string pixels;
  for (int row = 0; row < size.height; ++row) {
    pixels += '\0';  // no filter
    pixels.append(static_cast<std::size_t>(size.width + 7) / 8,
                  isGround(row, size.height) ? '\xFF' : '\0');
  }
  std::string png("\x89PNG\r\n\x1A\n");
  appendChunk(png, "IHDR", header);
  appendChunk(png, "PLTE", palette);
  appendChunk(png, "IDAT", stored(pixels));
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
std::string jpegFile(const Colour& colour, ImageSize size) {
  std::string jpeg = jpegHead(size);
  BitWriter bits(jpeg);
  std::array<int, 3> previous{};
  for (int y = 0; y < size.height; y += 8) {
    const auto wanted = luminanceAndChroma(isGround(y, size.height) ? kGround : colour);
    for (int x = 0; x < size.width; x += 8) {
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

Transformation parseTransformation(std::string_view text) {
  Transformation result;
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
  return result;
}

std::string imageFile(std::string_view name, const Transformation& transformation) {
  const Colour& colour = colourOf(name);
  return transformation.png ? pngFile(colour, transformation.size)
                            : jpegFile(colour, transformation.size);
}

}  // namespace orvo::demo
