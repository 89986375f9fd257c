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

TEST(Result, PassesAFailureThroughAndHoldsWhatATransformThrowsUnwrapped) {
  const auto fails = [](int) -> Result<int> { return Failure{Broken{1}}; };
  const auto throws = [](int) -> int { throw AnyError(Broken{2}); };
  EXPECT_EQ(codeOf(bad().map(throws)), 7);
  EXPECT_EQ(codeOf(bad().flatMap(fails)), 7);
  EXPECT_EQ(codeOf(good().map(throws)), 2);
  EXPECT_EQ(codeOf(good().flatMap(fails)), 1);
  EXPECT_EQ(codeOf(Result<int>::calling([&] { return throws(0); })), 2);
  EXPECT_EQ(good().map([](int value) { return std::to_string(value); }).force(), "2");
}

TEST(Result, CallsProcessOnSuccessAndRescueOnFailureAndTheOtherRescueNever) {
  int calls = 0;
  const auto count = [&](int) { ++calls; };
  const auto fallback = [&] { return ++calls + 40; };
  EXPECT_EQ(good().process(count).rescue(fallback), 2);
  EXPECT_EQ(good().d_rescue(fallback), 2);
  EXPECT_EQ(calls, 1);
  EXPECT_THROW((void)bad().process(count).d_rescue(fallback), AnyError);
  EXPECT_THROW((void)bad().force(), AnyError);
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(bad().rescue(fallback), 42);
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
  EXPECT_STREQ(copy.as<std::exception>()->what(), "too far");
  EXPECT_EQ(copy.as<std::domain_error>(), nullptr);
}

}  // namespace
}  // namespace orvo
