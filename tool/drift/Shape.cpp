#include <demo/Json.h>
#include <fmt/format.h>
#include <tool/Text.h>
#include <tool/drift/Shape.h>

#include <algorithm>
#include <array>
#include <optional>

namespace orvo::tool {

namespace {

constexpr std::size_t kDeepest = 40;
constexpr std::size_t kMostWords = 100;
constexpr std::size_t kLongestName = 64;

bool isPlainName(std::string_view name) {
  constexpr std::string_view kPlain =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-";
  return !name.empty() && name.size() <= kLongestName &&
         name.find_first_not_of(kPlain) == std::string_view::npos;
}

/// Whether texts at the place are words that a service chooses from a few.
bool holdsWords(const std::string& path) {
  static constexpr std::array kKeys{"type",     "content_type", "item_type",
                                    "contains", "display_type", "action",
                                    "code",     "resources[]",  "collection_type"};
  const auto dot = path.rfind('.');
  const auto key = dot == std::string::npos ? path : path.substr(dot + 1);
  return std::ranges::find(kKeys, key) != kKeys.end();
}

/// The same on every device and in every year; it tells nobody the address.
std::string fingerprint(std::string_view address) {
  std::uint64_t sum = 14'695'981'039'346'656'037U;  // FNV-1a
  for (const char c : address) sum = (sum ^ static_cast<unsigned char>(c)) * 1'099'511'628'211U;
  return fmt::format("{:016x}", sum);
}

class Learning {
 public:
  explicit Learning(Shape& shape) : shape_(shape) {}

  void learn(const JSONValue& value, const std::string& path, const std::string& parent,
             std::size_t depth) {
    const bool isKnown = shape_.places.contains(path);
    if (depth > kDeepest || (!isKnown && shape_.places.size() >= Shape::kMostPlaces)) return;
    Place& place = shape_.places[path];
    place.parent = parent;
    ++place.count;
    place.types.emplace(typeName(value.kind()));
    const auto text = value.string();
    const bool isWord = text && isPlainName(*text) && holdsWords(path);
    if (isWord && place.words.size() < kMostWords) place.words.emplace(*text);
    if (const auto object = value.object()) {
      ++place.objects;
      for (const auto& [key, member] : *object) {
        learn(member, memberPath(path, key), path, depth + 1);
      }
    } else if (const auto array = value.array()) {
      for (const JSONValue& element : *array) learn(element, path + "[]", path, depth + 1);
    }
  }

 private:
  Shape& shape_;
};

std::string listed(const std::set<std::string>& names) {
  std::string text;
  for (const auto& name : names) text += (text.empty() ? "" : " or ") + name;
  return text;
}

std::set<std::string> newOnes(const std::set<std::string>& then, const std::set<std::string>& now) {
  std::set<std::string> names;
  std::ranges::set_difference(now, then, std::inserter(names, names.end()));
  return names;
}

/// Compares the documents of one kind.
class Comparison {
 public:
  Comparison(const std::string& document, const Shape& then, const Shape& now, bool isPartial)
      : document_(document), then_(then), now_(now), isPartial_(isPartial) {}

  std::vector<Difference> made() {
    for (const auto& loss : newOnes(then_.losses, now_.losses)) {
      const auto space = loss.rfind(' ');
      tell(loss.substr(0, space), "is lost: " + loss.substr(space + 1), true);
    }
    for (const auto& [path, place] : then_.places) {
      const auto found = now_.places.find(path);
      found == now_.places.end() ? compareMissing(path, place)
                                 : compare(path, place, found->second);
    }
    for (const auto& [path, place] : now_.places) {
      const bool isFirst = then_.places.contains(place.parent);
      if (!then_.places.contains(path) && isFirst) {
        tell(path, "is new: " + listed(place.types), false);
      }
    }
    return std::move(differences_);
  }

 private:
  [[nodiscard]] static const Place* find(const Shape& shape, const std::string& path) {
    const auto found = shape.places.find(path);
    return found == shape.places.end() ? nullptr : &found->second;
  }

