#pragma once

#include <OrvoAPI/Parsing/JSONTokenInternal.h>
#include <OrvoAPI/Parsing/JSONValue.h>
#include <OrvoAPI/Parsing/LossNotesInternal.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

/// How parsers read: all members of an object are found in one walk, and no owners are counted on
/// the way. Everything here is valid as long as the document is held.
namespace orvo::detail {

/// Whose members were found.
struct JSONPlace {
  const JSONDocument* document;
  JSONPosition at;
};

// What the thread's `lossNotes` are told. Cold, and without a pointer to the member, which would
// then have to be in memory, so that documents without fault pay nothing for it.

/// The member is ignored: it is not of the wanted kind, or of no use otherwise.
[[gnu::cold]] void ignore(const JSONPlace& place, std::string_view key, JSONValue::Kind wanted);
/// So are the elements of the array that are not among the names.
[[gnu::cold]] void ignore(const JSONDocument* document, JSONPosition array, const TextIndex& names);

/// A member for which a record fails.
struct JSONFault {
  JSONPlace place;
  std::string_view key;
  JSONValue::Kind wanted;
};
[[gnu::cold]] void blame(const JSONFault& fault);

/// A member that may be absent; valid as long as the members that it is one of. The handles that it
/// gives are borrowed.
class JSONMember {
 public:
  using Kind = JSONToken::Kind;
  using Wanted = JSONValue::Kind;

  JSONMember(const JSONPlace& place, const JSONToken& token, std::string_view key)
      : place_(place), token_(token), key_(key) {}

  [[nodiscard]] std::string_view key() const { return key_; }
  [[nodiscard]] std::optional<std::string_view> string() const {
    const auto value = token_.string();
    return value ? value : unusable(Wanted::string);
  }
  [[nodiscard]] std::optional<std::string> text() const {
    return std::optional<std::string>(string());
  }
  [[nodiscard]] std::optional<bool> boolean() const {
    const auto value = token_.boolean();
    return value ? value : unusable(Wanted::boolean);
  }
  [[nodiscard]] std::optional<double> number() const {
    const auto value = token_.number();
    return value ? value : unusable(Wanted::number);
  }
  [[nodiscard]] std::optional<std::int64_t> integer() const {
    const auto value = token_.integer();
    return value ? value : unusable(Wanted::number);
  }
  [[nodiscard]] std::optional<JSONObject> object() const {
    auto value = requiredObject();
    return value ? std::move(value) : unusable(Wanted::object);
  }
  /// An array of nothing but objects.
  [[nodiscard]] std::optional<JSONObjects> objects() const {
    auto value = requiredObjects();
    return value ? std::move(value) : unusable(Wanted::array);
  }
  /// Which of the names an array of strings holds, a bit for each; none when it is not one.
  [[nodiscard]] std::uint32_t names(const TextIndex& names) const {
    if (token_.kind() != Kind::array) {
      (void)unusable(Wanted::array);
      return 0;
    }
    bool knowsAll = true;
    const auto found = namesIn(token_.position(), names, knowsAll);
    if (!knowsAll) ignore(place_.document, token_.position(), names);
    return found;
  }

  /// What `read` makes of the text, an optional value: a text of which it makes none is ignored.
  template <class Read>
  [[nodiscard]] auto stringAs(Read read) const {
    const auto text = string();
    auto value = text ? read(*text) : decltype(read(*text))();
    if (text && !value) ignore(place_, key_, Wanted::string);
    return value;
  }

  // For what a record requires: who does not find it tells that it is dropped.

  [[nodiscard]] const JSONToken& token() const { return token_; }
  [[nodiscard]] std::optional<JSONObject> requiredObject() const {
    return token_.kind() == Kind::object ? std::optional(JSONObject(node())) : std::nullopt;
  }
  [[nodiscard]] std::optional<JSONObjects> requiredObjects() const {
    const bool right = token_.kind() == Kind::array && holdsOnly(Kind::object, token_.position());
    return right ? std::optional(JSONObjects(node())) : std::nullopt;
  }
  [[nodiscard]] JSONFault fault(Wanted wanted) const { return {place_, key_, wanted}; }

 private:
  [[nodiscard]] JSONNode node() const {
    return JSONNode::borrowed(place_.document, token_.position());
  }
  /// It is ignored, if it is there. Always inline: the compiler would split it and pass a pointer.
  [[nodiscard, gnu::always_inline]] std::nullopt_t unusable(Wanted wanted) const {
    if (token_.kind() != Kind::absent) ignore(place_, key_, wanted);
    return std::nullopt;
  }

  const JSONPlace& place_;
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

  explicit JSONMembers(const JSONObject& object)
      : place_{object.node().document(), object.node().position()} {
    findMembers(place_.at, kKeys, found_.data());
  }

  [[nodiscard]] JSONMember operator[](Key key) const { return at(key.number); }
  /// By the key's number.
  [[nodiscard]] JSONMember at(std::size_t number) const {
    return {place_, found_[number], kKeys[number]};
  }

 private:
  JSONPlace place_;
  std::array<JSONToken, kKeys.size()> found_;
};

}  // namespace orvo::detail
