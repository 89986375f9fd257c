#pragma once

#include <OrvoAPI/Base/TextIndexInternal.h>
#include <OrvoAPI/Parsing/JSONValue.h>

#include <string_view>

namespace orvo::detail {

/// Is notified of what a thread's readers leave out, and of nothing else, so that faultless
/// documents cost nothing. It must not throw.
class LossNotes {
 public:
  using Kind = JSONValue::Kind;

  virtual void didRead(const JSONValue& document) = 0;
  /// A member that is there, but cannot be used: not of the wanted kind (`array`: of nothing but
  /// objects), or of no use otherwise.
  virtual void ignored(const JSONObject& object, std::string_view key, Kind wanted) = 0;
  /// The elements that are not among the names; all, when one of them is no string.
  virtual void ignored(const JSONArray& array, const TextIndex& names) = 0;
  /// The member for which a record fails, which is to be dropped, or makes the whole document fail.
  virtual void blamed(const JSONObject& object, std::string_view key, Kind wanted) = 0;
  virtual void dropped(const JSONObject& record) = 0;

 protected:
  ~LossNotes() = default;
};

/// The thread's own, if there is one.
[[gnu::tls_model("initial-exec")]] inline constinit thread_local LossNotes* lossNotes = nullptr;

/// A record that failed is left out of what it is part of.
[[gnu::cold]] void drop(const JSONObject& record);
/// The record fails for the member, a text, and is left out.
[[gnu::cold]] void drop(const JSONObject& record, std::string_view key);
/// The record fails for the member.
[[gnu::cold]] void blame(const JSONObject& object, std::string_view key, JSONValue::Kind wanted);

}  // namespace orvo::detail
