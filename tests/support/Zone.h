#pragma once

#include <time.h>

#include <cstdlib>
#include <optional>
#include <string>

namespace orvo {

/// Puts the device into a zone while it lives.
class Zone {
 public:
  explicit Zone(const char* name) {
    if (const char* before = std::getenv("TZ")) before_ = before;
    set(name);
  }
  Zone(const Zone&) = delete;
  Zone& operator=(const Zone&) = delete;
  ~Zone() { set(before_ ? before_->c_str() : nullptr); }

 private:
  static void set(const char* name) {
    name ? setenv("TZ", name, 1) : unsetenv("TZ");
    tzset();
  }
  std::optional<std::string> before_;
};

}  // namespace orvo
