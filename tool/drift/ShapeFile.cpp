#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <demo/Json.h>
#include <tool/Files.h>
#include <tool/ValueCheck.h>
#include <tool/drift/ShapeFile.h>

#include <algorithm>
#include <filesystem>
#include <optional>

namespace orvo::tool {

namespace {

using demo::Json;

constexpr const char* kName = "/shapes.json";
constexpr std::size_t kLargest = std::size_t{64} << 20;
constexpr std::string_view kForm = "orvo drift 1";

Json textsJson(const std::set<std::string>& texts) {
  return Json::list(texts, [](const std::string& text) { return Json(text); });
}

Json placeJson(const std::string& path, const Place& place) {
  return Json::object({{"path", path},
                       {"parent", place.parent},
                       {"count", static_cast<std::int64_t>(place.count)},
                       {"objects", static_cast<std::int64_t>(place.objects)},
                       {"types", textsJson(place.types)},
                       {"words", textsJson(place.words)},
                       {"isRead", place.isRead}});
}

std::set<std::string> textsIn(const JSONObject& json, std::string_view key) {
  std::set<std::string> all;
  const auto strings = json.strings(key);
  if (strings) {
    for (const auto string : *strings) all.emplace(string);
  }
  return all;
}

std::uint64_t countIn(const JSONObject& json, std::string_view key) {
  const auto value = json.integer(key).value_or(0);
  // More have never been met; sums of these are numbers, too.
  constexpr std::int64_t kMost = 1'000'000'000'000'000;
  return static_cast<std::uint64_t>(std::clamp<std::int64_t>(value, 0, kMost));
}

Shape readShape(const JSONObject& json) {
  Shape shape{.losses = textsIn(json, "losses"), .met = textsIn(json, "met")};
  const auto places = json.objects("places");
  if (!places) return shape;
  for (const JSONObject& entry : *places) {
    Place place{.parent = std::string(entry.string("parent").value_or("")),
                .count = countIn(entry, "count"),
                .objects = countIn(entry, "objects"),
                .types = textsIn(entry, "types"),
                .words = textsIn(entry, "words"),
                .isRead = entry.boolean("isRead").value_or(false)};
    shape.places.emplace(entry.string("path").value_or(""), std::move(place));
  }
  return shape;
}

[[noreturn]] void refuseFolder(const std::string& folder) {
  throw WrongUsage(folder + ": holds nothing that orvo drift learn has written");
}

}  // namespace

std::string shapesText(const Shapes& shapes) {
  Json documents = Json::object();
  for (const auto& [name, shape] : shapes) {
    Json places = Json::array();
    for (const auto& [path, place] : shape.places) places.push(placeJson(path, place));
    documents.set(name, Json::object({{"losses", textsJson(shape.losses)},
                                      {"met", textsJson(shape.met)},
                                      {"places", std::move(places)}}));
  }
  return Json::object({{"form", kForm}, {"documents", std::move(documents)}}).indentedText() + "\n";
}

std::optional<Shapes> shapesIn(const std::string& text) {
  const auto json = JSONDataParser::object(Data(text));
  const auto* const file = json.value();
  const auto documents =
      file != nullptr && file->string("form") == kForm ? file->object("documents") : std::nullopt;
  if (!documents) return std::nullopt;
  Shapes shapes;
  for (const auto& [name, value] : *documents) {
    if (const auto shape = value.object()) shapes.emplace(name, readShape(*shape));
  }
  return shapes;
}

Shapes readShapes(const std::string& folder) {
  const auto text = readRegularFile(folder + kName, kLargest);
  std::error_code error;
  if (!text && !std::filesystem::exists(folder, error)) {
    throw WrongUsage(folder + ": there is no such folder; \"orvo drift learn\" makes it");
  }
  auto shapes = text ? shapesIn(*text) : std::nullopt;
  if (!shapes) refuseFolder(folder);
  return *std::move(shapes);
}

void refuseForeignFolder(const std::string& folder) {
  std::error_code error;
  if (!std::filesystem::exists(folder, error)) return;
  const bool isEmpty = std::filesystem::is_directory(folder, error) &&
                       std::filesystem::is_empty(folder, error) && !error;
  if (!isEmpty) (void)readShapes(folder);
}

void addShapes(const std::string& folder, const Shapes& shapes) {
  rewriteFile(folder + kName, kLargest, [&](const std::optional<std::string>& before) {
    auto all = before ? shapesIn(*before) : Shapes();
    if (!all) refuseFolder(folder);
    for (const auto& [name, shape] : shapes) (*all)[name].merge(shape);
    return shapesText(*all);
  });
}

}  // namespace orvo::tool
