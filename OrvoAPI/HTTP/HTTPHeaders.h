#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvo {

/// The header fields of a request or response, in their order; names compare without regard to
/// case. A value; not thread-safe. The views that it returns are valid until it is modified.
class HTTPHeaders {
 public:
  /// A field, as views into the table.
  struct Field {
    std::string_view name;
    std::string_view value;
  };

  HTTPHeaders() = default;
  HTTPHeaders(std::initializer_list<Field> fields);

  /// Reserves space for that many fields with that many bytes in total.
  void reserve(std::size_t fields, std::size_t bytes);
  /// Adds a field after the others; those of the same name stay.
  void add(std::string_view name, std::string_view value);
  /// Puts a field in place of any others of that name.
  void set(std::string_view name, std::string_view value);
  void remove(std::string_view name);

  /// The value of the first field of that name.
  [[nodiscard]] std::optional<std::string_view> value(std::string_view name) const;
  /// The values of all fields of that name, in order.
  [[nodiscard]] std::vector<std::string_view> values(std::string_view name) const;
  [[nodiscard]] bool contains(std::string_view name) const { return value(name).has_value(); }

  [[nodiscard]] std::size_t size() const { return lengths_.size(); }
  [[nodiscard]] bool empty() const { return lengths_.empty(); }

  /// Iterates over the fields in order.
  class Iterator {
   public:
    using value_type = Field;
    using difference_type = std::ptrdiff_t;

    Iterator() = default;
    [[nodiscard]] Field operator*() const;
    Iterator& operator++();
    Iterator operator++(int);
    friend bool operator==(const Iterator& lhs, const Iterator& rhs) {
      return lhs.index_ == rhs.index_;
    }

   private:
    friend class HTTPHeaders;
    Iterator(const HTTPHeaders* headers, std::size_t index) : headers_(headers), index_(index) {}
    const HTTPHeaders* headers_ = nullptr;
    std::size_t index_ = 0;
    std::size_t offset_ = 0;
  };
  [[nodiscard]] Iterator begin() const { return {this, 0}; }
  [[nodiscard]] Iterator end() const { return {this, size()}; }

  /// Equal when the same names, as written, have the same values in the same order.
  friend bool operator==(const HTTPHeaders&, const HTTPHeaders&) = default;

 private:
  struct Lengths {
    std::uint32_t name;
    std::uint32_t value;
    friend bool operator==(const Lengths&, const Lengths&) = default;
  };

  // All names and values in one text: a response has a dozen fields that nobody reads.
  std::string text_;
  std::vector<Lengths> lengths_;
};

}  // namespace orvo
