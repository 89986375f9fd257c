#pragma once

#include <OrvoAPI/Base/Data.h>
#include <OrvoAPI/HTTP/URL.h>
#include <OrvoAPI/Parsing/JSONValue.h>
#include <tool/Secrets.h>

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvo::tool {

/// Puts words like `token-1` in the place of secrets, everywhere the same for the same secret, so
/// that what fits together still does. Secrets are made known first, then texts are disguised. Used
/// by one thread.
class Disguise {
 public:
  /// `spoken`: the words of the command line, which a replay is asked with again.
  explicit Disguise(std::vector<std::string> spoken = {}) : spoken_(std::move(spoken)) {}

  /// Makes a session's token known, for what belongs to it, and is replaced wherever it stands.
  void addToken(std::string_view token);
  /// What a field of that name holds may be such a token, or a cookie.
  void addField(std::string_view name, std::string_view value);
  /// The token in a document of a session, and what a document names a token, secret or password.
  void addDocument(const Data& body);
  /// Where a stream is redirected to, or what its playlist names: there may be keys in such paths.
  void addPath(std::string_view path);
  void addPlaylist(std::string_view text);

  /// Any text without the known secrets and what it names a secret itself, and addresses in it
  /// without a user's name and password and, where they are those of streams, without what may be
  /// another session's token.
  [[nodiscard]] std::string text(std::string_view text);
  /// An address, also relative; `hidesQuery`: without the values of the query.
  [[nodiscard]] std::string address(std::string_view url, bool hidesQuery);
  /// An address of which nothing is left but the host: each part of the path, and the values of the
  /// query, are replaced.
  [[nodiscard]] std::string target(const URL& url);
  /// The name of a header field.
  [[nodiscard]] std::string name(std::string_view name) const { return known_.hiddenIn(name); }
  [[nodiscard]] std::string field(std::string_view name, std::string_view value);
  /// The document of a session, with all its texts replaced.
  [[nodiscard]] std::string sessionDocument(const Data& body);
  /// The playlist of a stream: of its addresses, the values of all queries are replaced, and the
  /// paths of those that name a host.
  [[nodiscard]] std::string playlist(std::string_view text);

 private:
  /// Of what is not a token for sure: nothing is sought that may be an ordinary word.
  void add(std::string_view secret);
  [[nodiscard]] bool isSpoken(std::string_view secret) const;
  void addMembers(const JSONValue& value);
  /// What stands for the secret, here or everywhere.
  std::string word(std::string_view secret, const char* sort = "masked");
  /// Replaces what stands before the name of a stream's file.
  [[nodiscard]] std::string withoutStreams(std::string text);
  /// The query from the "?" on.
  std::string query(std::string_view query);

  /// The path with another word for each of its parts.
  std::string path(std::string_view path);

  const std::vector<std::string> spoken_;
  std::map<std::string, std::string, std::less<>> words_;
  /// Those words that are numbers.
  std::set<std::string, std::less<>> numbers_;
  KnownSecrets known_;
};

}  // namespace orvo::tool
