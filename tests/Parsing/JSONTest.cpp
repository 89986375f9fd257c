#include <OrvoAPI/HTTP/URLError.h>
#include <OrvoAPI/Parsing/JSONReaderError.h>
#include <gmock/gmock.h>
#include <tests/support/Document.h>
#include <tests/support/Test.h>

namespace orvo {
namespace {

using Code = JSONReaderError::Code;

Result<JSONValue> read(std::string_view body) { return JSONDataParser::value(Data(body)); }

std::optional<Code> refusal(std::string_view body) {
  const auto result = read(body);
  if (!result.failed()) return std::nullopt;
  return result.error()->as<JSONReaderError>()->code;
}

std::string nested(std::size_t levels, std::string_view innermost) {
  return std::string(levels, '[').append(innermost) + std::string(levels, ']');
}

TEST(JSONReader, NamesWhatItRefuses) {
  using namespace std::string_view_literals;
  for (const auto body : {""sv, " \n\t"sv, "\xEF\xBB\xBF"sv}) EXPECT_EQ(refusal(body), Code::empty);
  for (const auto body : {"{"sv, "[1,]"sv, "[1 2]"sv, "1 2"sv, "{\"a\" 1}"sv, "{1:2}"sv, "tru"sv,
                          "[1]]"sv, "// x\n1"sv, "NaN"sv, "\0"sv, "\xEF\xBB\xBF\xEF\xBB\xBF{}"sv}) {
    EXPECT_EQ(refusal(body), Code::malformed) << body;
  }
  for (const auto body :
       {"\"\xff\""sv, "\"\xc0\x80\""sv, "\"\xed\xa0\x80\""sv, "\xff\xfe{\0}\0"sv}) {
    EXPECT_EQ(refusal(body), Code::invalidEncoding) << body;
  }
  for (const auto body : {R"("\ud800")"sv, R"("\udc00")"sv, R"(["\ud800\u0041"])"sv,
                          R"({"\udfff":1})"sv, R"("\x")"sv, "\"a\nb\""sv, "\"a"sv, "\"\0\""sv}) {
    EXPECT_EQ(refusal(body), Code::invalidString) << body;
  }
  for (const auto body : {"01"sv, "1."sv, "-"sv, "[1e400]"sv, "-1e400"sv, "0x10"sv}) {
    EXPECT_EQ(refusal(body), Code::invalidNumber) << body;
  }
}

TEST(JSONReader, ReadsFragmentsAndSkipsAByteOrderMark) {
  EXPECT_EQ(read(" 7 ").force().integer(), 7);
  EXPECT_EQ(read("\xEF\xBB\xBF[true]").force().text(), "[true]");
  EXPECT_EQ(read(R"("\ud83d\ude00\u0000")").force().string(),
            std::string_view("\xF0\x9F\x98\x80\0", 5));
}

TEST(JSONReader, CountsTheInnermostValueAsALevel) {
  EXPECT_EQ(refusal(nested(1023, "1")), std::nullopt);
  EXPECT_EQ(refusal(nested(1024, "1")), Code::tooDeep);
  EXPECT_EQ(refusal(nested(1025, "")), Code::tooDeep);
  EXPECT_EQ(refusal(nested(1024, "")), std::nullopt);
}

TEST(JSONReader, ReadsIntegersBeyond64BitsAsDoubles) {
  const auto value = read(R"({"text": "18446744073709551616 \" -99999999999999999999",
      "list": [18446744073709551616, -9223372036854775809,1,-5e-1,18446744073709551615],
      "kept": 9223372036854775807})");
  const auto object = *value.force().object();
  EXPECT_EQ(object.string("text"), "18446744073709551616 \" -99999999999999999999");
  EXPECT_EQ(object.array("list")->asValue().text(),
            "[1.8446744073709552e+19,-9.223372036854776e+18,1,-0.5,18446744073709551615]");
  EXPECT_EQ(object.integer("kept"), 9223372036854775807);
  EXPECT_EQ(read("18446744073709551616").force().number(), 0x1p64) << "the whole body";
}

TEST(JSONReader, StillRefusesWhatIsWrongBesideAWideInteger) {
  const std::string wide = "18446744073709551616";
  for (const auto& body :
       {"[" + wide + ",01]", "[0" + wide + "]", "[-0" + wide + "]", "[" + wide + ".]",
        "[" + wide + "x]", "[" + std::string(400, '9') + "]"}) {
    EXPECT_EQ(refusal(body), Code::invalidNumber) << body;
  }
  EXPECT_EQ(refusal("[" + wide + " 1]"), Code::malformed);
  EXPECT_EQ(refusal("[01, \"" + wide + "\\"), Code::invalidString) << "ends within an escape";
}

TEST(JSONReader, EndsANumberAtTheEndOfTheBody) {
  // After the body there may be anything, also more digits.
  const std::string buffer = "123" + std::string(Data::kPadding, '4');
  const Data data(std::shared_ptr<const char>(std::shared_ptr<void>(), buffer.data()), 3);
  EXPECT_EQ(JSONDataParser::value(data).force().integer(), 123);
}

TEST(JSONReader, LetsADocumentOutliveItsBodyAndEndOnAnotherThread) {
  std::optional<JSONValue> value;
  std::thread([&] {
    value = read("[\"" + std::string(400'000, 'x') + "\"]").force();
    EXPECT_FALSE(read("[1]").failed()) << "reading on does not touch what was read";
  }).join();
  EXPECT_EQ((*value->strings()->begin()).size(), 400'000U);
  std::thread([last = std::move(*value)] {
    EXPECT_EQ(last.kind(), JSONValue::Kind::array);
  }).join();
}

TEST(JSONReader, ReadsOnManyThreadsAtOnce) {
  std::vector<std::thread> threads;
  for (int number = 0; number < 6; ++number) {
    threads.emplace_back([number] {
      const auto text = "[" + std::to_string(number) + ",\"" + std::string(50, 'x') + "\"]";
      for (int i = 0; i < 300; ++i) ASSERT_EQ(read(text).force().text(), text);
    });
  }
  for (auto& thread : threads) thread.join();
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

TEST(JSONReader, RefusesABodyIntoWhichTooMuchIsPacked) {
  constexpr std::size_t kMost = 4'194'304;
  // Within a text, where they cost nothing, they count as well.
  const auto read = [](std::size_t marks) {
    std::string text = "\"";
    while (text.size() <= marks) text += ",:[{"[text.size() % 4];
    return JSONDataParser::value(Data(text + '"'));
  };
  EXPECT_FALSE(read(kMost).failed());
  const auto refused = read(kMost + 1);
  ASSERT_TRUE(refused.failed());
  EXPECT_EQ(refused.error()->as<URLError>()->code, URLError::dataLengthExceedsMaximum);
}

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
