#pragma once

#include <utility>

namespace orvo::detail {

/// Shares a core; an empty one is possible. The count lies in the core.
template <class Core>
class CoreRef {
 public:
  CoreRef() = default;
  /// Takes over a reference that the caller holds.
  [[nodiscard]] static CoreRef adopt(Core* core) { return CoreRef(core); }
  [[nodiscard]] static CoreRef retain(Core* core) {
    core->retain();
    return CoreRef(core);
  }
  CoreRef(const CoreRef& other) : core_(other.core_) {
    if (core_ != nullptr) core_->retain();
  }
  CoreRef(CoreRef&& other) noexcept : core_(other.detach()) {}
  CoreRef& operator=(CoreRef other) noexcept {
    std::swap(core_, other.core_);
    return *this;
  }
  ~CoreRef() {
    if (core_ != nullptr) core_->release();
  }

  [[nodiscard]] Core* get() const { return core_; }
  Core* operator->() const { return core_; }
  explicit operator bool() const { return core_ != nullptr; }
  /// Gives up the reference without releasing it.
  [[nodiscard]] Core* detach() { return std::exchange(core_, nullptr); }

 private:
  explicit CoreRef(Core* core) : core_(core) {}
  Core* core_ = nullptr;
};

}  // namespace orvo::detail
