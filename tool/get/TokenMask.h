#pragma once

#include <tool/Secrets.h>

#include <string>
#include <string_view>

namespace orvo::tool {

/// Puts `***` in the place of tokens, in what a service sent. Used by one thread.
class TokenMask {
 public:
  /// A token that is to be hidden wherever it stands, also encoded, unless it is too short to be
  /// told from other words.
  void add(const std::string& token);
  /// Adds the token of a session document.
  void learnFrom(std::string_view body);

  [[nodiscard]] std::string text(std::string_view text) const;
  /// A body; the value of each member "token" is hidden, too, be it valid JSON or not, and users'
  /// names and passwords in addresses.
  [[nodiscard]] std::string body(std::string_view body) const;
  /// The value of a header field; those that are secret by their name are hidden whole.
  [[nodiscard]] std::string headerValue(std::string_view name, std::string_view value) const;

 private:
  KnownSecrets tokens_;
};

}  // namespace orvo::tool
