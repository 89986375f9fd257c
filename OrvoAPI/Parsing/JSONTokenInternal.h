#pragma once

#include <OrvoAPI/Base/TextIndexInternal.h>
#include <OrvoAPI/Parsing/detail/JSONNode.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace orvo::detail {

/// A value as it was found in a document, or that there is none.
class JSONToken {
 public:
  enum class Kind : unsigned char { absent, null, boolean, integer, number, string, array, object };

  JSONToken() {}  // nothing reads what an absent one holds
  JSONToken(std::nullptr_t) : kind_(Kind::null), number_(0) {}
  explicit JSONToken(bool value) : kind_(Kind::boolean), boolean_(value) {}
  explicit JSONToken(std::int64_t value) : kind_(Kind::integer), integer_(value) {}
  explicit JSONToken(double value) : kind_(Kind::number), number_(value) {}
  explicit JSONToken(std::string_view value) : kind_(Kind::string), string_(value) {}
  /// An array or object.
  JSONToken(Kind kind, JSONPosition position) : kind_(kind), position_(position) {}

  [[nodiscard]] Kind kind() const { return kind_; }
  [[nodiscard]] std::optional<std::string_view> string() const {
    return kind_ == Kind::string ? std::optional(string_) : std::nullopt;
  }
  [[nodiscard]] std::optional<bool> boolean() const {
    return kind_ == Kind::boolean ? std::optional(boolean_) : std::nullopt;
  }
  [[nodiscard]] std::optional<double> number() const {
    if (kind_ == Kind::integer) return static_cast<double>(integer_);
    return kind_ == Kind::number ? std::optional(number_) : std::nullopt;
  }
  /// A whole number in range, however it was written.
  [[nodiscard]] std::optional<std::int64_t> integer() const {
    return kind_ == Kind::integer ? std::optional(integer_) : wholeNumber();
  }
  /// Of an array or object.
  [[nodiscard]] JSONPosition position() const { return position_; }

 private:
  [[nodiscard]] std::optional<std::int64_t> wholeNumber() const;

  Kind kind_ = Kind::absent;
  union {
    bool boolean_;
    std::int64_t integer_;
    double number_;
    std::string_view string_;
    JSONPosition position_;
  };
};

// --- what the reader offers; `object` and `array` are at such values

[[nodiscard]] JSONToken tokenAt(JSONPosition position);
/// The first member with the key. For a single key: it stops there.
[[nodiscard]] std::optional<JSONPosition> findMember(JSONPosition object, std::string_view key);
/// Fills `found`, which is as long as `keys` and empty, with the first member of each key.
void findMembers(JSONPosition object, const TextIndex& keys, JSONToken* found);
/// Whether all elements are of the kind.
[[nodiscard]] bool holdsOnly(JSONToken::Kind kind, JSONPosition array);
/// Which of the names are in the array, a bit for each; none unless all elements are strings.
/// `knowsAll` becomes false unless all elements are among the names.
[[nodiscard]] std::uint32_t namesIn(JSONPosition array, const TextIndex& names, bool& knowsAll);

}  // namespace orvo::detail
