#pragma once

#include <OrvoAPI/Base/TextIndexInternal.h>
#include <OrvoAPI/Parsing/JSONValue.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// How parsers read: all members of an object are found in one walk, and no owners are counted on
/// the way. Everything here is valid as long as the document is held.
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
/// Which of the names are in the array, a bit for each; nothing unless all elements are strings.
[[nodiscard]] std::optional<std::uint32_t> namesIn(JSONPosition array, const TextIndex& names);

/// A member that may be absent; valid as long as the members that it is one of. The handles that it
/// gives are borrowed.
class JSONMember {
 public:
  using Kind = JSONToken::Kind;

  JSONMember(const JSONDocument* document, const JSONToken& token, std::string_view key)
      : document_(document), token_(token), key_(key) {}

  [[nodiscard]] std::string_view key() const { return key_; }
  [[nodiscard]] std::optional<std::string_view> string() const { return token_.string(); }
  [[nodiscard]] std::optional<std::string> text() const {
    return std::optional<std::string>(string());
  }
  [[nodiscard]] std::optional<bool> boolean() const { return token_.boolean(); }
  [[nodiscard]] std::optional<double> number() const { return token_.number(); }
  [[nodiscard]] std::optional<std::int64_t> integer() const { return token_.integer(); }
  [[nodiscard]] std::optional<JSONObject> object() const {
    return token_.kind() == Kind::object ? std::optional(JSONObject(node())) : std::nullopt;
  }
  /// An array of nothing but objects.
  [[nodiscard]] std::optional<JSONObjects> objects() const {
    const bool right = token_.kind() == Kind::array && holdsOnly(Kind::object, token_.position());
    return right ? std::optional(JSONObjects(node())) : std::nullopt;
  }
  /// Which of the names an array of strings holds, a bit for each; none when it is not one.
  [[nodiscard]] std::uint32_t names(const TextIndex& names) const {
    return token_.kind() == Kind::array ? namesIn(token_.position(), names).value_or(0) : 0;
  }

 private:
  [[nodiscard]] JSONNode node() const { return JSONNode::borrowed(document_, token_.position()); }

  const JSONDocument* document_;
  const JSONToken& token_;
  std::string_view key_;
};

/// The members of an object whose keys are in `kKeys`: `members["title"].string()`. Any other key
/// does not compile.
template <const TextIndex& kKeys>
class JSONMembers {
 public:
  class Key {
   public:
    // NOLINTNEXTLINE(google-explicit-constructor): a text is a key
    consteval Key(const char* text) : number(kKeys.numberOf(text)) {}
    std::size_t number;
  };

  explicit JSONMembers(const JSONObject& object) : document_(object.node().document()) {
    findMembers(object.node().position(), kKeys, found_.data());
  }

  [[nodiscard]] JSONMember operator[](Key key) const { return at(key.number); }
  /// By the key's number.
  [[nodiscard]] JSONMember at(std::size_t number) const {
    return {document_, found_[number], kKeys[number]};
  }

 private:
  const JSONDocument* document_;
  std::array<JSONToken, kKeys.size()> found_;
};

}  // namespace orvo::detail
