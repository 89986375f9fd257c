#include <OrvoAPI/Futures/Coroutine.h>
#include <OrvoAPI/Integration/Qt.h>
#include <gtest/gtest.h>
#include <QCoro/QCoroTask>
#include <QCoro/QCoroTimer>

#include <QCoreApplication>
#include <QTimer>
#include <chrono>
#include <string>
#include <thread>
#include <utility>

namespace orvo {
namespace {

const auto kMainQueue = MainQueue::shared();

class QCoroTask : public testing::Test {
 protected:
  /// Notes what the future gives, and whether that is on the loop's thread.
  QCoro::Task<int> note(Future<int> future) {
    const auto result = co_await resumeOn(kMainQueue, std::move(future));
    isElsewhere_ = isElsewhere_ || std::this_thread::get_id() != thread_;
    co_return result.failed() ? result.error()->as<URLError>()->code : *result.value();
  }

  bool isElsewhere_ = false;

 private:
  const std::thread::id thread_ = std::this_thread::get_id();
  char name_[5] = "test";
  char* arguments_[2] = {name_, nullptr};
  int count_ = 1;
  QCoreApplication app_{count_, arguments_};
  const QtMainQueue mainQueue_;
};

TEST_F(QCoroTask, AwaitsFuturesBesideWhatQCoroAwaits) {
  const auto added = [this](Future<int> left, Future<int> right) -> QCoro::Task<int> {
    QTimer timer;
    timer.start(std::chrono::milliseconds(1));
    co_await timer;
    const int first = co_await note(std::move(left));
    const auto second = co_await right;  // a variable, and on the future's own queue
    co_return first + *second.value();
  };
  const Promise<int> promise(kMainQueue);
  std::thread later([&] { promise.success(2); });
  int sum = 0;
  added(Future<int>::succeeded(1), promise.future()).then([&](int value) {
    sum = value;
    QCoreApplication::exit();
  });
  QCoreApplication::exec();
  later.join();
  EXPECT_EQ(sum, 3);
  EXPECT_FALSE(isElsewhere_);
}

TEST_F(QCoroTask, IsCancelledInItsLoopWhenThePromiseIsDroppedElsewhere) {
  auto promise = std::make_unique<Promise<int>>();
  int code = 0;
  note(promise->future()).then([&](int value) {
    code = value;
    QCoreApplication::exit();
  });
  std::thread([&] { promise.reset(); }).join();
  EXPECT_EQ(code, 0);
  QCoreApplication::exec();
  EXPECT_EQ(code, URLError::cancelled);
  EXPECT_FALSE(isElsewhere_);
}

}  // namespace
}  // namespace orvo
