#pragma once

#include <OrvoAPI/Parsing/detail/JSONNode.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvo {

class JSONValue;
class JSONObject;
template <class Element>
class JSONArrayOf;

/// An array of anything.
using JSONArray = JSONArrayOf<JSONValue>;
/// An array that is known to hold nothing but objects.
using JSONObjects = JSONArrayOf<JSONObject>;
/// An array that is known to hold nothing but strings.
using JSONStrings = JSONArrayOf<std::string_view>;

/// One value of a JSON document: an immutable handle, thread-safe. All handles into a document
/// share its ownership; a text that one returns stays valid while any of them lives.
///
/// Nothing converts between kinds: a boolean is not a number, a number not a string.
class JSONValue {
 public:
  /// The kinds of JSON values.
  enum class Kind { null, boolean, number, string, array, object };

  /// The value null.
  JSONValue() = default;
  explicit JSONValue(detail::JSONNode node) : node_(std::move(node)) {}

  [[nodiscard]] Kind kind() const;
  [[nodiscard]] std::optional<std::string_view> string() const;
  [[nodiscard]] std::optional<double> number() const;
  /// A whole number in range, also one written 1.0 or 1e1.
  [[nodiscard]] std::optional<std::int64_t> integer() const;
  [[nodiscard]] std::optional<bool> boolean() const;
  [[nodiscard]] std::optional<JSONObject> object() const;
  [[nodiscard]] std::optional<JSONArray> array() const;
  /// An array whose every element is an object; nothing when one is of another kind.
  [[nodiscard]] std::optional<JSONObjects> objects() const;
  /// An array whose every element is a string; nothing when one is of another kind.
  [[nodiscard]] std::optional<JSONStrings> strings() const;

  /// The value as compact JSON, for errors and logs.
  [[nodiscard]] std::string text() const;

  /// For the parsers.
  [[nodiscard]] const detail::JSONNode& node() const { return node_; }

 private:
  friend class JSONObject;
  template <class Element>
  friend class JSONArrayOf;

  detail::JSONNode node_;
};

/// A value that is known to be an object; a handle as `JSONValue` is. With a key given twice the
/// first counts.
class JSONObject {
 public:
  class Iterator;
  /// A key with its value.
  struct Member {
    std::string_view key;
    JSONValue value;
  };

  /// For the reader; `node` is at an object.
  explicit JSONObject(detail::JSONNode node) : node_(std::move(node)) {}

  /// The value of the key, or nothing when the key is absent; the others also give nothing when the
  /// value is of another kind.
  [[nodiscard]] std::optional<JSONValue> value(std::string_view key) const;
  [[nodiscard]] std::optional<std::string_view> string(std::string_view key) const;
  [[nodiscard]] std::optional<double> number(std::string_view key) const;
  [[nodiscard]] std::optional<std::int64_t> integer(std::string_view key) const;
  [[nodiscard]] std::optional<bool> boolean(std::string_view key) const;
  [[nodiscard]] std::optional<JSONObject> object(std::string_view key) const;
  [[nodiscard]] std::optional<JSONArray> array(std::string_view key) const;
  [[nodiscard]] std::optional<JSONObjects> objects(std::string_view key) const;
  [[nodiscard]] std::optional<JSONStrings> strings(std::string_view key) const;

  /// Iterates over the members in document order, each key once. A range-based for binds
  /// `const auto& [key, value]`, valid until the next step.
  [[nodiscard]] Iterator begin() const;
  [[nodiscard]] std::default_sentinel_t end() const { return {}; }
  /// How many different keys there are; counts them.
  [[nodiscard]] std::size_t size() const;
  [[nodiscard]] bool empty() const;

  [[nodiscard]] JSONValue asValue() const { return JSONValue(node_); }
  /// For the parsers.
  [[nodiscard]] const detail::JSONNode& node() const { return node_; }

 private:
  template <class Element>
  friend class JSONArrayOf;

  detail::JSONNode node_;
};

/// Iterates over an object's members. Not thread-safe; keeps the document alive.
class JSONObject::Iterator {
 public:
  using iterator_concept = std::input_iterator_tag;
  using value_type = Member;
  using difference_type = std::ptrdiff_t;

  explicit Iterator(const detail::JSONNode& object);

  [[nodiscard]] const Member& operator*() const { return member_; }
  [[nodiscard]] const Member* operator->() const { return &member_; }
  Iterator& operator++();
  void operator++(int) { ++*this; }
  friend bool operator==(const Iterator& lhs, std::default_sentinel_t) { return lhs.atEnd(); }

 private:
  [[nodiscard]] bool atEnd() const { return position_ == end_; }
  void settle();

  Member member_;
  detail::JSONPosition position_{};
  detail::JSONPosition end_{};
  std::size_t ordinal_ = 0;
  /// The ordinal numbers of members whose key came before, the last one first.
  std::vector<std::size_t> repeated_;
};

/// An array of `JSONValue`, `JSONObject` or `std::string_view`; a thread-safe handle, like
/// `JSONValue`. Give it a name before a range-based for iterates over it: in `: *object.array(key)`
/// the temporary is destroyed before the loop begins.
template <class Element>
class JSONArrayOf {
 public:
  /// Iterates over the elements. Not thread-safe; the array or another handle must outlive it. An
  /// element that `*` returns is valid until the next step; copy it to keep it.
  class Iterator {
   public:
    using iterator_concept = std::input_iterator_tag;
    using value_type = Element;
    using difference_type = std::ptrdiff_t;

    [[nodiscard]] const Element& operator*() const { return *element_; }
    [[nodiscard]] const Element* operator->() const { return &*element_; }
    Iterator& operator++();
    void operator++(int) { ++*this; }
    friend bool operator==(const Iterator& lhs, std::default_sentinel_t) {
      return lhs.position_ == lhs.end_;
    }

   private:
    friend class JSONArrayOf;
    explicit Iterator(const detail::JSONNode& array);
    void settle();

    detail::JSONPosition position_{};
    detail::JSONPosition end_{};
    std::optional<Element> element_;
  };

  /// For the reader; `node` is at an array whose every element is of the kind.
  explicit JSONArrayOf(detail::JSONNode node) : node_(std::move(node)) {}

  [[nodiscard]] std::size_t size() const;
  [[nodiscard]] bool empty() const { return size() == 0; }
  [[nodiscard]] Iterator begin() const { return Iterator(node_); }
  [[nodiscard]] std::default_sentinel_t end() const { return {}; }

  [[nodiscard]] JSONValue asValue() const { return JSONValue(node_); }

 private:
  detail::JSONNode node_;
};

extern template class JSONArrayOf<JSONValue>;
extern template class JSONArrayOf<JSONObject>;
extern template class JSONArrayOf<std::string_view>;

}  // namespace orvo
