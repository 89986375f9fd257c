#pragma once

#include <OrvoAPI/Base/Data.h>
#include <OrvoAPI/HTTP/LargeBodiesInternal.h>

#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>

namespace orvo::detail {

/// Gives a buffer back for the next body.
struct RecycleBuffer {
  std::size_t capacity = 0;
  std::shared_ptr<LargeBodies::Share> share = nullptr;  // of a large one
  void operator()(char* buffer) const noexcept;
};

/// Collects the bytes of one body. Not thread-safe. The buffers of bodies that were dropped, on
/// whatever thread, are kept for the next ones up to a bound: memory that one thread allocates and
/// another frees costs nearly as much as the transfer.
class BodyBuffer {
 public:
  BodyBuffer() = default;
  /// For a body of the host whose share this is.
  explicit BodyBuffer(std::shared_ptr<LargeBodies::Share> share) : share_(std::move(share)) {}

  [[nodiscard]] std::size_t size() const { return size_; }

  /// Makes room for that many bytes in all, as far as that figure is credible.
  void expect(std::size_t size);
  void append(std::string_view bytes);

  /// Hands the bytes over and starts afresh.
  [[nodiscard]] Data take();

 private:
  using Buffer = std::unique_ptr<char[], RecycleBuffer>;

  void grow(std::size_t capacity);

  std::shared_ptr<LargeBodies::Share> share_;
  Buffer buffer_;
  std::size_t size_ = 0;
  std::size_t expected_ = 0;
};

}  // namespace orvo::detail
