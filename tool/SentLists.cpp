#include <tool/SentLists.h>

#include <algorithm>
#include <iterator>
#include <string_view>

namespace orvo::tool {

namespace {

constexpr std::size_t kMostLists = 20;
constexpr std::size_t kLongestPath = 60;

ShortList listOf(const JSONObject& object, std::string path, std::int64_t count) {
  ShortList list{.path = std::move(path), .count = count, .promised = count};
  const auto meta = object.object("meta");
  if (!meta) return list;
  list.total = meta->integer("total");
  list.offset = std::max<std::int64_t>(meta->integer("offset").value_or(0), 0);
  const auto total = list.total.value_or(0);
  const auto limit = meta->integer("limit").value_or(0);
  const auto left = total > list.offset ? total - list.offset : 0;
  // Some say with the limit how many there are, and some nothing.
  list.promised =
      std::max(count, limit > 0 ? std::min(left, limit) : std::min<std::int64_t>(left, 1));
  return list;
}

void search(const JSONValue& value, const std::string& path, std::vector<ShortList>& found) {
  if (found.size() >= kMostLists || path.size() > kLongestPath) return;
  if (const auto array = value.array()) {
    std::size_t number = 0;
    for (const auto& element : *array) {
      search(element, path + "[" + std::to_string(number++) + "]", found);
    }
  }
  const auto object = value.object();
  if (!object) return;
  const std::string before = path.empty() ? "" : path + ".";
  const auto items = object->array("items");
  if (items) {
    auto list = listOf(*object, before + "items", std::ranges::distance(*items));
    if (list.count == 0 || list.count < list.promised) found.push_back(std::move(list));
  }
  // A video has none as a rule.
  const auto collections = path.empty() && object->string("type") != "video"
                               ? object->array("collections")
                               : std::nullopt;
  if (collections && collections->begin() == collections->end()) {
    found.push_back({.path = "collections"});
  }
  // Where lists of the service's lie; other keys may be anything.
  for (const std::string key : {"collections", "items"}) {
    if (const auto member = object->value(key)) search(*member, before + key, found);
  }
}

}  // namespace

std::vector<ShortList> shortLists(const JSONValue& document) {
  std::vector<ShortList> found;
  const auto array = document.array();
  if (array && array->begin() == array->end()) found.push_back({});
  search(document, "", found);
  return found;
}

std::string shortListText(const ShortList& list) {
  const std::string name = list.path.empty() ? "the document" : list.path;
  const std::string total = "meta.total is " + std::to_string(list.total.value_or(0));
  if (list.count > 0) {
    return name + " has " + std::to_string(list.count) + ", where meta promises " +
           std::to_string(list.promised) + ": the service itself sent no more";
  }
  if (list.promised > 0) {
    return name + " is empty, though " + total + ": the service itself sent none";
  }
  if (!list.total) return name + " is empty: the service itself sent none";
  return name + " is empty: " + total +
         (*list.total > 0 ? ", and it ends before offset " + std::to_string(list.offset) : "");
}

}  // namespace orvo::tool
