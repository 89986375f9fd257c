#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/Integration/Qt.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <future>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>

namespace orvo {
namespace {

const auto kMainQueue = MainQueue::shared();

/// What a call that is wrong says.
template <class F>
std::string refusal(F call) {
  try {
    call();
  } catch (const std::logic_error& error) {
    return error.what();
  }
  return "not refused";
}
bool says(const std::string& refusal, const std::string& part) {
  return refusal.find(part) != std::string::npos;
}

class Qt : public testing::Test {
 protected:
  /// Runs the loop until all that waits in the main queue has been run.
  static void runLoop() {
    kMainQueue->post([] { QCoreApplication::exit(); });
    QCoreApplication::exec();
  }

 private:
  char name_[5] = "test";
  char* arguments_[2] = {name_, nullptr};
  int count_ = 1;
  QCoreApplication app_{count_, arguments_};
};

using QtMainQueueTest = Qt;
using QtMainQueueDeathTest = Qt;
using QtOnMain = Qt;

TEST_F(QtMainQueueTest, RunsCallbacksInTheLoopAndInALoopWithinOne) {
  const QtMainQueue mainQueue;
  QEventLoop inner;
  std::string order;
  kMainQueue->post([&] {
    order += "a";
    inner.exec();
    order += "c";
  });
  kMainQueue->post([&] {
    order += "b";
    inner.exit();
  });
  EXPECT_TRUE(order.empty());
  runLoop();
  EXPECT_EQ(order, "abc");
}

TEST_F(QtMainQueueTest, RefusesASecondClaimAndGivesTheFirstBack) {
  std::optional<QtMainQueue> first(std::in_place);
  EXPECT_PRED2(says, refusal([] { const QtMainQueue second; }), "claim it once");
  first.reset();
  const QtMainQueue again;
  runLoop();
}

TEST(QtMainQueueWithoutLoop, IsRefusedAndLeavesTheQueueUnclaimed) {
  EXPECT_PRED2(says, refusal([] { const QtMainQueue early; }), "after the QCoreApplication");
  EXPECT_TRUE(kMainQueue->claim());
}

TEST_F(QtMainQueueTest, MayEndInACallbackOfItsOwn) {
  auto mainQueue = std::make_unique<QtMainQueue>();
  kMainQueue->post([&] {
    mainQueue.reset();
    QCoreApplication::exit();
  });
  QCoreApplication::exec();
  EXPECT_TRUE(kMainQueue->claim());
}

TEST_F(QtMainQueueDeathTest, EndsTheProcessWhenItIsDestroyedOnAnotherThread) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  auto mainQueue = std::make_unique<QtMainQueue>();
  EXPECT_DEATH(std::thread([&] { mainQueue.reset(); }).join(), "on the thread that made it");
}

TEST_F(QtOnMain, CallsATaskOnlyWhileItsObjectLives) {
  const QtMainQueue mainQueue;
  const Promise<int> promise;
  auto early = std::make_unique<QObject>(), late = std::make_unique<QObject>();
  QObject living;
  std::string called;
  onMain(early.get(), promise.future(), [&](const auto&) { called += "early"; });
  onMain(late.get(), promise.future(), [&](const auto&) { called += "late"; });
  onMain(&living, promise.future(), [&, once = std::make_unique<int>()](const Result<int>& result) {
    called += std::to_string(*result.value());
  });
  early.reset();
  promise.success(7);
  late.reset();  // its callback is posted by now
  EXPECT_TRUE(called.empty());
  runLoop();
  EXPECT_EQ(called, "7");
}

TEST_F(QtOnMain, CallsNothingFromTheThreadThatRunsTheQueueAfterTheClaim) {
  std::optional<QtMainQueue> mainQueue(std::in_place);
  QObject living;
  bool called = false;
  onMain(&living, Future<int>::completed(1), [&](const auto&) { called = true; });
  std::promise<void> allWereRun;
  kMainQueue->post([&] { allWereRun.set_value(); });
  mainQueue.reset();
  allWereRun.get_future().wait();
  EXPECT_FALSE(called);
}

TEST_F(QtOnMain, CallsNothingOnALaterThreadThatHasTheIdOfTheFirst) {
  const Promise<int> promise;
  std::unique_ptr<QObject> handedOver;
  bool called = false;
  std::thread([&] {
    const QEventLoop loop;
    const QtMainQueue mainQueue;
    handedOver = std::make_unique<QObject>();
    onMain(handedOver.get(), promise.future(), [&](const auto&) { called = true; });
    handedOver->moveToThread(QCoreApplication::instance()->thread());
  }).join();
  std::thread([&] {
    QEventLoop loop;
    const QtMainQueue mainQueue;
    promise.success(1);
    kMainQueue->post([&] { loop.quit(); });
    loop.exec();
  }).join();
  EXPECT_FALSE(called);
}

TEST(QtOnMainWithoutLoop, IsCrankedByWhoHoldsTheClaim) {
  auto claim = kMainQueue->claim();
  QObject living;
  int called = 0;
  onMain(&living, Future<int>::succeeded(1), [&](const auto&) { ++called; });
  while (claim->drain() > 0) {
  }
  EXPECT_EQ(called, 1);
}

TEST_F(QtOnMain, IsRefusedWhereACallbackCouldMeetADyingObject) {
  QObject here;
  const auto call = [](QObject* object) {
    return refusal([&] { onMain(object, Future<int>(), [](const auto&) {}); });
  };
  constexpr const char* kRemedy = "an orvo::QtMainQueue is held: make that first";
  EXPECT_PRED2(says, call(&here), kRemedy) << "nobody holds the queue";
  const QtMainQueue mainQueue;
  EXPECT_EQ(call(&here), "not refused");
  EXPECT_PRED2(says, call(nullptr), kRemedy);
  std::string elsewhere;
  std::thread([&] { elsewhere = call(&here); }).join();
  EXPECT_PRED2(says, elsewhere, kRemedy);
}

}  // namespace
}  // namespace orvo
