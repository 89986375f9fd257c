#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace orvo::tool {

/// Secrets that are shorter are words that stand elsewhere, too: they are hidden in the places
/// where secrets belong, such as the field Authorization, and sought nowhere else.
inline constexpr std::size_t kShortestSought = 8;

/// Stands for a text that is withheld as a whole.
inline constexpr std::string_view kWithheld = "(hidden)";

/// ASCII letters only.
[[nodiscard]] std::string inLowerCase(std::string_view text);

/// Each "%" with two digits as the byte that it stands for.
[[nodiscard]] std::string percentDecoded(std::string_view text);

/// Whether a member of a document that is called that holds a secret.
[[nodiscard]] bool namesSecret(std::string_view name);
/// The same of a field of a header.
[[nodiscard]] bool namesSecretField(std::string_view name);

/// The value in a field Set-Cookie, a part of it: also that of a cookie without a name.
[[nodiscard]] std::string_view cookieValue(std::string_view field);

/// The text with something else in the place of each user's name and password in an address.
[[nodiscard]] std::string withoutUsers(std::string text, std::string_view instead);

/// A text, be it JSON or not, in which each string behind `"token":` and its like is replaced by
/// what `replace` makes of it as it stands there.
[[nodiscard]] std::string withSecretMembers(
    std::string_view text, const std::function<std::string(std::string_view)>& replace);

/// Finds secrets wherever they stand in a text: as they are, escaped as in JSON, percent-encoded,
/// also several times, and inside of what is encoded in base64, also twice. Used by one thread.
class KnownSecrets {
 public:
  /// `word` stands for it from now on, unless it is too short to be sought.
  void add(std::string_view secret, const std::string& word);
  /// How many have been added.
  [[nodiscard]] std::size_t count() const { return count_; }

  /// Nothing but `(hidden)` of a text that is made for long searches.
  [[nodiscard]] std::string hiddenIn(std::string_view text) const;

 private:
  struct Form {
    std::string text;
    std::string word;
  };
  using Numbers = std::vector<std::size_t>;

  void addForm(const std::string& text, const std::string& word);
  /// What base64 of a text that holds the secret has of it alone.
  void addBase64(std::string_view secret, const std::string& word, int encodings);
  void insert(Numbers& numbers, std::size_t number) const;
  [[nodiscard]] const Numbers& candidates(char first) const;

  std::size_t count_ = 0;
  std::vector<Form> forms_;
  std::set<std::string, std::less<>> texts_;
  /// The longest first: of all, and of those that begin with a byte.
  Numbers all_;
  std::array<Numbers, 256> beginningWith_;
};

}  // namespace orvo::tool
