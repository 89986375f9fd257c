#pragma once

#include <OrvoAPI/Futures/AnyError.h>

#include <array>
#include <string>
#include <string_view>

namespace orvo::detail {

/// Hides session tokens, which live longer than this, in what is shown to people. Without a token
/// it finds none.
class Redaction {
 public:
  static constexpr std::string_view kHidden = "***";

  explicit Redaction(std::string_view token, std::string_view other = {}) : tokens_{token, other} {}

  [[nodiscard]] bool isEmpty() const { return tokens_[0].empty() && tokens_[1].empty(); }
  /// Whether a token is in the text, as it is written or percent-decoded, however often.
  [[nodiscard]] bool finds(std::string_view text) const;

  /// The whole text, when a token is in it.
  void text(std::string& text) const;
  /// The tokens, where they are written plainly, else the whole.
  void words(std::string& text) const;
  /// The segments that hold a token; the whole when a token lies across some, and of a stream.
  void path(std::string& path) const;
  /// The error without the addresses and header fields of its requests. One that may hold a token
  /// elsewhere becomes another, which has its description only.
  [[nodiscard]] AnyError error(const AnyError& error) const;

 private:
  std::array<std::string_view, 2> tokens_;
};

}  // namespace orvo::detail