  void compareMissing(const std::string& path, const Place& then) {
    const Place* const parentThen = find(then_, then.parent);
    const Place* const parentNow = find(now_, then.parent);
    // Lists may be empty, and what is not there has no members.
    if (path.ends_with("[]") || parentThen == nullptr || parentNow == nullptr) return;
    // What is rare may be missing by chance.
    constexpr double kEnough = 5;
    const auto objects = static_cast<double>(parentNow->objects);
    const auto share = static_cast<double>(then.count) / static_cast<double>(parentThen->objects);
    const bool isMissed =
        then.count == parentThen->objects ? objects > 0 : !isPartial_ && share * objects >= kEnough;
    if (isMissed) tell(path, "is missing", then.isRead);
  }
  void compare(const std::string& path, const Place& then, const Place& now) {
    const auto types = newOnes(then.types, now.types);
    if (!types.empty()) {
      tell(path, "is " + listed(types) + ", and was " + listed(then.types), false);
    }
    for (const auto& word : newOnes(then.words, now.words)) {
      if (!then.words.empty()) tell(path, "has a new word: " + word, false);
    }
    const Place* const parentThen = find(then_, then.parent);
    const Place* const parentNow = find(now_, now.parent);
    if (path.empty() || path.ends_with("[]") || parentThen == nullptr || parentNow == nullptr)
      return;
    if (then.count == parentThen->objects && now.count < parentNow->objects) {
      tell(path,
           "is missing in " + std::to_string(parentNow->objects - now.count) + " of " +
               std::to_string(parentNow->objects) + ", and never was",
           false);
    }
  }
  void tell(const std::string& path, std::string text, bool loses) {
    differences_.push_back({document_, path, std::move(text), loses});
  }

  const std::string& document_;
  const Shape& then_;
  const Shape& now_;
  const bool isPartial_;
  std::vector<Difference> differences_;
};

}  // namespace

std::string_view typeName(JSONValue::Kind kind) {
  static constexpr std::array<std::string_view, 6> kNames{"null",   "boolean", "number",
                                                          "string", "array",   "object"};
  return kNames.at(static_cast<std::size_t>(kind));
}

std::string memberPath(const std::string& path, std::string_view key) {
  if (isPlainName(key)) return path + (path.empty() ? "" : ".") + std::string(key);
  return path + "[" + demo::Json(cut(printable(key), kLongestName)).text() + "]";
}

std::string generalPath(const std::string& path) {
  std::string general;
  bool isIndex = false;
  for (const char c : path) {
    isIndex = isIndex && c >= '0' && c <= '9';
    if (!isIndex) general += c;
    isIndex = isIndex || c == '[';
  }
  return general;
}

void Shape::learn(const JSONValue& document) { Learning(*this).learn(document, "", "", 0); }

void Shape::learn(const std::vector<DocumentLoss>& lost) {
  for (const auto& loss : lost) {
    if (loss.reason == DocumentLoss::Reason::further) continue;
    losses.insert(generalPath(loss.path) + " " + std::string(caseName(loss.reason)));
  }
}

void Shape::learnMeeting(std::string_view address) {
  if (met.size() < kMostMet) met.insert(fingerprint(address));
}

bool Shape::hasMet(std::string_view address) const { return met.contains(fingerprint(address)); }

void Shape::merge(const Shape& other) {
  for (const auto& address : other.met) {
    if (met.size() < kMostMet) met.insert(address);
  }
  losses.insert(other.losses.begin(), other.losses.end());
  for (const auto& [path, theirs] : other.places) {
    Place& place = places[path];
    place.parent = theirs.parent;
    place.count += theirs.count;
    place.objects += theirs.objects;
    place.types.insert(theirs.types.begin(), theirs.types.end());
    place.words.insert(theirs.words.begin(), theirs.words.end());
    place.isRead |= theirs.isRead;
  }
}

std::vector<Difference> differences(const Shapes& then, const Shapes& now, bool isPartial) {
  std::vector<Difference> all;
  for (const auto& [document, shape] : now) {
    const auto found = then.find(document);
    if (found == then.end()) {
      all.push_back({document, "", "is new", false});
      continue;
    }
    auto some = Comparison(document, found->second, shape, isPartial).made();
    all.insert(all.end(), some.begin(), some.end());
  }
  return all;
}

}  // namespace orvo::tool
