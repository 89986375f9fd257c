#include <OrvoAPI/Base/ImmortalInternal.h>
#include <OrvoAPI/Base/detail/Lock.h>
#include <OrvoAPI/HTTP/BodyBufferInternal.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <new>
#include <utility>

namespace orvo::detail {
namespace {

constexpr std::size_t kSmallestCapacity = std::size_t{4} << 10;
constexpr std::size_t kLargestKept = LargeBodies::kSmallest;
constexpr std::size_t kMostBytesKept = std::size_t{2} << 20;
constexpr std::size_t kSizeClasses =
    std::bit_width(kLargestKept) - std::bit_width(kSmallestCapacity) + 1;

/// Free buffers by their capacity, a power of two. Safe to use from any thread.
class BufferPool {
 public:
  static BufferPool& shared() {
    static auto* const pool = new (immortalPlace<BufferPool>()) BufferPool;
    return *pool;
  }

  char* take(std::size_t capacity) {
    if (capacity <= kLargestKept) {
      const LockGuard guard(lock_);
      auto& list = lists_[sizeClass(capacity)];
      if (list != nullptr) {
        bytes_ -= capacity;
        return reinterpret_cast<char*>(std::exchange(list, list->next));
      }
    }
    return static_cast<char*>(::operator new(capacity));
  }

  void give(char* buffer, std::size_t capacity) noexcept {
    if (capacity <= kLargestKept) {
      const LockGuard guard(lock_);
      if (bytes_ + capacity <= kMostBytesKept) {
        bytes_ += capacity;
        auto& list = lists_[sizeClass(capacity)];
        list = new (buffer) Free{list};
        return;
      }
    }
    ::operator delete(buffer);
  }

 private:
  struct Free {
    Free* next;
  };

  static std::size_t sizeClass(std::size_t capacity) {
    return static_cast<std::size_t>(std::countr_zero(capacity / kSmallestCapacity));
  }

  Lock lock_;
  std::array<Free*, kSizeClasses> lists_ ORVO_GUARDED_BY(lock_) = {};
  std::size_t bytes_ ORVO_GUARDED_BY(lock_) = 0;
};

}  // namespace

void RecycleBuffer::operator()(char* buffer) const noexcept {
  BufferPool::shared().give(buffer, capacity);
  if (share != nullptr) LargeBodies::shared().giveBack(*share, capacity);
}

void BodyBuffer::expect(std::size_t size) {
  // What a server announces is only a promise.
  expected_ = size + Data::kPadding;
  const auto wanted = std::min(expected_, kLargestKept);
  if (wanted > buffer_.get_deleter().capacity) grow(wanted);
}

void BodyBuffer::append(std::string_view bytes) {
  const auto needed = size_ + bytes.size() + Data::kPadding;
  if (needed > buffer_.get_deleter().capacity) grow(needed);
  std::memcpy(buffer_.get() + size_, bytes.data(), bytes.size());
  size_ += bytes.size();
}

void BodyBuffer::grow(std::size_t capacity) {
  auto rounded = std::bit_ceil(std::max(capacity, kSmallestCapacity));
  // When a quarter of it is there, the rest is credible.
  constexpr std::size_t kQuarters = 4;
  const bool isCredible = capacity <= expected_ && expected_ <= kQuarters * size_;
  if (rounded > kLargestKept && isCredible) rounded = expected_;
  RecycleBuffer recycle{rounded};
  char* const bytes = BufferPool::shared().take(rounded);
  if (rounded > kLargestKept && share_ != nullptr) {
    LargeBodies::shared().take(*share_, rounded);
    recycle.share = share_;
  }
  Buffer larger(bytes, std::move(recycle));
  if (size_ > 0) std::memcpy(larger.get(), buffer_.get(), size_);
  buffer_ = std::move(larger);
}

Data BodyBuffer::take() {
  auto buffer = std::exchange(buffer_, Buffer());
  const auto size = std::exchange(size_, 0);
  expected_ = 0;
  if (size == 0) return {};
  std::memset(buffer.get() + size, 0, Data::kPadding);
  auto recycle = std::move(buffer.get_deleter());
  return {std::shared_ptr<char>(buffer.release(), std::move(recycle)), size};
}

}  // namespace orvo::detail
