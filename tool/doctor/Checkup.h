#pragma once

#include <tool/Tool.h>
#include <tool/doctor/Finding.h>
#include <tool/doctor/Network.h>
#include <tool/doctor/Proxy.h>

#include <functional>
#include <optional>

namespace orvo::tool {

/// Looks at all that lies between this device and a service's streams, step by step; each step's
/// finding is told at once. What a step needs that is not there makes it be skipped. Used by the
/// main thread.
class Checkup {
 public:
  using Tell = std::function<void(const Finding&)>;

  /// `limit`: how long a step may take.
  Checkup(Tool& tool, URL api, std::chrono::milliseconds limit, Tell tell);

  void run();

 private:
  /// A step begins, and with it the time that it may take.
  void begin();
  /// What is left of that; a little, at least, so that there is an answer to wait for.
  [[nodiscard]] std::chrono::milliseconds left() const;

  // On the way to the service; each returns whether there is a way on.
  bool findName();
  bool connect();
  /// To the first of the family's addresses that answers, or the last failure; nothing when it has
  /// none. They share the time.
  std::optional<Attempt> tryFamily(int family);
  bool secure();

  // At the service.
  void openSession();
  void checkClock();
  void fetchConfiguration();
  void fetchContent();
  void fetchPage(const Context& context);
  void findItems(const Context& context);
  void fetchImage(const Context& context);
  void fetchStream(const Context& context);

  /// An answer of the service, or the finding that there is none.
  struct Probe {
    std::optional<HTTPResult> answer{};
    Finding finding{};
  };
  Probe probe(const std::string& name, const URL& url);
  [[nodiscard]] static Finding failed(const std::string& name, const AnyError& error);
  /// For a document in which something is wrong.
  [[nodiscard]] static Finding unread(const std::string& name, const AnyError& fault,
                                      const HTTPResult& answer, std::chrono::nanoseconds time);
  /// For what the page does not lead to.
  [[nodiscard]] Finding nothing(const std::string& name, const std::string& detail) const;
  void tell(Finding finding);
  void skip(std::initializer_list<const char*> names, const std::string& because);

  Tool& tool_;
  const URL api_;
  const std::chrono::milliseconds limit_;
  const Tell tell_;
  std::chrono::steady_clock::time_point begun_;
  const std::optional<Proxy> proxy_;
  /// What is connected to: the service's host, or the proxy's.
  std::string host_;
  std::uint16_t port_ = 0;
  std::vector<Address> addresses_;
  Socket socket_;
  std::string reached_;
  bool hasSession_ = false;
  bool hasConfiguration_ = false;
  std::optional<Date> serviceDate_;
  Shared<Page> page_;
  // Of the page's collections; and whether one of them could not be had.
  std::optional<ContentItem> imageItem_;
  std::optional<ContentItem> playableItem_;
  bool isCollectionLost_ = false;
};

}  // namespace orvo::tool
