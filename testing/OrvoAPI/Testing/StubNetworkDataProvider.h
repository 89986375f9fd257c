#pragma once

#include <OrvoAPI/Network/NetworkDataProvider.h>
#include <OrvoAPI/Testing/PendingCalls.h>
#include <OrvoAPI/Testing/detail/Locked.h>

#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace orvo {

/// Stands in for the network: records each request and leaves it to the test when, in which order
/// and how it is answered. Thread-safe.
///
///     const auto network = std::make_shared<StubNetworkDataProvider>(queue);
///     …  // hand it to what is tested, and have that send two requests
///     network->answer(1, 200, R"({"id": "b"})");
///     network->fetches.fail(0, URLError{URLError::timedOut, "timed out"});
///     queue->run();
class StubNetworkDataProvider final : public NetworkDataProvider {
 public:
  explicit StubNetworkDataProvider(
      std::shared_ptr<DispatchQueue> callbackQueue = DispatchQueue::global())
      : fetches(std::move(callbackQueue)) {}

  [[nodiscard]] Future<HTTPResult> fetch(const URLRequest& request) override;

  /// The request of that call.
  [[nodiscard]] URLRequest request(std::size_t call) const;

  /// Answers that call from the URL that it asked for.
  void answer(std::size_t call, int statusCode, std::string_view body = {},
              HTTPHeaders headers = {});

  /// The calls of `fetch`.
  PendingCalls<HTTPResult> fetches;

 private:
  detail::Locked<std::vector<URLRequest>> requests_;
};

}  // namespace orvo
