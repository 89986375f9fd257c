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
constexpr double kGrowthGoal = 1.3;

void measureValues(Limit& limit) {
  for (const auto& document : typicalDocuments()) {
    const Data body(document.text);
    print(
        "read " + document.name + ", " + std::to_string(body.size()) + " B", "ns", "simdjson alone",
        compare([&] { good(JSONDataParser::value(body)); }, [&] { limit.read(body); }), kValueGoal);
  }
}

/// Without a goal: how fast the limit is depends on what the processor has for it.
void measureModels(Limit& limit) {
  std::vector<Comparison> all;
  for (const auto& document : typicalDocuments()) {
    const Data body(document.text);
    all.push_back(compare([&] { readModel(document.kind, body); }, [&] { limit.read(body); }));
    print("body to model, " + document.name, "ns", "simdjson alone", all.back(), kNothing);
  }
  print("body to model, geometric mean", "", "simdjson alone", geometricMean(all), kNothing);
}

void measureGrowth() {
  constexpr std::size_t kFew = 10;
  const Data few(collectionDocument(kFew));
  for (const std::size_t count : {100U, 1000U}) {
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
