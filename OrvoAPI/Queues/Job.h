#pragma once

#include <concepts>
#include <memory>
#include <type_traits>
#include <utility>

namespace orvo {

namespace detail {

/// A unit of work that is itself the link of the list it waits in, so that waiting allocates
/// nothing. Exactly one of `run` and `drop` is called, once, and consumes it.
class JobNode {
 public:
  virtual void run() = 0;
  virtual void drop() noexcept = 0;

  JobNode* next = nullptr;

 protected:
  JobNode() = default;
  JobNode(const JobNode&) = delete;
  JobNode& operator=(const JobNode&) = delete;
  ~JobNode() = default;
};

template <class F>
class FunctionJob final : public JobNode {
 public:
  template <class From>
  explicit FunctionJob(From&& function) : function_(std::forward<From>(function)) {}
  void run() override {
    const std::unique_ptr<FunctionJob> self(this);
    function_();
  }
  void drop() noexcept override { delete this; }

 private:
  F function_;
};

}  // namespace detail

/// A job in a dispatch queue: call it once. Destroyed without being called, it releases what it
/// holds. Movable between threads; not thread-safe.
class Job {
 public:
  Job() = default;
  template <class F>
  requires(!std::same_as<std::remove_cvref_t<F>, Job> && std::invocable<std::decay_t<F>&>)
      Job(F&& function)  // NOLINT(google-explicit-constructor): any function is a job
      : node_(new detail::FunctionJob<std::decay_t<F>>(std::forward<F>(function))) {}
  explicit Job(detail::JobNode* node) : node_(node) {}
  Job(Job&& other) noexcept : node_(std::exchange(other.node_, nullptr)) {}
  Job& operator=(Job&& other) noexcept {
    Job(std::move(other)).swap(*this);
    return *this;
  }
  ~Job() {
    if (node_ != nullptr) node_->drop();
  }

  explicit operator bool() const { return node_ != nullptr; }

  /// Runs the job and consumes it. An exception that the job throws propagates to the caller.
  void operator()() { std::exchange(node_, nullptr)->run(); }

  /// Gives up the node, to be linked into a list.
  [[nodiscard]] detail::JobNode* release() { return std::exchange(node_, nullptr); }

 private:
  void swap(Job& other) noexcept { std::swap(node_, other.node_); }

  detail::JobNode* node_ = nullptr;
};

namespace detail {

/// Waiting nodes in order of arrival, linked by their `next`. Not thread-safe. Its destructor drops
/// what is left.
template <class Node>
class NodeList {
 public:
  NodeList() = default;
  NodeList(NodeList&& other) noexcept { swap(other); }
  NodeList& operator=(NodeList&& other) noexcept {
    NodeList(std::move(other)).swap(*this);
    return *this;
  }
  ~NodeList() {
    while (!empty()) pop()->drop();
  }

  [[nodiscard]] bool empty() const { return first_ == nullptr; }
  [[nodiscard]] const Node* first() const { return first_; }
  void append(Node* node) {
    node->next = nullptr;
    (first_ == nullptr ? first_ : last_->next) = node;
    last_ = node;
  }
  void prepend(Node* node) {
    if (first_ == nullptr) last_ = node;
    node->next = std::exchange(first_, node);
  }
  [[nodiscard]] Node* pop() { return std::exchange(first_, first_->next); }

 private:
  void swap(NodeList& other) noexcept {
    std::swap(first_, other.first_);
    std::swap(last_, other.last_);
  }

  Node* first_ = nullptr;
  Node* last_ = nullptr;
};

using JobList = NodeList<JobNode>;

}  // namespace detail

}  // namespace orvo
