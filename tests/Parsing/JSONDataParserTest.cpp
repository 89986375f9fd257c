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

TEST(JSONDataParser, ReadsOneShapeAndRefusesAnyOtherAsAWhole) {
  EXPECT_EQ(JSONDataParser::object(Data(R"({"a":1})")).force().size(), 1U);
  EXPECT_EQ(JSONDataParser::array(Data("[{},{}]")).force().size(), 2U);
  EXPECT_THAT(JSONDataParser::stringArray(Data(R"(["a","b"])")).force(), ElementsAre("a", "b"));
  for (const char* body : {"[1,2]", "\"text\"", "null"}) {
    EXPECT_TRUE(isUnexpected(JSONDataParser::object(Data(body)))) << body;
  }
  for (const char* body : {"\"text\"", "{}", "[{},1]", "[[]]"}) {
    EXPECT_TRUE(isUnexpected(JSONDataParser::array(Data(body)))) << body;
  }
  for (const char* body : {R"(["a", 1])", "[null]", "{}"}) {
    EXPECT_TRUE(isUnexpected(JSONDataParser::stringArray(Data(body)))) << body;
  }
  const auto broken = JSONDataParser::stringArray(Data("["));
  EXPECT_TRUE(broken.error()->is<JSONReaderError>());
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

}  // namespace
}  // namespace orvo
