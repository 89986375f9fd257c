#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>

namespace orvo {

/// The bytes of a body: immutable and shared, so that copying costs a pointer. Thread-safe.
class Data {
 public:
  /// Readable bytes that follow the last one, so that a vectorised reader may read past the end.
  static constexpr std::size_t kPadding = 64;

  Data() = default;
  /// Copies the bytes.
  explicit Data(std::string_view bytes);
  /// Shares a buffer that has `kPadding` readable bytes after the first `size`.
  Data(std::shared_ptr<const char> padded, std::size_t size)
      : bytes_(std::move(padded)), size_(size) {}

  [[nodiscard]] std::string_view view() const { return {bytes_.get(), size_}; }
  [[nodiscard]] std::size_t size() const { return size_; }
  [[nodiscard]] bool empty() const { return size_ == 0; }

  friend bool operator==(const Data& lhs, const Data& rhs) { return lhs.view() == rhs.view(); }

 private:
  std::shared_ptr<const char> bytes_;
  std::size_t size_ = 0;
};

}  // namespace orvo
