#pragma once

#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Model/PagingMeta.h>
#include <OrvoAPI/Parsing/JSONValue.h>
#include <OrvoAPI/Platform/RawValue.h>
#include <OrvoAPI/Platform/URL.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace orvo {

/// Reads an object's required members one after the other and remembers the first that is missing
/// or of the wrong kind; from then on every read gives an empty value ("/" for a URL). Ask `failed`
/// before using what was read, or end with `result`. Used by one thread; the object must outlive
/// it.
class RequiredMembers {
 public:
  /// `type` names the record in the failure; a literal.
  RequiredMembers(const JSONObject& json, std::string_view type) : json_(json), type_(type) {}

  /// A view into the document.
  [[nodiscard]] std::string_view text(std::string_view key) { return text(key, key); }
  /// As `text`, with the key that the failure names.
  [[nodiscard]] std::string_view text(std::string_view key, std::string_view reportedKey);
  [[nodiscard]] std::string string(std::string_view key) { return std::string(text(key)); }
  [[nodiscard]] double number(std::string_view key);
  /// A number of milliseconds, in seconds.
  [[nodiscard]] double seconds(std::string_view key) { return number(key) / 1000.0; }
  [[nodiscard]] std::int64_t integer(std::string_view key) { return integer(key, key); }
  /// As `integer`, with the key that the failure names.
  [[nodiscard]] std::int64_t integer(std::string_view key, std::string_view reportedKey);
  [[nodiscard]] bool boolean(std::string_view key);
  /// A string that is a valid URL.
  [[nodiscard]] URL url(std::string_view key);

  /// An array of nothing but objects; filled unless a read failed.
  [[nodiscard]] std::optional<JSONObjects> objects(std::string_view key);
  /// "meta" with its three numbers; a failure of the numbers names `reportedDetails`.
  [[nodiscard]] PagingMeta meta(std::string_view reportedDetails);

  /// A string that is a raw value of `E`; the failure names `reportedKey`.
  template <RawValueEnum E>
  [[nodiscard]] E rawValue(std::string_view key, std::string_view reportedKey) {
    const auto found = fromRawValue<E>(text(key, reportedKey));
    if (!found) fail(reportedKey);
    return found.value_or(E{});
  }
  template <RawValueEnum E>
  [[nodiscard]] E rawValue(std::string_view key) {
    return rawValue<E>(key, key);
  }

  /// Records a failure found by the caller; the first one stays.
  void fail(std::string_view reportedKey) {
    if (!failed()) failedKey_ = reportedKey;
  }
  [[nodiscard]] bool failed() const { return failedKey_.data() != nullptr; }
  /// `JSONParseError::unableToParse` with the type and the first failing key.
  [[nodiscard]] Failure failure() const;

  /// The record that was built from the reads, or the failure when one of them failed.
  template <class T>
  [[nodiscard]] Result<T> result(T record) const {
    if (failed()) return failure();
    return record;
  }

 private:
  const JSONObject& json_;
  std::string_view type_;
  std::string_view failedKey_;
};

}  // namespace orvo
