#include <OrvoAPI/Futures/GeneralError.h>
#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Testing/ManualQueue.h>
#include <gmock/gmock.h>
#include <tests/support/Outcome.h>
#include <tests/support/Test.h>

namespace orvo {
namespace {

using testing::ElementsAre;
using testing::Pair;

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

TEST(Result, ThrowsWhatIsBothTheErrorAndAStandardException) {
  try {
    (void)bad().force();
    FAIL();
  } catch (const std::exception& error) {
    EXPECT_STREQ(error.what(), "broken 7");
  }
  const auto again = Result<int>::calling([] { return bad().d_rescue([] { return 1; }); });
  EXPECT_EQ(codeOf(again), 7);
  try {
    (void)again.force();
  } catch (const ErrorException& error) {
    const AnyError copy(error);
    EXPECT_EQ(copy.as<Broken>()->code, 7) << "the error, not the exception";
  }
}

TEST(AnyError, KeepsWhatItIsWhenItSaysWhatWasAskedFor) {
  const AnyError plain = Broken{7};
  EXPECT_EQ(plain.context(), nullptr);
  const auto error = plain.withContext({"fetchPage", "home"}).withContext({"openScreen"});
  EXPECT_EQ(error.context()->operation, "openScreen");
  EXPECT_EQ(error.as<Broken>(), plain.as<Broken>());
  EXPECT_EQ(error.description(), "broken 7 (openScreen)");
  const auto caught = Result<int>::calling([]() -> int { throw std::out_of_range("too far"); });
  const auto explained = caught.error()->withContext({"fetchVideo", "v", "a note"});
  EXPECT_TRUE(explained.is<std::exception>());
  EXPECT_EQ(explained.description(), "too far (fetchVideo v: a note)");
}

TEST(AnyError, HoldsTheEnumerationOfACase) {
  const AnyError error(GeneralError::underlying{Broken{7}});
  const auto* const general = error.as<GeneralError>();
  ASSERT_NE(general, nullptr);
  EXPECT_EQ(general->as<GeneralError::underlying>()->error.as<Broken>()->code, 7);
  EXPECT_EQ(error.as<Broken>(), nullptr) << "what is wrapped is inside";
  EXPECT_EQ(error.description(), "underlying: broken 7");
  EXPECT_EQ(AnyError(GeneralError::elementNotFound{}).description(), "elementNotFound");
}

TEST(AnyError, FindsACaughtExceptionByItsBaseClasses) {
  const auto result = Result<int>::calling([]() -> int { throw std::out_of_range("too far"); });
  const auto copy = *result.error();
  EXPECT_STREQ(copy.as<std::exception>()->what(), "too far");
  EXPECT_EQ(copy.as<std::domain_error>(), nullptr);
  EXPECT_EQ(copy.description(), "too far");
}

int codeOf(const AnyError* error) { return error->as<Broken>()->code; }
const AnyError* wrapped(const AnyError* error) {
  const auto* const general = error->as<GeneralError>();
  const auto* const found = general ? general->as<GeneralError::underlying>() : nullptr;
  return found ? &found->error : nullptr;
}

class Composition : public testing::Test {
 protected:
  const std::shared_ptr<ManualQueue> queue_ = std::make_shared<ManualQueue>();
  const Promise<int> first_{queue_};
  const Promise<int> second_{queue_};
  const Promise<int> third_{queue_};

