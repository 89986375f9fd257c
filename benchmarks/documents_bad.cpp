// Lists whose every element is bad, of each kind of list, against the good list: by the byte, since
// the sender decides how many there are. The console, which is told of bad programmes, is silenced.

#include <OrvoAPI/Linear/LinearProgramGuide.h>
#include <OrvoAPI/Linear/Lineup.h>
#include <OrvoAPI/Model/ItemCollection.h>
#include <OrvoAPI/Model/Playlist.h>
#include <OrvoAPI/Model/SearchCollection.h>
#include <OrvoAPI/Model/VideoAdMetadata.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <OrvoAPI/Platform/ConsoleSink.h>
#include <benchmarks/support/Documents.h>
#include <benchmarks/support/Measure.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

using namespace orvo;
using namespace orvo::benchmarks;

namespace {

constexpr double kGoal = 3;
constexpr std::size_t kElements = 200;

struct List {
  std::string name;
  /// What stands before and after the elements.
  std::string head, tail;
  std::function<std::string(std::size_t number)> element;
  /// What makes an element bad: a key that it requires, and what is sent in its place.
  std::string key, wrongKey;
  /// As short as can be while the reader has to look into it.
  std::string tiny;
  std::function<std::size_t(const JSONValue&)> read;
};

std::string replacingAll(std::string text, const std::string& what, const std::string& with) {
  for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size())) {
    text.replace(at, what.size(), with);
  }
  return text;
}

/// A list of the elements, at least `size` bytes long.
std::string listOf(const List& list, const std::function<std::string(std::size_t)>& element,
                   std::size_t elements, std::size_t size) {
  std::string text = list.head;
  for (std::size_t i = 0; i < elements || text.size() < size; ++i) {
    if (i > 0) text += ',';
    text += element(i);
  }
  return text + list.tail;
}

/// The nanoseconds that a byte of the document costs; `kept` is how many elements are left.
double perByte(const List& list, const Data& body, std::size_t kept) {
  const auto work = [&] { return list.read(JSONDataParser::value(body).force()); };
  if (work() != kept) std::abort();
  return nanosecondsPerCall([&] { keep(work()); }) / static_cast<double>(body.size());
}

void measure(const List& list) {
  const Data good(listOf(list, list.element, kElements, 0));
  const auto against = [&](const std::string& what, double goal, const auto& element) {
    const Data bad(listOf(list, element, 0, good.size()));
    print("bad " + list.name + ", " + what, "ns/B", "good ones",
          inTurns([&] { return perByte(list, bad, 0); },
                  [&] { return perByte(list, good, kElements); }, 7),
          goal);
  };
  against("{}", kNothing, [](std::size_t) { return "{}"; });
  against(list.tiny, kGoal, [&](std::size_t) { return list.tiny; });
  against("\"" + list.key + "\" missing", kGoal, [&](std::size_t number) {
    return replacingAll(list.element(number),
                        "\"" + list.key + "\":", "\"" + list.wrongKey + "\":");
  });
}

/// What stands before the first element of a document of that kind, up to its bracket.
std::string headOf(const std::string& document) {
  return document.substr(0, document.rfind('[', document.find("[{") + 1) + 1);
}
/// The first element of such a document of one.
std::string elementOf(const std::string& document, const std::string& tail) {
  const auto begin = headOf(document).size();
  return document.substr(begin, document.size() - tail.size() - begin);
}

std::string itemDocument(std::size_t number) {
  return number % 3 == 2 ? pageDocument(number) : videoDocument(number);
}

std::vector<List> lists() {
  const std::string video = videoDocument(0);
  const std::string collection = headOf(collectionDocument(1));
  const auto ofVideo = [&](const std::string& key) {
    return video.substr(0, video.find("\"" + key + "\":[")) + "\"" + key + "\":[";
  };
  const auto parsedVideo = [](const JSONValue& json) {
    return VideoParser::parse(*json.object()).force();
  };
  return {
      {"items", collection, "]}", itemDocument, "title", "titel", R"({"type":"video"})",
       [](const JSONValue& json) {
         return ItemCollectionParser::parse(*json.object()).force().items.size();
       }},
      {"videos of a playlist", collection, "]}", videoDocument, "short_description", "description",
       R"({"id":"a","title":"b"})",
       [](const JSONValue& json) {
         return PlaylistParser::parse(*json.object()).force().items.size();
       }},
      {"search results", R"({"collections":[)", "]}",
       [collection](std::size_t number) {
         return replacingAll(collection, "\"type\":",
                             R"("collection_type":"videos","contains":"mixed","type":)") +
                itemDocument(number) + "]}";
       },
       "short_label", "label_short", R"({"type":"generic"})",
       [](const JSONValue& json) {
         return SearchResultsParser::parse(*json.object(), "q").force().size();
       }},
      {"programmes", headOf(guideDocument(1)), "]}",
       [](std::size_t) { return elementOf(guideDocument(1), "]}"); }, "end_time", "ends",
       R"({"id":"a"})",
       [](const JSONValue& json) {
         return LinearProgramGuideParser::parse(*json.object(), Date(), Date())
             .force()
             .items.size();
       }},
      {"slots", "[", "]", [](std::size_t) { return elementOf(lineupDocument(1), "]"); }, "order",
       "place", R"({"start":""})",
       [](const JSONValue& json) { return LineupParser::parse(*json.objects()).slots_.size(); }},
      {"beacons", R"({"events":[)", "]}",
       [](std::size_t number) {
         return R"({"name":"firstQuartile","time":)" + std::to_string(number) +
                R"(.75,"url":"https://beacons.orvo.example/v3/b?event=firstQuartile&n=1"})";
       },
       "url", "address", R"({"name":"a"})",
       [](const JSONValue& json) {
         return VideoAdMetadataParser::parse(*json.object()).beacons.size();
       }},
      {"segments", R"({"segments":[)", "]}",
       [](std::size_t number) {
         return R"({"ad":true,"start":)" + std::to_string(number) + R"(.5,"duration":29.97})";
       },
       "duration", "length", R"({"ad":true})",
       [](const JSONValue& json) {
         return VideoAdMetadataParser::parse(*json.object()).segments.size();
       }},
      {"collections of a video", ofVideo("collections"), "]}",
       [](std::size_t number) {
         return R"({"id":"playlists::68a6c881d3b8c53b","label":"Wave )" + std::to_string(number) +
                "\"}";
       },
       "label", "title", R"({"id":"a"})",
       [=](const JSONValue& json) { return parsedVideo(json).collections.size(); }},
      {"links of a video", ofVideo("links"), "]}",
       [](std::size_t number) {
         return R"({"type":"button","id":"AP-68a6c881d3b8c53b","label":"Play )" +
                std::to_string(number) + R"(","action":"play","icon":"play"})";
       },
       "action", "does", R"({"type":"button"})",
       [=](const JSONValue& json) { return parsedVideo(json).appActions.size(); }},
  };
}

}  // namespace

int main() {
  silenceConsole();
  for (const List& list : lists()) measure(list);
}
