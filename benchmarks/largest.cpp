// What the largest body that is let in costs, from the call of its fetch to its model: time, and
// memory at its peak, in a process that has read nothing before. Served by an nginx; one document
// as a service would send it, and one that holds as many values as are let in.

#include <OrvoAPI/OrvoAPI.h>
#include <OrvoAPI/Testing/Fixtures.h>
#include <OrvoAPI/Testing/StubSessionProvider.h>
#include <benchmarks/support/Documents.h>
#include <benchmarks/support/Measure.h>
#include <support/Nginx.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

namespace orvo::benchmarks {
namespace {

constexpr std::size_t kLargest = URLSessionConfiguration::kDefaultMaximumBodySize;

/// One element repeated to the largest size, in a list.
std::string listOf(const std::string& element) {
  std::string text = "[" + element;
  while (text.size() + element.size() + 2 <= kLargest) text.append(1, ',').append(element);
  return text + "]";
}

double megabytes(const char* what) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(what)) return std::stod(line.substr(line.find(':') + 1)) * 1.024e-3;
  }
  return 0;
}

struct Cost {
  double milliseconds = 0;
  double megabytes = 0;
};

Cost fetch(const std::string& url) {
  const auto context =
      Context::make(fixtures::configuration(), *URL::parse("http://api.invalid/"),
                    *URL::parse("http://images.invalid/"),
                    std::make_shared<StubSessionProvider>("token"), std::make_shared<URLSession>());
  const double resident = megabytes("VmRSS"), begin = wallSeconds();
  const auto lineup = context->fetchLineup(*URL::parse(url)).wait(std::chrono::seconds(60));
  if (lineup.failed()) {
    std::fprintf(stderr, "%s\n", lineup.error()->description().c_str());
    std::exit(2);
  }
  return {(wallSeconds() - begin) * 1e3, megabytes("VmHWM") - resident};
}

/// In a process that has done nothing else: this program, told of the URL.
Cost inNewProcess(const std::string& program, const std::string& url) {
  Cost cost;
  std::FILE* const told = popen((program + " " + url).c_str(), "r");
  const bool isTold =
      told != nullptr && std::fscanf(told, "%lf %lf", &cost.milliseconds, &cost.megabytes) == 2;
  if (told == nullptr || pclose(told) != 0 || !isTold) std::exit(2);
  return cost;
}

void measure(const std::string& program, const std::string& name, const std::string& url) {
  std::vector<double> times, peaks;
  for (int round = 0; round < 7; ++round) {
    const auto cost = inNewProcess(program, url);
    times.push_back(cost.milliseconds);
    peaks.push_back(cost.megabytes);
  }
  print({.name = name, .unit = "ms", .ours = median(times), .bound = 150});
  print({.name = name, .unit = "MB at most", .ours = median(peaks), .bound = 150});
}

}  // namespace
}  // namespace orvo::benchmarks

int main(int argc, char** argv) {
  using namespace orvo::benchmarks;
  if (argc > 1) {
    const auto cost = fetch(argv[1]);
    return std::printf("%f %f", cost.milliseconds, cost.megabytes) < 0;
  }
  const orvo::test::Nginx nginx("root files;");
  std::filesystem::create_directory(nginx.folder() + "/files");
  const auto lineup = lineupDocument(1);
  const auto serve = [&](const std::string& name, const std::string& text) {
    std::ofstream(nginx.folder() + "/files/" + name) << text;
    return "http://127.0.0.1:" + std::to_string(nginx.port) + "/" + name;
  };
  measure(argv[0], "the largest body, a lineup",
          serve("lineup", listOf(lineup.substr(1, lineup.size() - 2))));
  // Four bytes for each comma, colon and bracket is the least.
  measure(argv[0], "the largest body, as dense as can be",
          serve("dense", listOf(R"({"a":10000})")));
}
