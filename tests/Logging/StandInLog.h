#pragma once

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace orvo {

/// A directory of its own, gone with the object.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string pattern = std::filesystem::temp_directory_path() / "orvo-log-XXXXXX";
    if (mkdtemp(pattern.data()) != nullptr) path_ = pattern;
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  [[nodiscard]] std::string file(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

/// Stands in for the reader of a log socket. What was sent is there when the sender returns.
class StandInLog {
 public:
  explicit StandInLog(const std::string& path) : socket_(socket(AF_UNIX, SOCK_DGRAM, 0)) {
    unlink(path.c_str());
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    if (bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) abort();
  }
  StandInLog(const StandInLog&) = delete;
  StandInLog& operator=(const StandInLog&) = delete;
  ~StandInLog() { close(socket_); }

  /// The next record, or nothing when there is none.
  [[nodiscard]] std::optional<std::string> record() {
    std::vector<char> buffer(1 << 20);
    const auto size = recv(socket_, buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (size < 0) return std::nullopt;
    return std::string(buffer.data(), static_cast<std::size_t>(size));
  }

  /// The fields of the next record, which is in the journal's native format.
  [[nodiscard]] std::map<std::string, std::string> fields() {
    const std::string text = record().value_or("");
    std::map<std::string, std::string> fields;
    for (std::size_t at = 0; at < text.size();) {
      const auto nameEnd = text.find_first_of("=\n", at);
      const auto name = text.substr(at, nameEnd - at);
      std::size_t begin = nameEnd + 1;
      std::size_t size = text.find('\n', begin) - begin;
      if (text.at(nameEnd) == '\n') {
        size = 0;
        for (int i = 7; i >= 0; --i) {
          size = size << 8 | static_cast<unsigned char>(text.at(begin + static_cast<unsigned>(i)));
        }
        begin += 8;
      }
      fields[name] = text.substr(begin, size);
      if (text.at(begin + size) != '\n') abort();
      at = begin + size + 1;
    }
    return fields;
  }

 private:
  int socket_;
};

}  // namespace orvo
