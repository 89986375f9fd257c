// Changes one thing in documents that are read without loss, members and elements removed, renamed,
// retyped, emptied:
//
//     losses DOCUMENTS [SEED]
//
// What a parser leaves out for it is told with its exact path, or the document fails; so is, if it
// is told, what it fails for. What is left out is found without asking the parser: the document
// reads as one in which that was never there.

#include <OrvoAPI/Parsing/DocumentLoss.h>
#include <OrvoAPI/Platform/ConsoleSink.h>
#include <soak/DocumentTree.h>
#include <soak/Requests.h>
#include <tool/Parse.h>

#include <optional>

namespace orvo::soak {
namespace {

/// What a document reads as.
struct Reading {
  explicit Reading(const std::string& kind, const Tree& document) {
    const LossWatch watch;
    const auto result = tool::parseDocument(kind, document.text(), {});
    losses = watch.losses(kind);
    if (!result.failed()) model = result.value()->text();
  }
  [[nodiscard]] bool isLike(const Reading& other) const { return model && model == other.model; }

  std::optional<std::string> model;
  std::vector<DocumentLoss> losses;
};

struct Document {
  std::string kind;
  Tree tree;
  std::vector<Tree::Path> places;
};

std::string contentOf(const std::filesystem::path& path) {
  std::ifstream stream(path);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// Those of the fixtures that are read without loss.
std::vector<Document> documents() {
  std::vector<Document> all;
  for (const auto& kind : tool::parseKinds()) {
    if (kind == "object" || kind == "array" || kind == "string-array") continue;
    const auto fixtures =
        JSONDataParser::array(Data(contentOf(ORVO_FIXTURES "/" + kind + ".json"))).force();
    for (const JSONObject& situation : fixtures) {
      std::vector<JSONValue> values;
      if (const auto value = situation.value("document")) values.push_back(*value);
      if (const auto several = situation.array("documents")) {
        for (const JSONValue& value : *several) values.push_back(value);
      }
      for (const JSONValue& value : values) {
        Document document{.kind = kind, .tree = Tree(value), .places = {}};
        const Reading reading(kind, document.tree);
        if (!reading.model || !reading.losses.empty()) continue;
        document.places = document.tree.places();
        if (!document.places.empty()) all.push_back(std::move(document));
      }
    }
  }
  return all;
}

enum class Change { remove, rename, retype, empty };
constexpr const char* kChanges[] = {"removed", "renamed", "retyped", "emptied"};

class Mutations {
 public:
  explicit Mutations(std::uint64_t seed) : documents_(documents()), random_(seed) {}

  /// Whether what was lost by one of them was told, and nothing else.
  bool make();
  void print() const;

 private:
  /// What was left out for the place, as its paths; the document as a whole is an empty one.
  static std::vector<std::string> leftOut(const Document& document, const Tree::Path& place,
                                          Change change, const Reading& reading);
  bool verify(const Document& document, const Tree::Path& place, Change change,
              const Tree& changed);
  bool fault(const char* what, const Document& document, const Tree& changed,
             const Tree::Path& place, const Reading& reading) const;

  std::vector<Document> documents_;
  std::mt19937_64 random_;
  std::map<std::string, std::map<Change, std::uint64_t>> tally_;
};

bool Mutations::make() {
  while (true) {
    const auto& document = documents_[random_() % documents_.size()];
    const auto& place = document.places[random_() % document.places.size()];
    const auto change = static_cast<Change>(random_() % std::size(kChanges));
    Tree changed = document.tree;
    const bool isMade = change == Change::remove   ? changed.remove(place)
                        : change == Change::rename ? changed.rename(place)
                        : change == Change::retype ? changed.retype(place, random_())
                                                   : changed.empty(place);
    if (isMade) return verify(document, place, change, changed);
  }
}

std::vector<std::string> Mutations::leftOut(const Document& document, const Tree::Path& place,
                                            Change change, const Reading& reading) {
  std::vector<std::string> found;
  const bool mayBeItself = change == Change::retype || change == Change::empty;
  for (auto length = place.size() - (mayBeItself ? 0 : 1); length > 0; --length) {
    Tree without = document.tree;
    const Tree::Path part(place.begin(), place.begin() + static_cast<std::ptrdiff_t>(length));
    if (!without.remove(part)) continue;
    bool isLike = Reading(document.kind, without).isLike(reading);
    if (!isLike && length == place.size()) {
      // Of a text that cannot be used there may be a stand-in.
      Tree other = document.tree;
      other.replaceBy(place, "?");
      isLike = Reading(document.kind, other).isLike(reading);
    }
    if (isLike) found.push_back(Tree::pathText(part));
  }
  if (Reading(document.kind, document.tree.emptied()).isLike(reading)) found.emplace_back();
  return found;
}

bool Mutations::verify(const Document& document, const Tree::Path& place, Change change,
                       const Tree& changed) {
  const Reading reading(document.kind, changed);
  const auto path = Tree::pathText(place);
  const auto isOf = [&](const DocumentLoss& loss) {
    // Of an object that was emptied it is what is missing in it.
    return loss.path == path || (change == Change::empty && loss.path.starts_with(path + "."));
  };
  if (!reading.model) {
    const bool isTold = !reading.losses.empty();
    if (isTold && !std::ranges::all_of(reading.losses, isOf)) {
      return fault("told wrongly", document, changed, place, reading);
    }
    return ++tally_[isTold ? "fails, and is told" : "fails"][change], true;
  }
  const bool readsTheSame = reading.isLike(Reading(document.kind, document.tree));
  const auto lost = leftOut(document, place, change, reading);
  if (reading.losses.size() > 1) return fault("told twice", document, changed, place, reading);
  if (!reading.losses.empty()) {
    const auto& loss = reading.losses.front();
    const bool isLost = std::find(lost.begin(), lost.end(), loss.lost) != lost.end();
    if (!isOf(loss) || !isLost) return fault("told wrongly", document, changed, place, reading);
    ++tally_[loss.lost == path ? "told: ignored" : "told: dropped"][change];
    return true;
  }
  const bool isText = change == Change::empty && document.tree.at(place)->isScalar();
  if (readsTheSame) return ++tally_["not told: nobody reads it"][change], true;
  // Without its only element a list reads as one that is not there.
  const bool isElement = place.back().name.empty();
  const bool isDropped =
      change != Change::empty && !isElement &&
      std::any_of(lost.begin(), lost.end(), [&](const auto& part) { return part != path; });
  const bool isIgnored = change == Change::retype && !lost.empty();
  if (isDropped || isIgnored) return fault("not told", document, changed, place, reading);
  ++tally_[change == Change::empty
               ? (isText ? "not told: a text without content" : "not told: a list without elements")
               : "not told: it need not be there"][change];
  return true;
}

bool Mutations::fault(const char* what, const Document& document, const Tree& changed,
                      const Tree::Path& place, const Reading& reading) const {
  std::fprintf(stderr, "%s: %s, %s in %s\n", what, Tree::pathText(place).c_str(),
               document.kind.c_str(), changed.text().c_str());
  for (const auto& loss : reading.losses) {
    std::fprintf(stderr, "  %s %s: %s\n", loss.path.c_str(),
                 std::string(caseName(loss.reason)).c_str(), loss.lost.c_str());
  }
  return false;
}

void Mutations::print() const {
  std::printf("%zu documents\n%-36s", documents_.size(), "");
  for (const char* change : kChanges) std::printf("%10s", change);
  for (const auto& [what, changes] : tally_) {
    std::printf("\n%-36s", what.c_str());
    for (std::size_t i = 0; i < std::size(kChanges); ++i) {
      const auto found = changes.find(static_cast<Change>(i));
      std::printf("%10llu",
                  found == changes.end() ? 0ULL : static_cast<unsigned long long>(found->second));
    }
  }
  std::puts("");
}

int run(std::uint64_t count, std::uint64_t seed) {
  silenceConsole();
  Mutations mutations(seed);
  std::uint64_t faults = 0;
  for (std::uint64_t i = 0; i < count; ++i) faults += !mutations.make();
  mutations.print();
  std::printf("%llu faults\n", static_cast<unsigned long long>(faults));
  return faults == 0 ? 0 : 1;
}

}  // namespace
}  // namespace orvo::soak

int main(int argc, char** argv) {
  using orvo::soak::argument;
  return orvo::soak::run(argument(argc, argv, 1, 10'000), argument(argc, argv, 2, 1));
}
