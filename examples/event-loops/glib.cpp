// The main queue in a GLib loop, and so in a GTK app.
// Usage: glib API_URL RESOURCES_URL, as `orvo serve-demo` prints them.
#include <OrvoAPI/OrvoAPI.h>
#include <glib-unix.h>

#include "Film.h"

int main(int count, char** arguments) {
  if (count != 3) return 2;
  int status = 1;
  const auto queue = orvo::MainQueue::shared();
  auto claim = queue->claim();
  GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
  const auto drain = [](gint, GIOCondition, gpointer data) -> gboolean {
    static_cast<orvo::MainQueue::Claim*>(data)->drain();
    return G_SOURCE_CONTINUE;
  };
  const guint watch = g_unix_fd_add(claim->eventDescriptor(), G_IO_IN, drain, &*claim);

  filmTitle(arguments).onComplete(queue, [&](const auto& title) {
    status = print(title);
    g_main_loop_quit(loop);
  });

  g_main_loop_run(loop);
  g_source_remove(watch);
  g_main_loop_unref(loop);
  return status;
}