  [[nodiscard]] Future<std::vector<int>> concatAll() const {
    return Future<int>::concat({first_.future(), second_.future(), third_.future()});
  }
};

TEST_F(Composition, MapTransformsOnTheGivenQueueWhichBecomesTheNewFutures) {
  const auto other = std::make_shared<ManualQueue>();
  const auto mapped = first_.future().map(other, [](int value) { return std::to_string(value); });
  EXPECT_EQ(mapped.callbackQueue(), other);
  first_.success(7);
  EXPECT_EQ(queue_->run(), 0U);
  EXPECT_FALSE(mapped.didComplete());
  other->run();
  EXPECT_EQ(*mapped.value(), "7");
}

TEST_F(Composition, MapWrapsWhatItsTransformRaisesAndNothingElse) {
  const auto source = first_.future();
  const auto thrown = source.map([](int) -> int { throw AnyError(Broken{1}); });
  const auto returned = source.map([](int) -> Result<int> { return Failure{Broken{2}}; });
  const auto foreign = source.map([](int) -> int { throw std::out_of_range("far"); });
  const auto passedOn = thrown.map([](int value) { return value; });
  first_.success(0);
  queue_->run();
  EXPECT_EQ(codeOf(wrapped(thrown.error())), 1);
  EXPECT_EQ(codeOf(wrapped(returned.error())), 2);
  EXPECT_NE(wrapped(foreign.error())->as<std::exception>(), nullptr);
  EXPECT_EQ(codeOf(wrapped(passedOn.error())), 1) << "wrapped once";
}

TEST_F(Composition, FlatMapGoesOnWithTheInnerFutureOnThatOnesQueue) {
  const auto innerQueue = std::make_shared<ManualQueue>();
  const Promise<int> inner(innerQueue);
  const auto flat = first_.future().flatMap([&](int) { return inner.future(); });
  const auto thrown =
      first_.future().flatMap([](int) -> Future<int> { throw AnyError(Broken{4}); });
  first_.success(1);
  inner.failure(Broken{3});
  queue_->run();
  EXPECT_FALSE(flat.didComplete());
  EXPECT_EQ(codeOf(thrown.error()), 4);
  innerQueue->run();
  EXPECT_EQ(codeOf(flat.error()), 3);
}

TEST_F(Composition, ValidateFailsUnwrappedAlsoWithWhatThePredicateThrows) {
  const auto even = [](int value) { return value % 2 == 0; };
  const auto rejected = first_.future().validate(even);
  const auto accepted = second_.future().validate(even);
  const auto thrown = first_.future().validate([](int) -> bool { throw Broken{5}; });
  first_.success(1);
  second_.success(2);
  queue_->run();
  EXPECT_TRUE(rejected.error()->as<GeneralError>()->is<GeneralError::elementNotFound>());
  EXPECT_EQ(codeOf(thrown.error()), 5);
  EXPECT_EQ(*accepted.value(), 2);
}

TEST_F(Composition, ZipPairsAndReportsTheLeftFailureEvenWhenTheRightCameFirst) {
  const Promise<std::vector<int>> list(queue_);
  const auto zipped = first_.future().zip(list.future());
  const auto longer = Future<int>::combine(list.future(), first_.future());
  const auto failed = second_.future().zip(third_.future());
  list.success({1, 2});
  first_.success(3);
  third_.failure(Broken{3});
  queue_->run();
  EXPECT_THAT(*zipped.value(), Pair(3, ElementsAre(1, 2)));
  EXPECT_THAT(*longer.value(), ElementsAre(1, 2, 3));
  EXPECT_FALSE(failed.didComplete()) << "the left one may still fail";
  second_.failure(Broken{2});
  queue_->run();
  EXPECT_EQ(codeOf(failed.error()), 2);
}

TEST_F(Composition, ConcatKeepsTheOrderOfItsInputsAndReportsTheFirstFailureInThatOrder) {
  const auto all = concatAll();
  const auto cancelled = concatAll();
  const Promise<int> pending(queue_);
  const auto failed = Future<int>::concat(
      {first_.future(), Future<int>::completed(Failure{Broken{2}}), pending.future()});
  third_.success(3);
  second_.success(2);
  queue_->run();
  EXPECT_FALSE(all.didComplete());
  cancelled.cancel();
  first_.complete(1);
  queue_->run();
  EXPECT_THAT(*all.value(), ElementsAre(1, 2, 3));
  EXPECT_FALSE(cancelled.didComplete());
  EXPECT_EQ(errorOf(failed).as<Broken>()->code, 2) << "without waiting for the rest";
}

TEST_F(Composition, ConcatServesEachInputOnItsOwnQueue) {
  const auto other = std::make_shared<ManualQueue>();
  const Promise<int> foreign(other);
  const auto all = Future<int>::concat({first_.future(), foreign.future(), second_.future()});
  EXPECT_EQ(all.callbackQueue(), queue_);
  first_.success(1);
  foreign.success(2);
  second_.success(3);
  EXPECT_EQ(queue_->run(), 1U);
  EXPECT_EQ(other->run(), 1U);
  EXPECT_FALSE(all.didComplete());
  EXPECT_EQ(queue_->run(), 1U);
  EXPECT_THAT(*all.value(), ElementsAre(1, 2, 3));
}

TEST_F(Composition, SuccessResultNeverFails) {
  const auto failed = first_.future().successResult();
  const auto succeeded = second_.future().successResult();
  first_.failure(Broken{});
  second_.success(1);
  EXPECT_EQ(queue_->run(), 4U) << "two hops each";
  EXPECT_FALSE(*failed.value());
  EXPECT_TRUE(*succeeded.value());
}

}  // namespace
}  // namespace orvo
