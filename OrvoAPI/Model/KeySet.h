#pragma once

#include <OrvoAPI/Base/RawValue.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>

namespace orvo {

/// A small set of an enumeration's cases, in declaration order. A value.
template <NamedEnum Key>
class KeySet {
  static_assert(std::size(enumCases<Key>) <= 32);

 public:
  KeySet() = default;
  /// A bit for each key, the first declared being the lowest.
  [[nodiscard]] static constexpr KeySet fromBits(std::uint32_t bits) {
    KeySet set;
    set.bits_ = bits;
    return set;
  }

  constexpr void insert(Key key) { bits_ |= bit(key); }
  [[nodiscard]] constexpr bool contains(Key key) const { return (bits_ & bit(key)) != 0; }
  [[nodiscard]] constexpr std::size_t size() const {
    return static_cast<std::size_t>(std::popcount(bits_));
  }
  [[nodiscard]] constexpr bool empty() const { return bits_ == 0; }
  /// How many of the set's keys come before `key`.
  [[nodiscard]] constexpr std::size_t rank(Key key) const {
    return static_cast<std::size_t>(std::popcount(bits_ & (bit(key) - 1)));
  }

  /// The first key, of a set that is not empty.
  [[nodiscard]] constexpr Key first() const { return static_cast<Key>(std::countr_zero(bits_)); }
  constexpr void removeFirst() { bits_ &= bits_ - 1; }

  friend constexpr bool operator==(KeySet, KeySet) = default;

 private:
  [[nodiscard]] static constexpr std::uint32_t bit(Key key) {
    return std::uint32_t{1} << static_cast<unsigned>(key);
  }

  std::uint32_t bits_ = 0;
};

/// Iterates over a map whose entries are made on access: pairs of key and value, in the declaration
/// order of the keys. Not thread-safe; the map must outlive it.
template <class Table, NamedEnum Key>
class KeyedTableIterator {
 public:
  using iterator_concept = std::forward_iterator_tag;
  using value_type = std::pair<Key, typename Table::Value>;
  using difference_type = std::ptrdiff_t;

  KeyedTableIterator() = default;
  KeyedTableIterator(const Table* table, KeySet<Key> rest) : table_(table), rest_(rest) {}

  [[nodiscard]] value_type operator*() const {
    return {rest_.first(), *table_->find(rest_.first())};
  }
  KeyedTableIterator& operator++() {
    rest_.removeFirst();
    return *this;
  }
  KeyedTableIterator operator++(int) {
    auto before = *this;
    ++*this;
    return before;
  }
  friend bool operator==(const KeyedTableIterator&, const KeyedTableIterator&) = default;

 private:
  const Table* table_ = nullptr;
  KeySet<Key> rest_;
};

}  // namespace orvo
