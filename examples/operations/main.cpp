// Runs the examples of the reference, one after another, and says which did not come to what it
// should. Usage: operations API_URL RESOURCES_URL, as `orvo serve-demo` prints them.
#include <chrono>

#include "Example.h"

namespace {

bool run(const Example& example, const App& app) {
  std::printf("%s\n", example.name);
  const auto outcome = example.run(app).wait(std::chrono::seconds(20));
  if (!outcome.failed() && *outcome.value()) return true;
  std::fprintf(stderr, "%s: %s\n", example.name,
               outcome.failed() ? outcome.error()->description().c_str() : "is wrong");
  return false;
}

}  // namespace

int main(int count, char** arguments) {
  const auto api = orvo::URL::parse(count == 3 ? arguments[1] : "");
  const auto resources = orvo::URL::parse(count == 3 ? arguments[2] : "");
  if (!api || !resources) return std::fputs("usage: operations API_URL RESOURCES_URL\n", stderr), 2;
  const auto context = orvo::ContextService::context(*api, *resources, orvo::Client::appleTV)
                           .wait(std::chrono::seconds(20));
  if (context.failed()) {
    std::fprintf(stderr, "%s\n", context.error()->description().c_str());
    return 1;
  }
  const App app{*api, *resources, *context.value()};
  int examples = 0;
  int faults = 0;
  for (const auto& part : {bootstrapExamples(), fetchExamples(), capabilityExamples(),
                           listExamples(), futureExamples(), resultExamples(), networkExamples(),
                           queueExamples(), monitorExamples()}) {
    for (const auto& example : part) {
      ++examples;
      if (!run(example, app)) ++faults;
    }
  }
  std::printf("%d examples, %d faults\n", examples, faults);
  return faults == 0 ? 0 : 1;
}
