#include <OrvoAPI/Base/detail/Lock.h>
#include <OrvoAPI/Platform/ConsoleSink.h>

#include <atomic>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>

namespace orvo {
namespace {

struct Current {
  std::atomic<bool> silent{false};
  detail::Lock lock;
  // Shared, so that a line is handed over outside the lock and a sink may replace itself.
  std::shared_ptr<const ConsoleSink> sink ORVO_GUARDED_BY(lock);
};

// Never destroyed: a thread may still print while the process ends.
Current& current() {
  static auto& instance = *new Current;
  return instance;
}

}  // namespace

void setConsoleSink(ConsoleSink sink) {
  auto next = sink ? std::make_shared<const ConsoleSink>(std::move(sink)) : nullptr;
  const detail::LockGuard guard(current().lock);
  current().sink.swap(next);
  current().silent = false;
}

void silenceConsole() { current().silent = true; }

bool isConsoleSilent() { return current().silent.load(std::memory_order_relaxed); }

void printToConsole(std::string_view line) {
  if (isConsoleSilent()) return;
  std::string text;
  text.reserve(line.size() + 1);
  text.append(line).push_back('\n');

  std::shared_ptr<const ConsoleSink> sink;
  {
    const detail::LockGuard guard(current().lock);
    sink = current().sink;
  }
  if (sink) {
    (*sink)(text);
  } else {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
  }
}

}  // namespace orvo
