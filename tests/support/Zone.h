#pragma once

#include <tests/support/Test.h>
#include <time.h>

namespace orvo {

/// Sets a variable of the environment while it lives.
class Variable {
 public:
  Variable(const char* name, const std::string& value) : name_(name) {
    if (const char* before = std::getenv(name)) before_ = before;
    setenv(name, value.c_str(), 1);
  }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;
  ~Variable() {
    before_ ? setenv(name_, before_->c_str(), 1) : unsetenv(name_);
    tzset();
  }

 private:
  const char* name_;
  std::optional<std::string> before_;
};

/// Puts the device into a zone while it lives.
struct Zone : Variable {
  explicit Zone(const char* name) : Variable("TZ", name) { tzset(); }
};

}  // namespace orvo
