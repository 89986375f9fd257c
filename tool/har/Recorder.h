#pragma once

#include <OrvoAPI/Network/NetworkDataProvider.h>
#include <tool/har/Archive.h>

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace orvo::tool {

/// Keeps what goes to the network and what comes back, up to a bound, and writes it into a file.
/// Safe to use from any thread.
class Recorder : public std::enable_shared_from_this<Recorder> {
 public:
  /// Throws `WrongUsage` when no file can be put there. `speaksJson`: messages are documents;
  /// `words`: of the command line.
  Recorder(std::string file, bool speaksJson, std::vector<std::string> words);

  /// The same way to the network, watched.
  [[nodiscard]] std::shared_ptr<NetworkDataProvider> before(
      std::shared_ptr<NetworkDataProvider> network);
  /// Which service it is, once that is known.
  void serves(const ServiceChoice& service);

  /// Writes what there is, the first time that it is called; nothing before a service is known.
  /// False, and a message on standard error, when that fails.
  bool write() noexcept;

 private:
  class Watch;

  void begin(Exchange exchange, const Future<HTTPResult>& future);
  void end(std::size_t number, const Result<HTTPResult>& result);
  void say(const char* kind, const std::string& text) const;
  /// Whether that many bytes more are to be kept.
  [[nodiscard]] bool hasRoom(std::size_t bytes);

  const std::string file_;
  const bool speaksJson_;
  std::mutex mutex_;
  RecordedRun run_;
  bool isServed_ = false;
  bool isWritten_ = false;
  std::vector<Exchange> exchanges_;
  /// Of the exchanges that have not ended.
  std::vector<std::optional<Future<HTTPResult>>> pending_;
  std::size_t bytes_ = 0;
  std::size_t leftOut_ = 0;
};

}  // namespace orvo::tool
