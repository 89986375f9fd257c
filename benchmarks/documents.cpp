// Bodies to JSON values and to models, against the limit: simdjson alone, with a parser that keeps
// its memory.

#include <benchmarks/support/Documents.h>
#include <benchmarks/support/Measure.h>
#include <benchmarks/support/OurDocuments.h>
#include <simdjson.h>

#include <stdexcept>

using namespace orvo;
using namespace orvo::benchmarks;

namespace {

/// The limit: simdjson alone.
class Limit {
 public:
  void read(const Data& body) {
    const auto text = body.view();
    if (parser_.parse(text.data(), text.size(), false).error()) throw std::runtime_error("limit");
  }

 private:
  simdjson::dom::parser parser_;
};

constexpr double kValueGoal = 1.3;
constexpr double kModelGoal = 3.3;
constexpr double kModelMeanGoal = 2.8;
constexpr double kGrowthGoal = 1.3;

void measureValues(Limit& limit) {
  for (const auto& document : typicalDocuments()) {
    const Data body(document.text);
    print(
        "read " + document.name + ", " + std::to_string(body.size()) + " B", "ns", "simdjson alone",
        compare([&] { good(JSONDataParser::value(body)); }, [&] { limit.read(body); }), kValueGoal);
  }
}

void measureModels(Limit& limit) {
  std::vector<double> ratios;
  for (const auto& document : typicalDocuments()) {
    const Data body(document.text);
    const auto figures =
        compare([&] { readModel(document.kind, body); }, [&] { limit.read(body); });
    ratios.push_back(figures.ratio);
    print("body to model, " + document.name, "ns", "simdjson alone", figures, kModelGoal);
  }
  Row mean{.name = "body to model, geometric mean", .unit = ""};
  mean.ratio = geometricMean(ratios);
  mean.bound = kModelMeanGoal;
  mean.peer = "simdjson alone";
  print(mean);
}

void measureGrowth() {
  constexpr std::size_t kFew = 10;
  const Data few(collectionDocument(kFew));
  for (const std::size_t count : {100U, 1000U, 10'000U}) {
    const Data many(collectionDocument(count));
    const auto perItem = [](const Data& body, std::size_t items) {
      return nanosecondsPerCall([&] { readModel(DocumentKind::collection, body); }) /
             static_cast<double>(items);
    };
    print("growth: an item in " + std::to_string(count) + " items", "ns", "in 10 items",
          inTurns([&] { return perItem(many, count); }, [&] { return perItem(few, kFew); }),
          kGrowthGoal);
  }
}

}  // namespace

int main() {
  Limit limit;
  measureValues(limit);
  measureModels(limit);
  measureGrowth();
}
