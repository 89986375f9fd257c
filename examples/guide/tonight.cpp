// What is on in the next six hours, in a GLib program.
// A server hands out a long guide in parts, of which this shows the first: an `orvo::ListWalk` with
// the context's `linearProgramGuideCapability` has them all.
// Usage: tonight API_URL RESOURCES_URL, as `orvo serve-demo` prints them.
#include <OrvoAPI/Integration/GLib.h>
#include <OrvoAPI/OrvoAPI.h>

#include <chrono>
#include <cstdio>
#include <string>

namespace {

/// In the device's zone.
std::string timeOfDay(orvo::Date date) {
  const auto time = g_date_time_new_from_unix_local(date.millisecondsSince1970() / 1000);
  char* const formatted = g_date_time_format(time, "%H:%M");
  const std::string text = formatted;
  g_free(formatted);
  g_date_time_unref(time);
  return text;
}

void show(const orvo::LinearProgramGuide& guide) {
  for (const auto& program : guide.items) {
    std::printf("%s  %s\n", timeOfDay(program.startTime).c_str(), program.title.c_str());
  }
}

}  // namespace

int main(int count, char** arguments) {
  const auto api = orvo::URL::parse(count == 3 ? arguments[1] : "");
  const auto resources = orvo::URL::parse(count == 3 ? arguments[2] : "");
  if (!api || !resources) return std::fputs("usage: tonight API_URL RESOURCES_URL\n", stderr), 2;
  const orvo::GLibMainQueue mainQueue;
  GMainLoop* const loop = g_main_loop_new(nullptr, FALSE);
  int status = 1;

  const orvo::Date now(std::chrono::system_clock::now());
  orvo::ContextService::context(*api, *resources, orvo::Client::appleTV)
      .flatMap([now](const auto& context) {
        return context->fetchLinearProgramGuide(context->constants().linearStreamID, now,
                                                now + std::chrono::hours(6));
      })
      .onComplete(orvo::MainQueue::shared(), [&](const auto& guide) {
        if (guide.failed()) {
          std::fprintf(stderr, "%s\n", guide.error()->description().c_str());
        } else {
          show(**guide.value());
          status = 0;
        }
        g_main_loop_quit(loop);
      });

  g_main_loop_run(loop);
  g_main_loop_unref(loop);
  return status;
}
