#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/Document.h"

namespace orvo {
namespace {

using testing::ElementsAre;
using Kind = JSONValue::Kind;

/// "key=value" for each member, in the order of the walk.
std::vector<std::string> members(const JSONObject& object) {
  std::vector<std::string> found;
  for (const auto& [key, value] : object) found.push_back(std::string(key) + "=" + value.text());
  return found;
}

TEST(JSONValue, ConvertsBetweenNoKinds) {
  const auto document =
      object(R"({"b": true, "n": 1, "s": "1", "a": [], "o": {}, "z": null, "e": ""})");
  const auto answers = [&](std::string_view key) {
    const auto value = document.value(key).value();
    return std::vector<bool>{value.boolean().has_value(), value.number().has_value(),
                             value.string().has_value(), value.array().has_value(),
                             value.object().has_value()};
  };
  EXPECT_THAT(answers("b"), ElementsAre(true, false, false, false, false));
  EXPECT_THAT(answers("n"), ElementsAre(false, true, false, false, false));
  EXPECT_THAT(answers("s"), ElementsAre(false, false, true, false, false));
  EXPECT_THAT(answers("a"), ElementsAre(false, false, false, true, false));
  EXPECT_THAT(answers("o"), ElementsAre(false, false, false, false, true));
  EXPECT_THAT(answers("z"), ElementsAre(false, false, false, false, false));
  EXPECT_EQ(document.value("z")->kind(), Kind::null);
  EXPECT_EQ(document.value("missing").has_value(), false);
  EXPECT_FALSE(document.integer("b") || document.integer("s") || document.string("n"));
}

TEST(JSONValue, IsNullUntilItIsRead) {
  const JSONValue value;
  EXPECT_EQ(value.kind(), Kind::null);
  EXPECT_FALSE(value.string() || value.number() || value.object() || value.strings());
  EXPECT_EQ(value.text(), "null");
}

TEST(JSONValue, TakesWholeNumbersInRangeForIntegers) {
  const auto integer = [](const std::string& number) {
    return object("{\"n\":" + number + "}").integer("n");
  };
  EXPECT_EQ(integer("-3"), -3);
  EXPECT_EQ(integer("1.0"), 1);
  EXPECT_EQ(integer("1e1"), 10);
  EXPECT_EQ(integer("-0.0"), 0);
  EXPECT_EQ(integer("-9223372036854775808"), INT64_MIN);
  EXPECT_EQ(integer("-9223372036854775808.0"), INT64_MIN);
  EXPECT_EQ(integer("9223372036854775807"), INT64_MAX);
  for (const char* number : {"1.5", "9223372036854775808", "9223372036854775808.0", "1e19",
                             "-9223372036854777856.0", "1e-5", "18446744073709551616"}) {
    EXPECT_EQ(integer(number), std::nullopt) << number;
  }
}

TEST(JSONObject, TakesTheFirstOfRepeatedKeys) {
  const auto document = object(R"({"a":1,"b":{"x":1,"x":2},"\u0061":"2","b":3,"":4,"a":5,"c":6})");
  EXPECT_EQ(document.integer("a"), 1);
  EXPECT_FALSE(document.string("a")) << "also when a later one would be of the wanted kind";
  EXPECT_EQ(document.integer(""), 4);
  EXPECT_THAT(members(document), ElementsAre("a=1", R"(b={"x":1,"x":2})", "=4", "c=6"));
  EXPECT_THAT(members(*document.object("b")), ElementsAre("x=1"));
  EXPECT_EQ(document.size(), 4U);
  EXPECT_TRUE(members(object("{}")).empty() && object("{}").empty() && !document.empty());
}

TEST(JSONObject, WalksManyMembersInTheirOrder) {
  std::string text = "{";
  std::vector<std::string> expected;
  for (int round = 0; round < 3; ++round) {
    for (int i = 30'000; i-- > 0;) {
      const auto key = std::to_string(i % 15'000 * 7919);
      text += (text.size() > 1 ? ",\"" : "\"") + key + "\":" + std::to_string(expected.size());
      if (expected.size() < 15'000) expected.push_back(key + "=" + std::to_string(expected.size()));
    }
  }
  EXPECT_EQ(members(object(text + "}")), expected);
}

TEST(JSONArray, IsOfAKindOnlyWhenEveryElementIs) {
  const auto document = object(R"({"objects":[{"i":1},{"i":2}], "strings":["a","b"],
      "mixed":["a",{}], "nulls":["a",null], "empty":[]})");
  std::vector<std::int64_t> integers;
  const auto objects = document.objects("objects").value();
  for (const auto& each : objects) integers.push_back(each.integer("i").value());
  EXPECT_THAT(integers, ElementsAre(1, 2));
  const auto strings = document.strings("strings").value();
  std::string joined;
  for (const auto each : strings) joined += each;
  EXPECT_EQ(joined, "ab");
  for (const char* key : {"mixed", "nulls"}) {
    EXPECT_FALSE(document.strings(key) || document.objects(key)) << key;
    EXPECT_EQ(document.array(key)->size(), 2U);
  }
  EXPECT_TRUE(document.objects("empty")->empty() && document.strings("empty")->empty());
  EXPECT_FALSE(document.objects("strings") || document.strings("objects"));
}

TEST(JSONArray, YieldsElementsThatOutliveTheWalk) {
  std::optional<JSONObject> kept;
  std::string_view text;
  {
    const auto objects = JSONDataParser::array(Data(R"([{"s":"first"},{"s":"second"}])")).force();
    for (const JSONObject& each : objects) {
      text = each.string("s").value();
      kept = each;
    }
  }
  EXPECT_EQ(text, "second") << "texts live as long as any handle";
  EXPECT_EQ(kept->asValue().text(), R"({"s":"second"})");
}

}  // namespace
}  // namespace orvo
