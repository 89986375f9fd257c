// Bodies to JSON values and to models, against the limit: the reading library alone, with a parser
// that keeps its memory.

#include <OrvoAPI/Configuration/Configuration.h>
#include <OrvoAPI/Linear/LinearProgramGuide.h>
#include <OrvoAPI/Linear/Lineup.h>
#include <OrvoAPI/Model/ItemCollection.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <benchmarks/support/Documents.h>
#include <benchmarks/support/Measure.h>
#include <simdjson.h>

#include <cstdlib>
#include <stdexcept>

using namespace orvo;
using namespace orvo::benchmarks;

namespace {

/// What was made of the body; a body that cannot be read ends the program, instead of being fast.
template <class T>
const T& good(const Result<T>& result) {
  if (result.failed()) throw std::runtime_error(result.error()->description());
  keep(*result.value());
  return *result.value();
}

template <class Parser, class... Arguments>
void readObject(const Data& body, const Arguments&... arguments) {
  const auto json = JSONDataParser::object(body);
  good(Parser::parse(good(json), arguments...));
}

void readModel(DocumentKind kind, const Data& body) {
  switch (kind) {
    case DocumentKind::video:
      return readObject<VideoParser>(body);
    case DocumentKind::page:
      return readObject<PageParser>(body);
    case DocumentKind::collection:
      return readObject<ItemCollectionParser>(body);
    case DocumentKind::guide:
      return readObject<LinearProgramGuideParser>(body, Date(), Date());
    case DocumentKind::configuration:
      return readObject<ConfigurationParser>(body, Environment::production);
    case DocumentKind::lineup: {
      const auto json = JSONDataParser::array(body);
      keep(LineupParser::parse(good(json)));
    }
  }
}

/// The limit: the reading library alone.
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
