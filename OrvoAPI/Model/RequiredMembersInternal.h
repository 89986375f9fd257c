#pragma once

#include <OrvoAPI/Base/RawValue.h>
#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/HTTP/URL.h>
#include <OrvoAPI/Model/PagingMeta.h>
#include <OrvoAPI/Parsing/JSONMembersInternal.h>

#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace orvo::detail {

template <RawValueEnum E>
consteval TextIndex rawValueIndex() {
  std::string_view texts[std::size(enumCases<E>)];
  for (std::size_t i = 0; i < std::size(texts); ++i) texts[i] = enumCases<E>[i].rawValue;
  return TextIndex(texts);
}
template <RawValueEnum E>
inline constexpr TextIndex kRawValues = rawValueIndex<E>();

/// As `fromRawValue`, faster where there are many.
template <RawValueEnum E>
[[nodiscard, gnu::always_inline]] inline std::optional<E> caseOf(
    const std::optional<std::string_view>& text) {
  const auto number = text ? kRawValues<E>.find(*text) : TextIndex::kNone;
  return number == TextIndex::kNone ? std::nullopt : std::optional(static_cast<E>(number));
}

/// Reads a record's required members one after the other and remembers the first that is missing or
/// of the wrong kind; such a read gives an empty value ("/" for a URL). Ask `failed` before using
/// what was read, or end with `result`. Failing costs nothing until `failure` is called. Used by
/// one thread; what is read is a view into the document.
class RequiredMembers {
 public:
  using Member = JSONMember;
  using Wanted = Member::Wanted;

  /// `type` names the record in the failure; a literal.
  explicit RequiredMembers(std::string_view type) : type_(type) {}  // no fault yet

  [[nodiscard]] std::string_view text(const Member& member) { return text(member, member.key()); }
  /// As `text`, with the key that the failure names.
  [[nodiscard]] std::string_view text(const Member& member, std::string_view reportedKey) {
    return found(member.token().string(), member, Wanted::string, reportedKey);
  }
  [[nodiscard]] std::string string(const Member& member) { return std::string(text(member)); }
  [[nodiscard]] double number(const Member& member) {
    return found(member.token().number(), member, Wanted::number, member.key());
  }
  /// A number of milliseconds, in seconds.
  [[nodiscard]] double seconds(const Member& member) { return number(member) / 1000.0; }
  [[nodiscard]] std::int64_t integer(const Member& member) { return integer(member, member.key()); }
  /// As `integer`, with the key that the failure names.
  [[nodiscard]] std::int64_t integer(const Member& member, std::string_view reportedKey) {
    return found(member.token().integer(), member, Wanted::number, reportedKey);
  }
  [[nodiscard]] bool boolean(const Member& member) {
    return found(member.token().boolean(), member, Wanted::boolean, member.key());
  }
  /// A string that is a valid URL.
  [[nodiscard]] URL url(const Member& member);

  /// An array of nothing but objects; filled unless a read failed.
  [[nodiscard]] std::optional<JSONObjects> objects(const Member& member);
  /// An object with the three numbers; a failure of the numbers names `reportedDetails`.
  [[nodiscard]] PagingMeta meta(const Member& member, std::string_view reportedDetails);
  [[nodiscard]] PagingMeta meta(const JSONObject& json, std::string_view reportedDetails);

  /// A string that is a raw value of `E`; the failure names `reportedKey`.
  template <RawValueEnum E>
  [[nodiscard]] E rawValue(const Member& member, std::string_view reportedKey) {
    return found(caseOf<E>(member.token().string()), member, Wanted::string, reportedKey);
  }
  template <RawValueEnum E>
  [[nodiscard]] E rawValue(const Member& member) {
    return rawValue<E>(member, member.key());
  }

  /// What was found in the member, of which that kind was wanted, or a failure that names the key.
  template <class T>
  [[nodiscard]] T found(const std::optional<T>& value, const Member& member, Wanted wanted,
                        std::string_view reportedKey) {
    if (!value) fail(member.fault(wanted), reportedKey);
    return value.value_or(T{});
  }
  /// Records a failure found by the caller; the first one stays.
  void fail(const JSONFault& fault, std::string_view reportedKey) {
    if (failed()) return;
    failedKey_ = reportedKey;
    fault_ = fault;
  }
  [[nodiscard]] bool failed() const { return failedKey_.data() != nullptr; }
  /// `JSONParseError::unableToParse` with the type and the first failing key.
  [[nodiscard]] Failure failure() const;
  /// After a failure: the record is left out of what it is part of, where `json` is.
  [[gnu::cold]] void drop(const JSONObject& json) const;

  /// The record that was built from the reads, or the failure when one of them failed.
  template <class T>
  [[nodiscard]] Result<T> result(T record) const {
    if (failed()) return failure();
    return record;
  }

 private:
  std::string_view type_;
  std::string_view failedKey_;
  union {
    JSONFault fault_;  // of a failure
  };
};

}  // namespace orvo::detail
