#pragma once

#include <concepts>
#include <cstddef>
#include <memory>
#include <string_view>

namespace orvo::detail {

/// A text that its copies share: one allocation for all of them. Immutable and thread-safe.
class SharedText {
 public:
  SharedText() = default;
  explicit SharedText(std::string_view text);
  /// `write` fills the `size` characters at the address that it gets.
  template <std::invocable<char*> Write>
  SharedText(std::size_t size, Write&& write) {
    if (size > 0) write(allocate(size));
  }

  [[nodiscard]] std::string_view view() const { return {characters_.get(), size_}; }

  friend bool operator==(const SharedText& lhs, const SharedText& rhs) {
    return lhs.view() == rhs.view();
  }

 private:
  /// Room for the characters, which only the caller knows yet.
  [[nodiscard]] char* allocate(std::size_t size);

  std::shared_ptr<const char> characters_;
  std::size_t size_ = 0;
};

}  // namespace orvo::detail
