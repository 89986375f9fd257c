#pragma once

#include <OrvoAPI/Context/ContextService.h>
#include <OrvoAPI/Context/FetchScope.h>
#include <OrvoAPI/Linear/LinearProgramGuideMonitor.h>
#include <OrvoAPI/Network/SessionRenewal.h>
#include <soak/FleetService.h>
#include <soak/FleetTime.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <string>

namespace orvo::soak {

/// What an app sets of what the library offers, and what it does by itself.
struct FleetApp {
  /// The longest random delay after the end of a programme; nothing: none.
  std::optional<std::chrono::milliseconds> delayAfterEnd = {};
  /// How long after the end of a programme the app loads the monitor anew when no update has come;
  /// nothing: it does not.
  std::optional<std::chrono::milliseconds> patience = {};
  /// The longest random delay before the monitor tries again after a failure; nothing: it does not.
  std::optional<std::chrono::milliseconds> delayAfterFailure = {};
  /// How long before a session is stale it may be renewed; nothing: the fetches do it.
  std::optional<std::chrono::milliseconds> renewalSpread = {};
};

/// An app for a television as `examples/tv` is one, and whoever sits before it: opens the service,
/// shows its first view, what is on, and from time to time another screen. All of it happens on the
/// simulation's thread but for what the library does on its own.
class FleetDevice {
 public:
  /// Who looks at a screen from time to time.
  struct Person {
    Date from, until;
    std::chrono::milliseconds betweenScreens{300'000};  ///< on average
  };

  FleetDevice(FleetTime& time, std::shared_ptr<FleetService> service, const FleetApp& app,
              Person person, std::uint32_t seed);

  void start();

  /// What the device says is on; nothing before it knows.
  [[nodiscard]] std::optional<Date> onAirUntil() const { return until_; }
  [[nodiscard]] bool isOpen() const { return context_ != nullptr; }

 private:
  using Milliseconds = std::chrono::milliseconds;

  void after(Milliseconds delay, std::function<void()> task);
  [[nodiscard]] Milliseconds between(Milliseconds least, Milliseconds most);
  /// Until somebody has read that it failed and presses "Try again".
  [[nodiscard]] Milliseconds untilTriedAgain();
  void opened(std::shared_ptr<Context> context);
  void showFirstView();
  void showShelves(const std::string& of);
  void watch();
  void show(const GuideUpdate& update);
  void browseLater();
  void browse(const std::string& id, int tries);

  FleetTime& time_;
  const std::shared_ptr<FleetService> service_;
  const FleetApp& app_;
  const Person person_;
  std::minstd_rand random_;
  std::shared_ptr<const Context> context_;
  std::optional<FetchScope> scope_;
  std::shared_ptr<LinearProgramGuideMonitor> monitor_;
  std::shared_ptr<SessionRenewal> renewal_;
  std::optional<Date> until_;
};

}  // namespace orvo::soak
