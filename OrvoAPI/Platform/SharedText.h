#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>

namespace orvo {

/// A text that its copies share: one allocation for all of them. Immutable; safe to use from any
/// thread.
class SharedText {
 public:
  SharedText() = default;
  explicit SharedText(std::string_view text)
      : SharedText(text.size(), [text](char* out) { std::copy(text.begin(), text.end(), out); }) {}
  /// `write` fills the `size` characters at the address that it gets.
  template <std::invocable<char*> Write>
  SharedText(std::size_t size, Write&& write) : size_(size) {
    if (size == 0) return;
    auto characters = std::make_shared_for_overwrite<char[]>(size);
    std::forward<Write>(write)(characters.get());
    characters_ = std::move(characters);
  }

  [[nodiscard]] std::string_view view() const { return {characters_.get(), size_}; }

  friend bool operator==(const SharedText& lhs, const SharedText& rhs) {
    return lhs.view() == rhs.view();
  }

 private:
  std::shared_ptr<const char[]> characters_;
  std::size_t size_ = 0;
};

}  // namespace orvo
