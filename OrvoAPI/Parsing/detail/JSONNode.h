#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace orvo {

namespace detail {

/// The head of a body that was read: the count of its owners. What follows is the reader's.
struct JSONDocument {
  mutable std::atomic<std::size_t> owners{0};
};
void destroy(const JSONDocument* document) noexcept;

/// A place in a document, in the reader's own form. Owns nothing. Passed by value: a processor
/// stalls when it loads as one what it has just stored as two.
struct JSONPosition {
  std::uintptr_t document = 0;
  std::size_t place = 0;

  friend bool operator==(const JSONPosition&, const JSONPosition&) = default;
};

/// A place in a document and a share in that document; a borrowed one has no share, but each of its
/// copies has.
class JSONNode {
 public:
  JSONNode() = default;
  JSONNode(const JSONDocument* document, JSONPosition position)
      : document_(document), position_(position) {
    retain();
  }
  /// Costs nothing; the document must be held elsewhere as long as this is used.
  [[nodiscard]] static JSONNode borrowed(const JSONDocument* document, JSONPosition position) {
    JSONNode node;
    node.document_ = document;
    node.position_ = position;
    node.shares_ = false;
    return node;
  }
  JSONNode(const JSONNode& other) : document_(other.document_), position_(other.position_) {
    retain();
  }
  JSONNode(JSONNode&& other) noexcept
      : document_(std::exchange(other.document_, nullptr)),
        position_(other.position_),
        shares_(other.shares_) {}
  JSONNode& operator=(JSONNode other) noexcept {
    std::swap(document_, other.document_);
    std::swap(shares_, other.shares_);
    position_ = other.position_;
    return *this;
  }
  ~JSONNode() {
    if (document_ && shares_ && document_->owners.fetch_sub(1, std::memory_order_acq_rel) == 1) {
      destroy(document_);
    }
  }

  /// Null for a value that was never read.
  [[nodiscard]] const JSONDocument* document() const { return document_; }
  [[nodiscard]] JSONPosition position() const { return position_; }
  /// Goes to another place in the same document.
  void move(JSONPosition position) { position_ = position; }

 private:
  void retain() const {
    if (document_) document_->owners.fetch_add(1, std::memory_order_relaxed);
  }

  const JSONDocument* document_ = nullptr;
  JSONPosition position_{};
  bool shares_ = true;
};

}  // namespace detail

}  // namespace orvo
