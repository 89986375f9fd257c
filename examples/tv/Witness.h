#pragma once

#include <OrvoAPI/OrvoAPI.h>

#include <atomic>
#include <functional>
#include <memory>

/// Sees what goes to the network: how many requests were begun, and how many are under way.
class Witness {
 public:
  [[nodiscard]] int begun() const { return counts_->begun; }
  [[nodiscard]] int underWay() const { return counts_->begun - counts_->ended; }

  /// How many were ended before their answer.
  [[nodiscard]] int cancelled() const { return counts_->cancelled; }

  /// For `BootstrapOptions::wrapNetwork`.
  [[nodiscard]] std::function<
      std::shared_ptr<orvo::NetworkDataProvider>(std::shared_ptr<orvo::NetworkDataProvider>)>
  wrap() const;

 private:
  struct Counts {
    std::atomic<int> begun = 0;
    std::atomic<int> ended = 0;
    std::atomic<int> cancelled = 0;
  };
  class Counter;

  const std::shared_ptr<Counts> counts_ = std::make_shared<Counts>();
};
