#pragma once

#include <OrvoAPI/Context/RequestReport.h>
#include <OrvoAPI/Network/NetworkDataProvider.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace orvo::tool {

/// Looks at what goes to the network and at what comes back. Safe to use from any thread.
class NetworkWatch : public std::enable_shared_from_this<NetworkWatch> {
 public:
  /// Is told of each document that was not refused, with the path of its address.
  using Look = std::function<void(const std::string& path, const Data& body)>;

  explicit NetworkWatch(Look look) : look_(std::move(look)) {}

  /// The same way to the network, watched.
  [[nodiscard]] std::shared_ptr<NetworkDataProvider> before(
      std::shared_ptr<NetworkDataProvider> network);

  /// The status of the last answer that was neither a refusal nor an ordinary one; 0 when there was
  /// none: an answer without a document is known by that.
  [[nodiscard]] int oddStatus() const;
  /// What the last refusal says about when to come back; empty when it says nothing.
  [[nodiscard]] std::string retryAfter() const;
  /// What has not been answered yet, as reports without operation and status.
  [[nodiscard]] std::vector<RequestReport> underWay() const;

 private:
  class Provider;
  struct Sent {
    RequestReport report;
    Future<HTTPResult> future;
  };

  void sent(const URLRequest& request, const Future<HTTPResult>& future);
  void answered(const URLRequest& request, const HTTPResult& answer);

  const Look look_;
  mutable std::mutex mutex_;
  std::vector<Sent> sent_;
  int oddStatus_ = 0;
  std::string retryAfter_;
};

/// The path of the request's address, as it may be shown: without its token.
[[nodiscard]] std::string shownPath(const URLRequest& request);

/// A field Retry-After in words, `in 120 s`; empty when it says nothing.
[[nodiscard]] std::string retryText(const HTTPHeaders& headers);

}  // namespace orvo::tool
