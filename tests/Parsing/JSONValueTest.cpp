#include <gmock/gmock.h>
#include <tests/support/Document.h>
#include <tests/support/Test.h>

namespace orvo {
namespace {

using testing::ElementsAre;

/// "key=value" for each member, in the order of the walk.
std::vector<std::string> members(const JSONObject& object) {
  std::vector<std::string> found;
  for (const auto& [key, value] : object) found.push_back(std::string(key) + "=" + value.text());
  return found;
}

TEST(JSONValue, ConvertsBetweenNoKinds) {
  const auto document = object(R"({"b": true, "n": 1, "s": "1", "a": [], "o": {}, "z": null})");
  for (const auto& [key, value] : document) {
    EXPECT_EQ(value.boolean().has_value(), key == "b") << key;
    EXPECT_EQ(value.number().has_value(), key == "n") << key;
    EXPECT_EQ(value.integer().has_value(), key == "n") << key;
    EXPECT_EQ(value.string().has_value(), key == "s") << key;
    EXPECT_EQ(value.array().has_value(), key == "a") << key;
    EXPECT_EQ(value.object().has_value(), key == "o") << key;
    EXPECT_EQ(value.kind() == JSONValue::Kind::null, key == "z") << key;
  }
  EXPECT_EQ(JSONValue().text(), "null") << "until it is read";
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
