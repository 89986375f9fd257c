#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

namespace orvo::detail {

template <class Word>
[[nodiscard]] constexpr Word loadWord(const char* from) {
  Word word = 0;
  if (std::is_constant_evaluated()) {
    for (std::size_t i = 0; i < sizeof(Word); ++i) {
      const std::size_t place =
          std::endian::native == std::endian::little ? i : sizeof(Word) - 1 - i;
      word =
          static_cast<Word>(word | std::uint64_t{static_cast<unsigned char>(from[i])} << 8 * place);
    }
  } else {
    std::memcpy(&word, from, sizeof(Word));
  }
  return word;
}

/// The first and the last eight characters; of a shorter text, all of it in the first.
struct TextEnds {
  constexpr TextEnds() = default;
  constexpr explicit TextEnds(std::string_view text) {
    const char* const begin = text.data();
    const std::size_t size = text.size();
    if (size >= 8) {
      first = loadWord<std::uint64_t>(begin);
      last = loadWord<std::uint64_t>(begin + size - 8);
    } else if (size >= 4) {
      first = loadWord<std::uint32_t>(begin) |
              std::uint64_t{loadWord<std::uint32_t>(begin + size - 4)} << 32;
    } else {
      first = loadWord<std::uint8_t>(begin) |
              std::uint64_t{loadWord<std::uint8_t>(begin + size / 2)} << 8 |
              std::uint64_t{loadWord<std::uint8_t>(begin + size - 1)} << 16;
    }
  }
  [[nodiscard]] bool differ(const TextEnds& other) const {
    return ((first ^ other.first) | (last ^ other.last)) != 0;
  }

  std::uint64_t first = 0;
  std::uint64_t last = 0;
};

/// A few distinct texts, known at compile time, none of them empty, numbered from 0. Finding one
/// takes a multiplication and a comparison, however many there are.
class TextIndex {
 public:
  static constexpr std::size_t kMost = 32;
  static constexpr std::uint8_t kNone = 0xFF;

  template <std::size_t N>
  consteval explicit TextIndex(const std::string_view (&texts)[N]) : size_(N) {
    static_assert(N <= kMost);
    for (std::size_t number = 0; number < N; ++number) {
      entries_[number] = {texts[number], TextEnds(texts[number])};
    }
    // Odd numbers, until one gives each text a place of its own.
    while (!place()) multiplier_ += 0x9E3779B97F4A7C16;
  }

  [[nodiscard]] constexpr std::size_t size() const { return size_; }
  [[nodiscard]] constexpr std::string_view operator[](std::size_t number) const {
    return entries_[number].text;
  }

  /// The number of a text that is among them.
  [[nodiscard]] consteval std::size_t numberOf(std::string_view text) const {
    for (std::size_t number = 0; number < size_; ++number) {
      if (entries_[number].text == text) return number;
    }
    throw "not among the texts";
  }

  /// The number of the text, or `kNone`.
  [[nodiscard]] std::uint8_t find(std::string_view text) const {
    if (text.empty()) return kNone;
    const TextEnds ends(text);
    const std::uint8_t number = numbers_[placeOf(text, ends)];
    const Entry& entry = entries_[number];
    if (entry.text.size() != text.size() || entry.ends.differ(ends)) return kNone;
    const bool whole = text.size() <= 2 * sizeof(TextEnds::first);
    return whole || entry.text == text ? number : kNone;
  }

 private:
  struct Entry {
    std::string_view text;
    TextEnds ends;
  };

  [[nodiscard]] constexpr std::size_t placeOf(std::string_view text, const TextEnds& ends) const {
    const std::uint64_t sample = ends.first + std::rotl(ends.last, 23) + text.size();
    return static_cast<std::size_t>(sample * multiplier_ >> 57);
  }

  constexpr bool place() {
    numbers_.fill(static_cast<std::uint8_t>(size_));
    for (std::size_t number = 0; number < size_; ++number) {
      const Entry& entry = entries_[number];
      auto& taken = numbers_[placeOf(entry.text, entry.ends)];
      if (taken != size_) return false;
      taken = static_cast<std::uint8_t>(number);
    }
    return true;
  }

  /// After the last text comes an empty one, to which the places without a text lead.
  std::array<Entry, kMost + 1> entries_{};
  std::array<std::uint8_t, 128> numbers_{};
  std::size_t size_;
  std::uint64_t multiplier_ = 0x9E3779B97F4A7C15;
};

}  // namespace orvo::detail
