#include <OrvoAPI/Parsing/JSONReaderError.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/Document.h"

namespace orvo {
namespace {

using testing::ElementsAre;

template <class T>
bool isUnexpected(const Result<T>& result) {
  const auto* error = result.failed() ? result.error()->template as<JSONParseError>() : nullptr;
  return error && error->template is<JSONParseError::unexpectedType>();
}

TEST(JSONDataParser, ReadsTheRequestedShape) {
  EXPECT_EQ(JSONDataParser::object(Data(R"({"a":1})")).force().size(), 1U);
  EXPECT_EQ(JSONDataParser::array(Data("[{},{}]")).force().size(), 2U);
  EXPECT_THAT(JSONDataParser::stringArray(Data(R"(["a","b"])")).force(), ElementsAre("a", "b"));
  EXPECT_TRUE(JSONDataParser::stringArray(Data("[]")).force().empty());
  EXPECT_TRUE(JSONDataParser::array(Data("[]")).force().empty());
}

TEST(JSONDataParser, RefusesAnyOtherShapeAsAWhole) {
  for (const char* body : {"[1,2]", "\"text\"", "7", "null"}) {
    EXPECT_TRUE(isUnexpected(JSONDataParser::object(Data(body)))) << body;
  }
  for (const char* body : {"\"text\"", "{}", "[{},1]", "[[]]"}) {
    EXPECT_TRUE(isUnexpected(JSONDataParser::array(Data(body)))) << body;
  }
  for (const char* body : {R"(["a", 1])", "[null]", "{}", "true"}) {
    EXPECT_TRUE(isUnexpected(JSONDataParser::stringArray(Data(body)))) << body;
  }
}

TEST(JSONDataParser, PassesOnTheReadersOwnError) {
  const auto objects = JSONDataParser::array(Data());
  EXPECT_TRUE(objects.error()->is<JSONReaderError>());
  const auto strings = JSONDataParser::stringArray(Data("["));
  EXPECT_TRUE(strings.error()->is<JSONReaderError>());
}

TEST(JSONParseError, NamesTypeAndKeyButNoValue) {
  EXPECT_EQ(unableToParse("Video", "title").error.description(),
            R"(unableToParse: Video, "title")");
  const auto dictionary = object(R"({"token":"secret"})").asValue();
  const AnyError error(JSONParseError::unableToParse{"Session", dictionary});
  EXPECT_EQ(error.description(), "unableToParse: Session");
  const auto& payload = error.as<JSONParseError>()->as<JSONParseError::unableToParse>()->value;
  EXPECT_EQ(std::get<JSONValue>(payload).text(), R"({"token":"secret"})");
}

TEST(JSONParseError, IsEqualByTypeAndPayload) {
  const auto failure = [](std::string type, std::variant<std::string, JSONValue> value) {
    return JSONParseError(JSONParseError::unableToParse{std::move(type), std::move(value)});
  };
  EXPECT_EQ(failure("Video", "id"), failure("Video", "id"));
  EXPECT_NE(failure("Video", "id"), failure("Page", "id"));
  EXPECT_NE(failure("Video", "id"), failure("Video", "title"));
  EXPECT_EQ(failure("Video", object(R"({"a": 1})").asValue()),
            failure("Video", object(R"({"a":1})").asValue()));
  EXPECT_NE(failure("Video", object(R"({"a": 1})").asValue()), failure("Video", JSONValue()));
  EXPECT_NE(failure("Video", "null"), failure("Video", JSONValue()));
}

}  // namespace
}  // namespace orvo
