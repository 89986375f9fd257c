#pragma once

#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

namespace orvo::demo {

/// The sessions that the service has opened. Safe to use from any thread.
class Sessions {
 public:
  enum class Answer { granted, missing, unknown, expired };

  /// A token serves that many requests; 0 means that it never expires.
  explicit Sessions(int tokenLifetime) : tokenLifetime_(tokenLifetime) {}

  /// Opens a session and returns its token.
  [[nodiscard]] std::string open();
  /// Whether a request may pass that carries this token; counts it.
  [[nodiscard]] Answer use(std::string_view token);
  /// Whether the token is or was one: a stream that is playing goes on when its token expires.
  [[nodiscard]] bool knows(std::string_view token) const;

 private:
  const int tokenLifetime_;
  mutable std::mutex mutex_;
  std::map<std::string, int, std::less<>> uses_;  // guarded by mutex_
  std::deque<std::string> byAge_;                 // guarded by mutex_
};

}  // namespace orvo::demo
