#include <OrvoAPI/Parsing/DocumentLoss.h>
#include <OrvoAPI/Parsing/LossNotesInternal.h>

#include <algorithm>
#include <array>
#include <limits>
#include <map>
#include <new>
#include <optional>
#include <span>
#include <utility>

namespace orvo {
namespace {

using Kind = JSONValue::Kind;
using Reason = DocumentLoss::Reason;

/// Places ascend in a document, and those within a value come before the value after it; 0 is none.
using Place = std::size_t;

Place placeOf(const JSONValue& value) { return value.node().position().place; }

Reason reasonFor(const JSONValue& value, Kind wanted) {
  if (value.kind() == Kind::null) return Reason::null;
  return value.kind() == wanted ? Reason::badValue : Reason::wrongType;
}

void appendKey(std::string& path, std::string_view key) {
  if (!path.empty() && !key.empty()) path += '.';
  path += key;
}

/// Finds the paths of places in one walk through what leads to them.
class PathFinder {
 public:
  using Paths = std::map<Place, std::string>;

  PathFinder(const JSONValue& document, Paths& paths) : next_(paths.begin()), end_(paths.end()) {
    find(document, std::numeric_limits<Place>::max());
  }

 private:
  [[nodiscard]] bool isBefore(Place limit) const { return next_ != end_ && next_->first < limit; }

  /// Those before the limit are the value's own.
  void find(const JSONValue& value, Place limit) {
    if (isBefore(limit) && next_->first == placeOf(value)) (next_++)->second = path_;
    if (!isBefore(limit)) return;
    if (const auto object = value.object()) search(*object, limit);
    if (const auto array = value.array()) search(*array, limit);
  }

  template <class Children>
  void search(const Children& children, Place limit) {
    std::optional<JSONValue> earlier;
    std::string_view key;
    std::size_t count = 0;
    const auto findInEarlier = [&](Place end) {
      if (!earlier || !isBefore(end)) return;
      const auto length = path_.size();
      key.data() != nullptr ? appendKey(path_, key)
                            : void(path_.append("[" + std::to_string(count - 1) + "]"));
      find(*earlier, end);
      path_.resize(length);
    };
    for (const auto& child : children) {
      findInEarlier(placeOf(valueOf(child)));
      if (!isBefore(limit)) return;
      earlier = valueOf(child);
      key = keyOf(child);
      ++count;
    }
    findInEarlier(limit);
  }
  static const JSONValue& valueOf(const JSONObject::Member& member) { return member.value; }
  static const JSONValue& valueOf(const JSONValue& element) { return element; }
  static std::string_view keyOf(const JSONObject::Member& member) { return member.key; }
  static std::string_view keyOf(const JSONValue&) { return {}; }

  Paths::iterator next_;
  Paths::iterator end_;
  std::string path_;
};

}  // namespace

/// Takes notes on the way; only who asks for them pays for their paths.
class LossWatch::Notes final : public detail::LossNotes {
 public:
  Notes() : outer_(std::exchange(detail::lossNotes, this)) {}
  ~Notes() { detail::lossNotes = outer_; }
  Notes(const Notes&) = delete;
  Notes& operator=(const Notes&) = delete;

  void didRead(const JSONValue& document) override {
    document_ = document;
    count_ = names_ = 0;
    blamed_ = {};
  }
  void ignored(const JSONObject& object, std::string_view key, Kind wanted) override {
    add(noteOf(object, key, wanted));
  }
  void ignored(const JSONArray& array, const detail::TextIndex& names) override {
    for (const JSONValue& element : array) {
      if (element.string()) continue;
      return add(
          {placeOf(element), {}, reasonFor(element, Kind::string), placeOf(array.asValue())});
    }
    for (const JSONValue& element : array) {
      const bool isKnown = names.find(*element.string()) != detail::TextIndex::kNone;
      if (!isKnown) add({.place = placeOf(element), .reason = Reason::badValue, .isName = true});
    }
  }
  void blamed(const JSONObject& object, std::string_view key, Kind wanted) override {
    blamed_ = noteOf(object, key, wanted);
  }
  void dropped(const JSONObject& record) override {
    blamed_.lost = placeOf(record.asValue());
    add(std::exchange(blamed_, {}));
  }
  [[nodiscard]] std::vector<DocumentLoss> losses(std::string_view document);

 private:
  /// The member of the object at the place, or without a key what is there itself.
  struct Note {
    Place place = 0;
    std::string_view key = {};
    Reason reason = Reason::missing;
    /// What was left out, if it is something else.
    Place lost = 0;
    /// Whether it is a name that is not known, which is more likely new than wrong.
    bool isName = false;
  };

  /// Of an array of objects it is the first element that is none.
  static Note noteOf(const JSONObject& object, std::string_view key, Kind wanted) {
    const auto member = object.value(key);
    const auto elements = member && wanted == Kind::array ? member->array() : std::nullopt;
    if (elements) {
      for (const JSONValue& element : *elements) {
        if (element.object()) continue;
        return {placeOf(element), {}, reasonFor(element, Kind::object), placeOf(*member)};
      }
    }
    const auto reason = member ? reasonFor(*member, wanted) : Reason::missing;
    return {placeOf(object.asValue()), key, reason};
  }
  /// When there are too many, names make room for what is worse.
  void add(const Note& note) {
    if (count_++ < kMost) {
      kept_[count_ - 1] = note;
      names_ += note.isName ? 1 : 0;
    } else if (!note.isName && names_ > 0) {
      --names_;
      *std::ranges::find_if(kept_, &Note::isName) = note;
    }
  }

  detail::LossNotes* const outer_;
  JSONValue document_;
  std::array<Note, kMost> kept_;
  std::size_t count_ = 0;
  std::size_t names_ = 0;
  /// Of the record that is dropped next; if none is, of the document, which fails.
  Note blamed_;
};

std::vector<DocumentLoss> LossWatch::Notes::losses(std::string_view document) {
  if (blamed_.place != 0) {
    // Nothing of it is used: what else is wrong with it makes no difference.
    kept_[0] = std::exchange(blamed_, {});
    kept_[0].lost = placeOf(document_);
    count_ = 1;
  }
  const auto kept = std::span(kept_).first(std::min(count_, kMost));
  std::ranges::stable_sort(kept, {}, &Note::place);
  PathFinder::Paths paths;
  for (const Note& note : kept) {
    paths[note.place];
    if (note.lost != 0) paths[note.lost];
  }
  const PathFinder found(document_, paths);
  std::vector<DocumentLoss> losses;
  losses.reserve(kept.size() + 1);
  for (const Note& note : kept) {
    auto& loss = losses.emplace_back();
    loss.document = document;
    loss.path = paths[note.place];
    appendKey(loss.path, note.key);
    loss.lost = note.lost != 0 ? paths[note.lost] : loss.path;
    loss.reason = note.reason;
  }
  if (count_ > kMost) {
    losses.push_back(
        {.document = std::string(document), .reason = Reason::further, .count = count_ - kMost});
  }
  return losses;
}

LossWatch::LossWatch() noexcept : notes_(new (std::nothrow) Notes) {}
LossWatch::~LossWatch() = default;

std::vector<DocumentLoss> LossWatch::losses(std::string_view document) const {
  return notes_ != nullptr ? notes_->losses(document) : std::vector<DocumentLoss>();
}

}  // namespace orvo
