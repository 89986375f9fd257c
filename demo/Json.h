#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace orvo::demo {

/// A JSON document to be written: what the demo service serves and the tool prints. Members keep
/// the order in which they were added. A value; not synchronised.
class Json {
 public:
  struct Member;

  Json() = default;  ///< null
  Json(std::nullptr_t) {}
  template <std::same_as<bool> T>
  Json(T value) : value_(value) {}
  template <std::integral T>
  requires(!std::same_as<T, bool>) Json(T value) : value_(static_cast<std::int64_t>(value)) {}
  /// A number that is not finite is written as null: JSON has no other word for it.
  Json(double value) : value_(value) {}
  Json(std::string value) : value_(std::move(value)) {}
  Json(std::string_view value) : value_(std::string(value)) {}
  Json(const char* value) : value_(std::string(value)) {}
  /// Null when empty.
  template <class T>
  Json(const std::optional<T>& value) : Json(value ? Json(*value) : Json()) {}

  [[nodiscard]] static Json array(std::vector<Json> elements = {});
  [[nodiscard]] static Json object(std::initializer_list<Member> members = {});
  /// One element for each of the list's, as `toElement` gives it.
  template <class List, class F>
  [[nodiscard]] static Json list(const List& list, F&& toElement) {
    std::vector<Json> elements;
    elements.reserve(list.size());
    for (const auto& element : list) elements.push_back(toElement(element));
    return array(std::move(elements));
  }

  /// Appends to an array.
  void push(Json element);
  /// Appends a member to an object; the caller sees to it that keys differ.
  void set(std::string key, Json value);

  /// The document on one line. What a terminal would obey is escaped, bytes that are not UTF-8 come
  /// out as U+FFFD.
  [[nodiscard]] std::string text() const;
  /// A string as it is, nothing for null, and what `text` says of anything else.
  [[nodiscard]] std::string plainText() const;
  /// The document with an indentation of two spaces, for people.
  [[nodiscard]] std::string indentedText() const;

 private:
  using Array = std::vector<Json>;
  struct Object {
    std::vector<std::string> keys;
    std::vector<Json> values;
  };

  void write(std::string& out, int depth, bool indented) const;
  /// The values between brackets, with their keys if there are any.
  static void writeItems(std::string& out, const char* brackets, const Array& values,
                         const std::vector<std::string>& keys, int depth, bool indented);

  std::variant<std::monostate, bool, std::int64_t, double, std::string, Array, Object> value_;
};

struct Json::Member {
  std::string key;
  Json value;
};

}  // namespace orvo::demo
