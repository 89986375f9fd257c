#include <OrvoAPI/Queues/detail/InlineQueue.h>

namespace orvo::detail {
namespace {

class InlineQueue final : public DispatchQueue {
 public:
  void post(Job job) override { job(); }
};

}  // namespace

std::shared_ptr<DispatchQueue> inlineQueue() {
  static auto* const queue = new InlineQueue;  // futures may complete while the process exits
  return {std::shared_ptr<void>(), queue};
}

}  // namespace orvo::detail
