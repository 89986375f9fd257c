#pragma once

#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/Network/NetworkDataProvider.h>
#include <soak/FleetTime.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orvo::soak {

/// What the service is asked for: by the devices themselves, and because somebody looks at a
/// screen.
enum class Asked { session, configuration, guide, video, screen };
inline constexpr std::size_t kAsked = 5;

/// What happened in one second.
struct FleetSecond {
  std::array<std::uint32_t, kAsked> asked{};
  std::uint32_t answered = 0;
  std::uint32_t refused = 0;  ///< it is down, or too many wait
  std::uint32_t late = 0;     ///< nobody waited for the answer any more

  [[nodiscard]] std::uint32_t all() const {
    std::uint32_t sum = 0;
    for (const auto count : asked) sum += count;
    return sum;
  }
  [[nodiscard]] std::uint32_t byDevices() const {
    return all() - asked[static_cast<std::size_t>(Asked::screen)];
  }
};

/// The service that a fleet talks to, in place of the network. It answers so many requests a second
/// in the order in which they come; when more than a bound of them wait it refuses with 503 at
/// once; a request that waits longer than its limit fails with a time-out, and is answered in vain.
/// While it is down connections are refused. Requests come on any thread; the rest happens on the
/// simulation's.
class FleetService final : public NetworkDataProvider {
 public:
  static constexpr std::chrono::minutes kProgramLength{30};

  FleetService(FleetTime& time, double perSecond, std::size_t mostWaiting);

  [[nodiscard]] Future<HTTPResult> fetch(const URLRequest& request) override;

  /// What waits when the service goes down loses its connection.
  void setDown(bool isDown);
  /// Lets go of what waits, which holds the service.
  void close();
  /// Second by second since the time began.
  [[nodiscard]] const std::vector<FleetSecond>& seconds() const { return seconds_; }
  /// The longest that an answer took.
  [[nodiscard]] std::chrono::milliseconds slowest() const { return slowest_; }

 private:
  struct Call {
    URLRequest request;
    Promise<HTTPResult> promise;
    std::chrono::milliseconds came{};
    bool isOver = false;
  };
  using CallRef = std::shared_ptr<Call>;

  [[nodiscard]] FleetSecond& second();
  void accept(const CallRef& call);
  void refuse(const CallRef& call, int status);
  void workLater();
  void work();
  void expire();
  void answer(const Call& call);
  [[nodiscard]] std::string document(const URL& url);
  [[nodiscard]] const std::string& guide(std::string_view query);

  FleetTime& time_;
  const std::shared_ptr<FleetQueue> queue_;  // a request may come when the time has gone
  const double perTick_;
  const std::size_t mostWaiting_;
  const std::string configuration_;
  bool isDown_ = false;
  bool isWorking_ = false;
  double credit_ = 0;  // requests that may be answered now
  std::deque<CallRef> waiting_;
  std::map<std::chrono::milliseconds, std::deque<CallRef>> limits_;  // by their length
  std::map<std::int64_t, std::string> guides_;                       // by their first programme
  std::uint64_t sessions_ = 0;
  std::vector<FleetSecond> seconds_;
  std::chrono::milliseconds slowest_{0};
};

}  // namespace orvo::soak
