#pragma once

#include <OrvoAPI/Configuration/Configuration.h>
#include <OrvoAPI/Linear/LinearProgramGuide.h>
#include <OrvoAPI/Linear/Lineup.h>
#include <OrvoAPI/Model/ItemCollection.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <benchmarks/support/Documents.h>
#include <benchmarks/support/Measure.h>

#include <stdexcept>

/// Our side of what is measured with documents.
namespace orvo::benchmarks {

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

inline void readModel(DocumentKind kind, const Data& body) {
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

}  // namespace orvo::benchmarks
