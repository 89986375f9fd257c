// The main queue in a GLib loop.
// Usage: glib API_URL RESOURCES_URL, as `orvo serve-demo` prints them.
#include <OrvoAPI/Integration/GLib.h>
#include <OrvoAPI/OrvoAPI.h>

#include "Film.h"

int main(int count, char** arguments) {
  if (count != 3) return 2;
  int status = 1;
  const orvo::GLibMainQueue mainQueue;
  GMainLoop* loop = g_main_loop_new(nullptr, FALSE);

  filmTitle(arguments).onComplete(orvo::MainQueue::shared(), [&](const auto& title) {
    status = print(title);
    g_main_loop_quit(loop);
  });

  g_main_loop_run(loop);
  g_main_loop_unref(loop);
  return status;
}
