#include <demo/Json.h>
#include <tool/Parse.h>
#include <tool/drift/Probe.h>

#include <cstddef>
#include <optional>
#include <vector>

namespace orvo::tool {

namespace {

/// Which members and elements lead somewhere, by their numbers.
using Steps = std::vector<std::size_t>;

/// The document with a value of another type where the steps lead.
std::string retyped(const JSONValue& value, const Steps& steps, std::size_t done) {
  if (done == steps.size()) return value.array() ? "7" : "[7]";
  std::string text;
  std::size_t number = 0;
  const auto append = [&](const std::string& key, const JSONValue& part) {
    if (number > 0) text += ',';
    text += key;
    text += number++ == steps[done] ? retyped(part, steps, done + 1) : part.text();
  };
  if (const auto object = value.object()) {
    for (const auto& [key, member] : *object) append(demo::Json(key).text() + ":", member);
    return "{" + text + "}";
  }
  const auto array = value.array();
  if (!array) return value.text();
  for (const JSONValue& element : *array) append("", element);
  return "[" + text + "]";
}

/// What the library makes of it; nothing when it cannot be read.
std::optional<std::string> readAs(const std::string& kind, const std::string& body) {
  const LossWatch watch;
  const auto model = parseDocument(kind, body, {});
  if (model.failed()) return std::nullopt;
  auto text = model.value()->text();
  for (const auto& loss : watch.losses(kind)) text += "\n" + loss.path;
  return text;
}

/// Goes through the places that have not been examined.
struct Examination {
  void visit(const JSONValue& value, const std::string& path) {
    steps.push_back(0);
    if (const auto object = value.object()) {
      const bool isData = isKeyedByData(*object);
      for (const auto& [key, member] : *object) {
        const auto memberAt = memberPath(path, key, isData);
        examine(memberAt);
        visit(member, memberAt);
        ++steps.back();
      }
    } else if (const auto array = value.array()) {
      for (const JSONValue& element : *array) {
        visit(element, path + "[]");
        ++steps.back();
      }
    }
    steps.pop_back();
  }
  void examine(const std::string& path) {
    const auto place = shape.places.find(path);
    if (place == shape.places.end() || !examined.insert(path).second) return;
    place->second.isRead = readAs(kind, retyped(document, steps, 0)) != asItIs;
  }

  const std::string& kind;
  const JSONValue& document;
  const std::optional<std::string>& asItIs;
  Shape& shape;
  std::set<std::string>& examined;
  Steps steps{};
};

}  // namespace

void Probe::examine(const JSONValue& document, Shape& shape) {
  const auto asItIs = readAs(kind_, document.text());
  if (asItIs) Examination{kind_, document, asItIs, shape, examined_}.visit(document, "");
}

}  // namespace orvo::tool
