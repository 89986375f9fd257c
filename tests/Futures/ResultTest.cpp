#include <OrvoAPI/Futures/GeneralError.h>
#include <OrvoAPI/Futures/Result.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace orvo {
namespace {

struct Broken {
  int code = 0;
  [[nodiscard]] std::string description() const { return "broken " + std::to_string(code); }
};

Result<int> good() { return 2; }
Result<int> bad() { return Failure{Broken{7}}; }

int codeOf(const Result<int>& result) { return result.error()->as<Broken>()->code; }

TEST(Result, CallingHoldsWhatTheFunctionThrowsUnchanged) {
  const auto thrown = Result<int>::calling([]() -> int { throw AnyError(Broken{3}); });
  EXPECT_EQ(codeOf(thrown), 3);
  EXPECT_EQ(Result<int>::calling([] { return 3; }).force(), 3);
}

TEST(Result, MapAndFlatMapPassAFailureThroughAndWrapNothing) {
  const auto fails = [](int) -> Result<int> { return Failure{Broken{1}}; };
  const auto throws = [](int) -> int { throw AnyError(Broken{2}); };
  EXPECT_EQ(codeOf(bad().map(throws)), 7);
  EXPECT_EQ(codeOf(bad().flatMap(fails)), 7);
  EXPECT_EQ(codeOf(good().map(throws)), 2);
  EXPECT_EQ(codeOf(good().flatMap(fails)), 1);
  EXPECT_EQ(good().map([](int value) { return std::to_string(value); }).force(), "2");
}

TEST(Result, ProcessSeesTheValueOfASuccessOnly) {
  int seen = 0;
  const auto add = [&](int value) { seen += value; };
  const auto result = good();
  EXPECT_EQ(&result.process(add), &result);
  EXPECT_TRUE(bad().process(add).failed());
  EXPECT_EQ(seen, 2);
}

TEST(Result, RescueFallsBackAndTheOtherRescueNeverDoes) {
  int calls = 0;
  const auto fallback = [&] { return ++calls + 40; };
  EXPECT_EQ(good().rescue(fallback), 2);
  EXPECT_EQ(good().d_rescue(fallback), 2);
  EXPECT_THROW((void)bad().d_rescue(fallback), AnyError);
  EXPECT_THROW((void)bad().force(), AnyError);
  EXPECT_EQ(calls, 0);
  EXPECT_EQ(bad().rescue(fallback), 41);
}

TEST(AnyError, HoldsTheEnumerationOfACase) {
  const AnyError error(GeneralError::underlying{Broken{7}});
  const auto* const general = error.as<GeneralError>();
  ASSERT_NE(general, nullptr);
  EXPECT_EQ(general->as<GeneralError::underlying>()->error.as<Broken>()->code, 7);
  EXPECT_EQ(error.as<Broken>(), nullptr) << "what is wrapped is inside";
  EXPECT_EQ(error.description(), "underlying: broken 7");
}

TEST(AnyError, FindsACaughtExceptionByItsBaseClasses) {
  const auto result = Result<int>::calling([]() -> int { throw std::out_of_range("too far"); });
  const auto copy = *result.error();
  EXPECT_NE(copy.as<std::out_of_range>(), nullptr);
  EXPECT_STREQ(copy.as<std::exception>()->what(), "too far");
  EXPECT_EQ(copy.as<std::domain_error>(), nullptr);
  EXPECT_EQ(copy.description(), "too far");
}

TEST(AnyError, HoldsExceptionsOfAnyType) {
  const auto result = Result<int>::calling([]() -> int { throw 5; });
  ASSERT_NE(result.error()->as<int>(), nullptr);
  EXPECT_EQ(*result.error()->as<int>(), 5);
}

}  // namespace
}  // namespace orvo
