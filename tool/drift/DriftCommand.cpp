#include <tool/Arguments.h>
#include <tool/Commands.h>
#include <tool/JsonLines.h>
#include <tool/Text.h>
#include <tool/Wording.h>
#include <tool/drift/ShapeFile.h>
#include <tool/drift/Walk.h>

#include <algorithm>
#include <functional>

namespace orvo::tool {

namespace {

struct WrittenDrift {
  std::string action{};
  std::string folder{};
  std::int64_t requests = 60;
  std::int64_t seconds = 10;

  [[nodiscard]] WalkLimits limits() const {
    return {.requests = requests, .patience = std::chrono::seconds(seconds)};
  }
};

constexpr int kRequestFailed = 1;
constexpr int kDriftLoses = 3;
constexpr int kDriftOnly = 4;

/// The documents that cannot be read any more, and what differs.
std::vector<Difference> drift(const Shapes& then, const WalkResult& walk) {
  std::vector<Difference> all;
  for (const auto& fault : walk.faults) {
    if (fault.isUnreadable) all.push_back({fault.text, "", "", true});
  }
  auto others = differences(then, walk.shapes, !walk.faults.empty());
  std::stable_partition(others.begin(), others.end(), std::mem_fn(&Difference::loses));
  all.insert(all.end(), others.begin(), others.end());
  return all;
}

void tellFailed(const Tool& tool, const WalkResult& walk) {
  const auto say = [&tool](const std::string& text) {
    if (tool.options().json) {
      printJsonLine(Json::object({{"error", Json::object({{"message", text}})}}));
    } else {
      printDiagnostic(escaped("orvo: " + text) + "\n");
    }
  };
  for (const auto& fault : walk.faults) {
    if (!fault.isUnreadable) say(fault.text);
  }
  if (walk.isGivenUp) say("the walk ends here: the service does not answer; orvo doctor looks why");
}

std::int64_t failedRequests(const WalkResult& walk) {
  return std::ranges::count(walk.faults, false, &WalkFault::isUnreadable);
}

/// How much of the service an answer about it is about; empty when nothing failed.
std::string extentOf(const WalkResult& walk) {
  const auto failed = failedRequests(walk);
  if (failed == 0) return "";
  const auto& shapes = walk.shapes;
  const bool isBare =
      std::ranges::all_of(shapes, [](const auto& entry) { return entry.first == "configuration"; });
  const std::string_view what = shapes.empty() ? "nothing"
                                : isBare       ? "nothing but the configuration"
                                               : "only a part";
  return std::string(what) + " was compared: " + countText(failed, "request") + " failed";
}

int runLearn(Tool& tool, const WrittenDrift& written) {
  refuseForeignFolder(written.folder);
  const auto walk = walkService(tool, written.limits(), nullptr);
  if (const AnyError* error = walk.error()) return tool.fail(*error);
  addShapes(written.folder, walk.value()->shapes);
  std::size_t places = 0;
  for (const auto& [name, shape] : walk.value()->shapes) places += shape.places.size();
  const auto requests = walk.value()->requests;
  tool.answer(Json::object({{"requests", requests}, {"places", static_cast<std::int64_t>(places)}}),
              [&](Screen& screen) {
                screen.line(countText(static_cast<std::int64_t>(places), "place") +
                            " learned from " + countText(requests, "request"));
              });
  tellFailed(tool, *walk.value());
  return failedRequests(*walk.value()) > 0 ? kRequestFailed : 0;
}

int runCheck(Tool& tool, const WrittenDrift& written) {
  const auto then = readShapes(written.folder);
  const auto walk = walkService(tool, written.limits(), &then);
  if (const AnyError* error = walk.error()) return tool.fail(*error);
  const auto found = drift(then, *walk.value());
  const auto failed = failedRequests(*walk.value());
  const auto json = [](const Difference& difference) {
    const auto& [document, path, text, loses] = difference;
    return Json::object({{"document", document}, {"path", path}, {"what", text}, {"loses", loses}});
  };
  tool.answer(Json::object({{"requests", walk.value()->requests},
                            {"failedRequests", failed},
                            {"drift", Json::list(found, json)}}),
              [&](Screen& screen) {
                for (const auto& [document, path, text, loses] : found) {
                  std::string line = loses ? "loses  " : "       ";
                  line += document;
                  if (!path.empty()) line += " " + path;
                  if (!text.empty()) line += " " + text;
                  screen.line(printable(line));
                }
                const auto extent = extentOf(*walk.value());
                if (found.empty())
                  screen.line(extent.empty() ? "no drift" : "no drift seen, but " + extent);
                if (!found.empty() && !extent.empty()) screen.line(extent);
              });
  tellFailed(tool, *walk.value());
  if (std::ranges::any_of(found, &Difference::loses)) return kDriftLoses;
  if (failed > 0) return kRequestFailed;
  return found.empty() ? 0 : kDriftOnly;
}

std::vector<Note> statuses() {
  return {{"0", "No drift; of \"learn\", done"},
          {"1",
           "A request failed, or the output could not be written; no drift that "
           "loses something is known"},
          {"3",
           "Drift by which the library loses something; or, as a message says "
           "then, the system refused memory"},
          {"4", "Drift that does not matter"}};
}

}  // namespace

void addDriftCommand(Commands& commands) {
  const auto written = std::make_shared<WrittenDrift>();
  commands.push_back(
      {.name = "drift",
       .description = "What has changed in the service's documents",
       .details =
           "\"learn\" walks through the service, two requests at a time, and keeps in the folder "
           "what "
           "its documents look like: keys, types, words of enumerations, but no texts. It adds to "
           "what an earlier walk has learned. \"check\" walks again and says what is new, missing "
           "or of another type, and what the library loses by it. A walk ends early when four "
           "requests have not been answered in time. Interrupted, \"learn\" leaves the folder as "
           "it "
           "was.",
       .arguments = {{.name = "ACTION",
                      .description = "What to do",
                      .values = anyOf({"learn", "check"}, "ACTION"),
                      .target = &written->action,
                      .required = true},
                     {.name = "FOLDER",
                      .description = "Where what was learned is kept",
                      .values = files("FOLDER"),
                      .target = &written->folder,
                      .required = true}},
       .options = {{.name = "--requests",
                    .description = "How many requests a walk may take",
                    .values = number(3, 100'000),
                    .target = &written->requests},
                   {.name = "--patience",
                    .description = "How many seconds a request may take",
                    .values = number(1, 600, "SECONDS"),
                    .target = &written->seconds}},
       .examples =
           {"cd $(mktemp -d); orvo --demo drift learn shapes && orvo --demo drift check shapes"},
       .statuses = statuses(),
       .run = [written](Tool& tool) {
         return written->action == "learn" ? runLearn(tool, *written) : runCheck(tool, *written);
       }});
}

}  // namespace orvo::tool
