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

constexpr std::string_view kUnsent = "unsent";
constexpr std::string_view kDigits = "0123456789";

std::string withoutDigits(std::string_view key) {
  std::string text(key);
  std::erase_if(text, [](char c) { return kDigits.find(c) != std::string_view::npos; });
  return text;
}

/// `film-long-thaw`, `2026-11-24`, `k1234`, or what is no name at all.
bool isDataKey(std::string_view key) {
  constexpr std::size_t kManyDigits = 4;
  const std::size_t digits = key.size() - withoutDigits(key).size();
  std::string name(key);
  std::erase(name, '/');
  return digits == key.size() || digits >= kManyDigits || !isPlainName(name) ||
         key.find('-') != std::string_view::npos;
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
      const bool isData = isKeyedByData(*object);
      for (const auto& [key, member] : *object) {
        learn(member, memberPath(path, key, isData), path, depth + 1);
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
      const auto reason = loss.substr(space + 1);
      const bool isUnsent = reason == kUnsent;
      tell(loss.substr(0, space),
           isUnsent ? "is empty, though meta.total is not 0" : "is lost: " + reason, true);
    }
    for (const auto& [path, place] : then_.places) {
      const auto found = now_.places.find(path);
      found == now_.places.end() ? compareMissing(path, place)
                                 : compare(path, place, found->second);
    }
    for (const auto& [path, place] : now_.places) {
      const bool isFirst = then_.places.contains(place.parent);
      if (!then_.places.contains(path) && isFirst && !isData(place.parent)) {
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
    // What is not there has no members.
    if (parentThen == nullptr || parentNow == nullptr || isData(then.parent)) return;
    if (path.ends_with("[]")) return compareEmptied(then, *parentThen, *parentNow);
    const auto objects = static_cast<double>(parentNow->objects);
    const auto share = static_cast<double>(then.count) / static_cast<double>(parentThen->objects);
    const bool isMissed =
        then.count == parentThen->objects ? objects > 0 : !isPartial_ && share * objects >= kEnough;
    if (isMissed) tell(path, "is missing", then.isRead);
  }
  /// Lists may be empty, but hardly all of them.
  void compareEmptied(const Place& then, const Place& listThen, const Place& listNow) {
    const double share = static_cast<double>(then.count) / static_cast<double>(listThen.count);
    const bool isMissed = share * static_cast<double>(listNow.count) >= kEnough &&
                          !now_.losses.contains(then.parent + " " + std::string(kUnsent));
    if (isMissed && !isPartial_ && listNow.types.contains("array")) {
      tell(then.parent, "is empty wherever it is, and was not", listThen.isRead);
    }
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
  /// Whether the place was found to be keyed by data, then or now: in another walk it may have held
  /// too little to tell.
  [[nodiscard]] bool isData(const std::string& path) const {
    const auto key = memberPath(path, "", true);
    return then_.places.contains(key) || now_.places.contains(key);
  }
  void tell(const std::string& path, std::string text, bool loses) {
    differences_.push_back({document_, path, std::move(text), loses});
  }

  const std::string& document_;
  const Shape& then_;
  const Shape& now_;
  /// What is rare may be missing by chance.
  static constexpr double kEnough = 5;
  const bool isPartial_;
  std::vector<Difference> differences_;
};

}  // namespace

std::string_view typeName(JSONValue::Kind kind) {
  static constexpr std::array<std::string_view, 6> kNames{"null",   "boolean", "number",
                                                          "string", "array",   "object"};
  return kNames.at(static_cast<std::size_t>(kind));
}

bool isKeyedByData(const JSONObject& object) {
  constexpr std::size_t kEnough = 3;
  std::size_t members = 0, data = 0;
  bool isAlike = true;
  std::optional<JSONValue::Kind> kind;
  std::string pattern;
  for (const auto& [key, member] : object) {
    // Of one kind are also those of which some are null.
    if (member.kind() != JSONValue::Kind::null) {
      if (kind.value_or(member.kind()) != member.kind()) return false;
      kind = member.kind();
    }
    const std::string form = withoutDigits(key);
    isAlike = isAlike && form.size() < key.size() && (members == 0 || form == pattern);
    pattern = form;
    data += isDataKey(key) ? 1 : 0;
    ++members;
  }
  return (isAlike && members >= kEnough) || data * 2 > members;
}

std::string memberPath(const std::string& path, std::string_view key, bool isData) {
  if (isData) return path + "{}";
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

void Shape::learn(const std::vector<ShortList>& sent) {
  for (const auto& list : sent) {
    if (list.count == 0 && list.promised > 0) {
      losses.insert(generalPath(list.path).append(" ").append(kUnsent));
    }
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

namespace {

std::string_view parentOf(std::string_view path) {
  const auto last = path.find_last_of(".[");
  return path.substr(0, last == std::string_view::npos ? 0 : last);
}

/// Of many members of one object of which the same is to be told, the first ones, and their number.
std::vector<Difference> folded(std::vector<Difference> all) {
  constexpr std::ptrdiff_t kMostAlike = 8, kShown = 3;
  std::vector<Difference> some;
  for (auto first = all.begin(); first != all.end();) {
    const auto end = std::find_if(first, all.end(), [&first](const Difference& other) {
      return other.loses || other.text != first->text ||
             parentOf(other.path) != parentOf(first->path);
    });
    const auto alike = std::max<std::ptrdiff_t>(end - first, 1);
    const auto shown = alike > kMostAlike ? kShown : alike;
    some.insert(some.end(), first, first + shown);
    if (alike > shown) {
      some.push_back({first->document, std::string(parentOf(first->path)),
                      first->text + ": " + std::to_string(alike - shown) + " more members", false});
    }
    first += alike;
  }
  return some;
}

}  // namespace

std::vector<Difference> differences(const Shapes& then, const Shapes& now, bool isPartial) {
  std::vector<Difference> all;
  for (const auto& [document, shape] : now) {
    const auto found = then.find(document);
    if (found == then.end()) {
      all.push_back({document, "", "is new", false});
      continue;
    }
    auto some = folded(Comparison(document, found->second, shape, isPartial).made());
    all.insert(all.end(), some.begin(), some.end());
  }
  return all;
}

}  // namespace orvo::tool
