#pragma once

#include <OrvoAPI/Base/Shared.h>
#include <OrvoAPI/Linear/LineupSlot.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>
#include <vector>

namespace orvo {

namespace detail {
class LineupGrouping;
}

/// A list of a lineup's slots. It shares them with the other lists of the lineup: copying costs a
/// pointer, and a copy may outlive the lineup. Immutable and thread-safe.
class LineupSlots {
 public:
  /// Iterates over the list. A list that shares the slots must outlive it.
  class Iterator {
   public:
    using iterator_concept = std::forward_iterator_tag;
    using value_type = LineupSlot;
    using difference_type = std::ptrdiff_t;

    Iterator() = default;

    [[nodiscard]] const LineupSlot& operator*() const { return items_[*position_]; }
    [[nodiscard]] const LineupSlot* operator->() const { return &items_[*position_]; }
    Iterator& operator++() {
      ++position_;
      return *this;
    }
    Iterator operator++(int) { return {items_, position_++}; }
    friend bool operator==(const Iterator&, const Iterator&) = default;

   private:
    friend class LineupSlots;
    Iterator(const LineupSlot* items, const std::uint32_t* position)
        : items_(items), position_(position) {}

    const LineupSlot* items_ = nullptr;
    const std::uint32_t* position_ = nullptr;
  };

  LineupSlots() = default;

  [[nodiscard]] std::size_t size() const { return count_; }
  [[nodiscard]] bool empty() const { return count_ == 0; }
  [[nodiscard]] const LineupSlot& operator[](std::size_t index) const {
    return storage_->items[storage_->positions[first_ + index]];
  }
  [[nodiscard]] Iterator begin() const { return iterator(0); }
  [[nodiscard]] Iterator end() const { return iterator(count_); }

  /// Equal when the slots are, wherever they are held.
  friend bool operator==(const LineupSlots& lhs, const LineupSlots& rhs);

 private:
  friend class detail::LineupGrouping;

  /// What the lists share: the slots, and positions among them of which each list is a range.
  struct Storage {
    std::vector<LineupSlot> items;
    std::vector<std::uint32_t> positions;
  };

  /// The range of `storage->positions` that begins at `first`; `storage` is not null.
  LineupSlots(Shared<Storage> storage, std::size_t first, std::size_t count)
      : storage_(std::move(storage)), first_(first), count_(count) {}

  [[nodiscard]] Iterator iterator(std::size_t index) const {
    if (!storage_) return {};
    return {storage_->items.data(), storage_->positions.data() + first_ + index};
  }

  Shared<Storage> storage_;
  std::size_t first_ = 0;
  std::size_t count_ = 0;
};

}  // namespace orvo
