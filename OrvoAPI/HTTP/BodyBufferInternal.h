#pragma once

#include <OrvoAPI/Base/Data.h>

#include <cstddef>
#include <memory>
#include <string_view>

namespace orvo::detail {

/// Gives a buffer back for the next body.
struct RecycleBuffer {
  std::size_t capacity = 0;
  void operator()(char* buffer) const noexcept;
};

/// Collects the bytes of one body. Not synchronised. The buffers of bodies that were dropped, on
/// whatever thread, are kept for the next ones up to a bound: memory that one thread allocates and
/// another frees costs nearly as much as the transfer.
class BodyBuffer {
 public:
  [[nodiscard]] std::size_t size() const { return size_; }

  /// Makes room for that many bytes in all, as far as that figure is credible.
  void expect(std::size_t size);
  void append(std::string_view bytes);

  /// Hands the bytes over and starts afresh.
  [[nodiscard]] Data take();

 private:
  using Buffer = std::unique_ptr<char[], RecycleBuffer>;

  void grow(std::size_t capacity);

  Buffer buffer_;
  std::size_t size_ = 0;
};

}  // namespace orvo::detail
