#pragma once

#include <OrvoAPI/OrvoAPI.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// What a screen with a search field shows, without drawing it. Used on one thread, the one that
/// the queue's jobs run on. Held by shared pointers; what it waits for does not keep it alive.
class SearchScreen final : public std::enable_shared_from_this<SearchScreen> {
 public:
  /// How long typing has to pause before the service is asked.
  static constexpr std::chrono::milliseconds kRest{300};

  /// An app passes `orvo::MainQueue::shared()`.
  SearchScreen(std::shared_ptr<orvo::Context> context, std::shared_ptr<orvo::DispatchQueue> queue)
      : context_(std::move(context)), queue_(std::move(queue)) {}

  /// The text in the field, whenever it changes.
  void type(std::string text);

  /// The suggestions below the field.
  [[nodiscard]] const std::vector<std::string>& rows() const { return rows_; }
  /// What is shown in their place.
  [[nodiscard]] const std::string& message() const { return message_; }

 private:
  void ask();
  void show(const orvo::Result<orvo::Shared<std::vector<std::string>>>& found);

  const std::shared_ptr<orvo::Context> context_;
  const std::shared_ptr<orvo::DispatchQueue> queue_;
  std::string text_;
  std::uint64_t changes_ = 0;  // tells an answer to the current text from older ones
  std::vector<std::string> rows_;
  std::string message_;
};
