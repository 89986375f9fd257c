#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

struct iovec;

namespace orvo {

/// A connection to the system log: the journal in its native format, or else the classic log
/// socket. Thread-safe. It never blocks and never fails: a record that the log cannot accept
/// immediately is lost, and a log that was restarted is reconnected to with the next record. Owns
/// its socket.
class SystemLog {
 public:
  /// The sockets to try, in this order; an empty path is left out.
  struct Paths {
    std::string journal = "/run/systemd/journal/socket";
    std::string classic = "/dev/log";
  };

  /// The severities of the system log, with their numbers there.
  enum class Priority { critical = 2, error = 3, notice = 5, info = 6, debug = 7 };

  /// Longer messages are cut (between two characters) and end in an ellipsis. The journal takes a
  /// record whole only if it fits a socket's buffer, of which this is about a third by default;
  /// many readers of the classic socket lose what is beyond 8 KiB.
  static constexpr std::size_t kLongestJournalMessage = 64 * 1024;
  static constexpr std::size_t kLongestClassicMessage = 7 * 1024;

  /// A source of records: make it once and keep it.
  class Handle {
    friend class SystemLog;
    explicit Handle(std::string text) : text_(std::move(text)) {}
    /// What all its records have in common, ready to be sent.
    std::string text_;
  };

  /// Null when no reader answers at any of the paths.
  [[nodiscard]] static std::unique_ptr<const SystemLog> open(const Paths& paths);
  SystemLog(const SystemLog&) = delete;
  SystemLog& operator=(const SystemLog&) = delete;
  ~SystemLog();

  /// A handle of this log, for records of this subsystem and category.
  [[nodiscard]] Handle handle(std::string_view subsystem, std::string_view category) const;

  /// Sends one record. The message may hold anything; it is not a format string. The classic log
  /// keeps one line per record: control characters become spaces there.
  void send(const Handle& handle, Priority priority, std::string_view message) const;

 private:
  enum class Kind { journal, classic };

  SystemLog(int socket, std::string path, Kind kind)
      : socket_(socket), path_(std::move(path)), kind_(kind) {}

  [[nodiscard]] static std::unique_ptr<const SystemLog> open(const std::string& path, Kind kind);
  void sendToJournal(const Handle& handle, Priority priority, std::string_view message) const;
  void sendToClassic(const Handle& handle, Priority priority, std::string_view message) const;
  void transmit(iovec* parts, std::size_t count) const;

  // Nothing changes after construction, not even the socket: reconnecting gives the same one a new
  // peer, which the kernel does for one thread at a time.
  const int socket_;
  const std::string path_;
  const Kind kind_;
};

}  // namespace orvo
