#pragma once

#include <OrvoAPI/Base/CompilerCheck.h>

#if !__has_include(<glib-unix.h>)
#error "<OrvoAPI/Integration/GLib.h> needs GLib: compile and link with `pkg-config glib-2.0`"
#endif

#include <OrvoAPI/Integration/detail/LoopClaim.h>

#include <glib-unix.h>
#include <glib.h>

/// The main queue in a GLib loop, and so in GTK's. Not part of the umbrella header; the app itself
/// finds and links GLib.

namespace orvo {

/// Claims the main queue and runs it in the event loop of the thread that constructs this object:
/// the loop of the thread's default `GMainContext`, which is the program's unless another was
/// pushed. Callbacks on the main queue then run there, between the loop's other sources, also while
/// one of them runs a nested loop, as a modal dialog does. Construct one before the loop runs, and
/// keep it until the loop has ended:
///
///     const orvo::GLibMainQueue mainQueue;
///     future.onComplete(orvo::MainQueue::shared(), [](const auto& result) { … });
///     g_main_loop_run(loop);
///
/// It belongs to its thread: destroying it on another terminates the process. Afterwards a thread
/// of the library runs the queue again, and the callbacks that wait: give them an owner that is
/// destroyed before this, `onComplete(queue, weak, …)`. No callback may throw: the loop could not
/// pass that on.
class GLibMainQueue {
 public:
  /// Throws `std::logic_error`, which says what to do, when the queue is claimed already.
  GLibMainQueue() : source_(g_unix_fd_source_new(claim_.descriptor(), G_IO_IN)) {
    const GUnixFDSourceFunc drain = [](gint, GIOCondition, gpointer claim) -> gboolean {
      static_cast<detail::LoopClaim*>(claim)->drain();
      return G_SOURCE_CONTINUE;
    };
    g_source_set_callback(source_, G_SOURCE_FUNC(drain), &claim_, nullptr);
    g_source_set_can_recurse(source_, TRUE);
    g_source_set_name(source_, "OrvoAPI main queue");
    GMainContext* const context = g_main_context_ref_thread_default();
    g_source_attach(source_, context);
    g_main_context_unref(context);
  }
  GLibMainQueue(const GLibMainQueue&) = delete;
  GLibMainQueue& operator=(const GLibMainQueue&) = delete;
  ~GLibMainQueue() {
    if (!claim_.isOnItsThread()) {
      g_error("an orvo::GLibMainQueue has to be destroyed on the thread that made it");
    }
    g_source_destroy(source_);
    g_source_unref(source_);
  }

 private:
  detail::LoopClaim claim_;
  GSource* const source_;
};

}  // namespace orvo
