#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <OrvoAPI/Parsing/JSONMembersInternal.h>
#include <OrvoAPI/Parsing/JSONParseError.h>

#include <optional>
#include <utility>

namespace orvo {

namespace {

/// Reads the body and takes the shape that `shape` finds in it.
template <class Shape>
Result<Shape> read(const Data& data, std::optional<Shape> (JSONValue::*shape)() const) {
  const auto value = JSONDataParser::value(data);
  if (value.failed()) return Failure{*value.error()};
  if (detail::lossNotes != nullptr) detail::lossNotes->didRead(*value.value());
  if (auto found = (value.value()->*shape)()) return *std::move(found);
  return Failure{JSONParseError::unexpectedType{}};
}

}  // namespace

Result<JSONObject> JSONDataParser::object(const Data& data) {
  return read(data, &JSONValue::object);
}

Result<JSONObjects> JSONDataParser::array(const Data& data) {
  return read(data, &JSONValue::objects);
}

Result<std::vector<std::string>> JSONDataParser::stringArray(const Data& data) {
  const auto strings = read(data, &JSONValue::strings);
  if (strings.failed()) return Failure{*strings.error()};
  std::vector<std::string> copies;
  copies.reserve(strings.value()->size());
  for (const auto string : *strings.value()) copies.emplace_back(string);
  return copies;
}

}  // namespace orvo
