#include <OrvoAPI/OrvoAPI.h>
#include <OrvoAPI/Testing/ManualQueue.h>

#include <memory>

// Fails unless a callback runs when, and only when, the hand-cranked queue is cranked.
int main() {
  const auto queue = std::make_shared<orvo::ManualQueue>();
  const orvo::Promise<int> promise;
  int seen = 0;
  promise.future().onSuccess(queue, [&](int value) { seen = value; });
  promise.success(42);
  if (seen != 0) return 1;
  queue->run();
  return seen == 42 ? 0 : 1;
}
