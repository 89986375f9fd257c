#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace orvo::detail {

/// A few different texts, known when compiling, none of them empty, numbered from 0. To find one
/// takes a multiplication and a comparison, however many there are.
class TextIndex {
 public:
  static constexpr std::size_t kMost = 32;
  static constexpr std::uint8_t kNone = 0xFF;

  template <std::size_t N>
  consteval explicit TextIndex(const std::string_view (&texts)[N]) : size_(N) {
    static_assert(N <= kMost);
    for (std::size_t number = 0; number < N; ++number) texts_[number] = texts[number];
    // Odd numbers, until one gives each text a place of its own.
    while (!place()) multiplier_ += 0x9E3779B8;
  }

  [[nodiscard]] constexpr std::size_t size() const { return size_; }
  [[nodiscard]] constexpr std::string_view operator[](std::size_t number) const {
    return texts_[number];
  }

  /// The number of a text that is among them.
  [[nodiscard]] consteval std::size_t numberOf(std::string_view text) const {
    for (std::size_t number = 0; number < size_; ++number) {
      if (texts_[number] == text) return number;
    }
    throw "not among the texts";
  }
  /// The number of the text, or `kNone`.
  [[nodiscard]] std::uint8_t find(std::string_view text) const {
    if (text.empty()) return kNone;
    const std::uint8_t number = numbers_[placeOf(text)];
    return number != kNone && equal(texts_[number], text) ? number : kNone;
  }

 private:
  template <class Word>
  [[nodiscard]] static Word difference(const char* lhs, const char* rhs) {
    Word left, right;
    std::memcpy(&left, lhs, sizeof(Word));
    std::memcpy(&right, rhs, sizeof(Word));
    return left ^ right;
  }

  /// For texts as short as keys a call of the C library would cost more than all else.
  [[nodiscard]] static bool equal(std::string_view lhs, std::string_view rhs) {
    const std::size_t size = lhs.size();
    if (size != rhs.size()) return false;
    const char* const left = lhs.data();
    const char* const right = rhs.data();
    if (size >= 8) {
      std::uint64_t differs = difference<std::uint64_t>(left + size - 8, right + size - 8);
      for (std::size_t at = 0; at + 8 < size; at += 8) {
        differs |= difference<std::uint64_t>(left + at, right + at);
      }
      return differs == 0;
    }
    if (size >= 4) {
      return (difference<std::uint32_t>(left, right) |
              difference<std::uint32_t>(left + size - 4, right + size - 4)) == 0;
    }
    return left[0] == right[0] && left[size / 2] == right[size / 2] &&
           left[size - 1] == right[size - 1];
  }

  [[nodiscard]] constexpr std::size_t placeOf(std::string_view text) const {
    const auto byte = [&](std::size_t at) {
      return static_cast<std::uint32_t>(static_cast<unsigned char>(text[at]));
    };
    const auto size = static_cast<std::uint32_t>(text.size());
    const std::uint32_t sample =
        size << 24 | byte(text.size() / 2) << 16 | byte(text.size() - 1) << 8 | byte(0);
    return sample * multiplier_ >> 25;
  }

  constexpr bool place() {
    numbers_.fill(kNone);
    for (std::size_t number = 0; number < size_; ++number) {
      auto& taken = numbers_[placeOf(texts_[number])];
      if (taken != kNone) return false;
      taken = static_cast<std::uint8_t>(number);
    }
    return true;
  }

  std::array<std::string_view, kMost> texts_;
  std::array<std::uint8_t, 128> numbers_{};
  std::size_t size_;
  std::uint32_t multiplier_ = 0x9E3779B1;
};

}  // namespace orvo::detail
