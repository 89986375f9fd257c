#pragma once

#include <OrvoAPI/Base/CompilerCheck.h>

#if !__has_include(<QSocketNotifier>)
#error "<OrvoAPI/Integration/Qt.h> needs Qt 6: find_package(Qt6 COMPONENTS Core), link Qt6::Core"
#endif

// Before any standard header: moc of Qt 6.4 stops at one with concepts that comes before Qt's own.
#include <QObject>

#include <OrvoAPI/Futures/Future.h>
#include <OrvoAPI/Integration/detail/LoopClaim.h>

#include <QAbstractEventDispatcher>
#include <QPointer>
#include <QSocketNotifier>
#include <QThread>
#include <stdexcept>
#include <utility>

/// The main queue in a Qt loop, and callbacks that end with a `QObject`. Qt 6, of which Qt Core is
/// enough. Not part of the umbrella header; the app itself finds and links Qt.

namespace orvo {

/// Claims the main queue and runs it in the event loop of the thread that constructs this object.
/// Callbacks on the main queue then run there, between the thread's own events, also while one of
/// them runs a nested loop, as a modal dialog does. Construct one after the application, and keep
/// it until the loop has ended:
///
///     QGuiApplication app(count, arguments);
///     const orvo::QtMainQueue mainQueue;
///
/// It belongs to its thread: destroying it on another terminates the process. Afterwards a thread
/// of the library runs the queue again, and the callbacks that wait: give them an owner that is
/// destroyed before this, `onComplete(queue, weak, …)`. Those of `onMain` run no more. No callback
/// may throw: the loop could not pass that on.
class QtMainQueue {
 public:
  /// Throws `std::logic_error`, which says what to do, when the queue is claimed already or there
  /// is no application yet.
  QtMainQueue() : notifier_(descriptorForLoop(claim_), QSocketNotifier::Read) {
    QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_,
                     [this] { claim_.drain(); });
  }
  QtMainQueue(const QtMainQueue&) = delete;
  QtMainQueue& operator=(const QtMainQueue&) = delete;
  ~QtMainQueue() {
    if (!claim_.isOnItsThread()) {
      qFatal("an orvo::QtMainQueue has to be destroyed on the thread that made it");
    }
  }

 private:
  [[nodiscard]] static int descriptorForLoop(const detail::LoopClaim& claim) {
    if (QAbstractEventDispatcher::instance() == nullptr) {
      throw std::logic_error(
          "an orvo::QtMainQueue needs an event loop: make it after the QCoreApplication, or in a "
          "QThread");
    }
    return claim.descriptor();
  }

  detail::LoopClaim claim_;
  QSocketNotifier notifier_;  // gone before the descriptor is
};

/// Calls `task(const Result<T>&)` on the main queue once the result is available, but only while
/// `context` is alive: once that has been destroyed, `task` is no longer called, even if its call
/// is already waiting in the queue.
///
///     orvo::onMain(this, context->fetchVideo(id), [this](const auto& video) { … });
///
/// Call it on the thread that holds the `QtMainQueue` and that `context` lives on; it throws
/// `std::logic_error`, which says what to do, on another one. That `context` is moved to another
/// thread afterwards is not noticed: `task` is called on this thread all the same, or not at all.
/// It cancels nothing: for that the object may have a `FetchScope`.
template <class T, class F>
Future<T> onMain(QObject* context, const Future<T>& future, F&& task) {
  if (context == nullptr || context->thread() != QThread::currentThread() ||
      !MainQueue::shared()->isCurrent()) {
    throw std::logic_error(
        "orvo::onMain is for an object that lives on this thread, on which an orvo::QtMainQueue is "
        "held: make that first, and call onMain from there");
  }
  return future.onComplete(
      MainQueue::shared(),
      [thread = detail::numberOfThisThread(), guard = QPointer<QObject>(context),
       task = std::forward<F>(task)](const Result<T>& result) mutable {
        // After the claim the queue runs on another thread, from which the object must not even be
        // looked at.
        if (detail::numberOfThisThread() == thread && guard) task(result);
      });
}

}  // namespace orvo
