#include "Witness.h"

#include <utility>

class Witness::Counter final : public orvo::NetworkDataProvider {
 public:
  Counter(std::shared_ptr<NetworkDataProvider> network, std::shared_ptr<Counts> counts)
      : network_(std::move(network)), counts_(std::move(counts)) {}

  orvo::Future<orvo::HTTPResult> fetch(const orvo::URLRequest& request) override {
    ++counts_->begun;
    const auto isFirst = [once = std::make_shared<std::atomic_flag>()] {
      return !once->test_and_set();
    };
    return network_->fetch(request)
        .onComplete([counts = counts_, isFirst](const auto&) {
          if (isFirst()) ++counts->ended;
        })
        .onCancel([counts = counts_, isFirst](bool) {
          if (!isFirst()) return;
          ++counts->ended;
          ++counts->cancelled;
        });
  }

 private:
  const std::shared_ptr<NetworkDataProvider> network_;
  const std::shared_ptr<Counts> counts_;
};

std::function<
    std::shared_ptr<orvo::NetworkDataProvider>(std::shared_ptr<orvo::NetworkDataProvider>)>
Witness::wrap() const {
  return [counts = counts_](std::shared_ptr<orvo::NetworkDataProvider> network) {
    return std::make_shared<Counter>(std::move(network), counts);
  };
}
