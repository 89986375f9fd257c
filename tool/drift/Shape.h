#pragma once

#include <OrvoAPI/Parsing/DocumentLoss.h>
#include <OrvoAPI/Parsing/JSONValue.h>
#include <tool/SentLists.h>

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace orvo::tool {

/// What stands at one place of a service's documents, all elements of a list being one place.
struct Place {
  /// The object or list that it is in; of the document itself, its own path.
  std::string parent{};
  /// How often there was a value, and how often that was an object.
  std::uint64_t count = 0;
  std::uint64_t objects = 0;
  std::set<std::string> types{};
  /// The words of an enumeration; of texts nothing is kept.
  std::set<std::string> words{};
  /// Whether the library takes it into account.
  bool isRead = false;
};

/// What documents of one kind look like. Used by one thread at a time.
struct Shape {
  /// By path: `items[].title`, and "" for the document.
  std::map<std::string, Place> places{};
  /// What the library loses of them: `items[].title missing`; and of lists in which the service has
  /// sent nothing, though it says that there is something: `items unsent`.
  std::set<std::string> losses{};
  /// Which documents were met: fingerprints of their addresses.
  std::set<std::string> met{};

  void learn(const JSONValue& document);
  void learn(const std::vector<DocumentLoss>& lost);
  void learn(const std::vector<ShortList>& sent);
  void learnMeeting(std::string_view address);
  [[nodiscard]] bool hasMet(std::string_view address) const;
  void merge(const Shape& other);

  /// More than any service's documents have; what goes beyond is left out.
  static constexpr std::size_t kMostPlaces = 2000;
  static constexpr std::size_t kMostMet = 100'000;
};

/// By the name of the kind.
using Shapes = std::map<std::string, Shape>;

/// The path with `[]` for each index.
[[nodiscard]] std::string generalPath(const std::string& path);
/// Whether the keys of the object are data, such as identifiers or dates, and no names: all its
/// members are one place then.
[[nodiscard]] bool isKeyedByData(const JSONObject& object);
/// The path of a member; a key that is no plain name, quoted, and one that is data as `{}`.
[[nodiscard]] std::string memberPath(const std::string& path, std::string_view key, bool isData);
/// Null, boolean and so on.
[[nodiscard]] std::string_view typeName(JSONValue::Kind kind);

/// Something that is not as it was.
struct Difference {
  std::string document;
  std::string path;
  std::string text;
  /// Whether the library loses something by it.
  bool loses = false;
};

/// `isPartial`: some documents could not be had now, so that what only a few have proves nothing
/// when it is missing.
[[nodiscard]] std::vector<Difference> differences(const Shapes& then, const Shapes& now,
                                                  bool isPartial = false);

}  // namespace orvo::tool
