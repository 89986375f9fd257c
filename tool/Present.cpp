#include <tool/Present.h>

#include <chrono>
#include <optional>

namespace orvo::tool {

namespace {

/// Set once.
class SetClock final : public Clock {
 public:
  explicit SetClock(Date moment) : moment_(moment) {}

  [[nodiscard]] Date now() const override { return moment_ + (elapsed() - begun_); }
  [[nodiscard]] std::chrono::milliseconds elapsed() const override {
    return Clock::system()->elapsed();
  }

 private:
  const Date moment_;
  const std::chrono::milliseconds begun_ = Clock::system()->elapsed();
};

std::optional<Date> held;
std::shared_ptr<const Clock> setClock;

}  // namespace

Date present() { return held ? *held : Clock::system()->now(); }

std::shared_ptr<const Clock> presentClock() { return setClock ? setClock : Clock::system(); }

void holdPresent() { held = Clock::system()->now(); }

void holdPresent(Date moment) {
  held = moment;
  setClock = std::make_shared<SetClock>(moment);
}

}  // namespace orvo::tool
