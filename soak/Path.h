#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <support/Loopback.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace orvo::soak {

/// The way to a server, which breaks as ways do: carries bytes between its own address and a port
/// of 127.0.0.1. Any thread may break it.
class Path {
 public:
  /// Listens on the port of the address, or on a free one.
  explicit Path(int upstream, const char* address = "127.0.0.1", int port = 0)
      : upstream_(upstream), address_(address), port_(port) {
    listen();
    thread_ = std::thread([this] { carry(); });
  }
  Path(const Path&) = delete;
  Path& operator=(const Path&) = delete;
  ~Path() {
    ending_ = true;
    thread_.join();
    for (auto& pair : pairs_) close(pair);
    if (listener_ >= 0) ::close(listener_);
  }

  [[nodiscard]] int port() const { return port_; }
  /// Bytes that clients have sent and the server has received.
  [[nodiscard]] std::uint64_t sent() const { return sent_; }

  /// Answers are not carried until `release`, but requests are.
  void hold() { held_ = true; }
  void release() { held_ = false; }
  /// Nothing more is carried on the present connections, without a word.
  void silence() {
    const std::lock_guard guard(mutex_);
    for (auto& pair : pairs_) pair.silent = true;
  }
  /// Nor on later ones.
  void silenceForGood() {
    silentForGood_ = true;
    silence();
  }
  /// The present connections break with an error.
  void reset() {
    const std::lock_guard guard(mutex_);
    for (auto& pair : pairs_) {
      const linger atOnce{1, 0};
      setsockopt(pair.client, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
      close(pair);
    }
    pairs_.clear();
  }
  /// Refuses connections until `comeBack`.
  void leave() {
    const std::lock_guard guard(mutex_);
    ::close(std::exchange(listener_, -1));
  }
  void comeBack() {
    const std::lock_guard guard(mutex_);
    listen();
  }

 private:
  struct Pair {
    int client;
    int server;
    bool silent;
  };

  void listen() {
    listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const int on = 1;
    setsockopt(listener_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_port = htons(static_cast<std::uint16_t>(port_));
    inet_pton(AF_INET, address_.c_str(), &place.sin_addr);
    socklen_t size = sizeof place;
    auto* const generic = reinterpret_cast<sockaddr*>(&place);
    if (bind(listener_, generic, size) != 0 || ::listen(listener_, 512) != 0 ||
        getsockname(listener_, generic, &size) != 0) {
      throw std::runtime_error("no path on " + address_);
    }
    port_ = ntohs(place.sin_port);
  }
  static void close(const Pair& pair) {
    ::close(pair.client);
    ::close(pair.server);
  }

  void carry() {
    while (!ending_) {
      auto waited = waitedFor();
      poll(waited.data(), waited.size(), 2);
      const std::lock_guard guard(mutex_);
      const int client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
      if (client >= 0) {
        pairs_.push_back({client, test::connectToLoopback(upstream_), silentForGood_});
      }
      for (std::size_t i = 0; i < pairs_.size();) {
        if (carry(pairs_[i])) {
          ++i;
        } else {
          close(pairs_[i]);
          pairs_.erase(pairs_.begin() + static_cast<std::ptrdiff_t>(i));
        }
      }
    }
  }
  std::vector<pollfd> waitedFor() {
    const std::lock_guard guard(mutex_);
    std::vector<pollfd> waited{{listener_, POLLIN, 0}};
    for (const auto& pair : pairs_) {
      if (pair.silent) continue;
      waited.push_back({pair.client, POLLIN, 0});
      if (!held_) waited.push_back({pair.server, POLLIN, 0});
    }
    return waited;
  }
  bool carry(const Pair& pair) {
    if (pair.silent) return true;
    if (!carry(pair.client, pair.server, &sent_)) return false;
    return held_ || carry(pair.server, pair.client, nullptr);
  }
  /// False when an end has gone.
  static bool carry(int from, int to, std::atomic<std::uint64_t>* count) {
    std::array<char, 16'384> buffer;
    const auto size = recv(from, buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (size < 0) return errno == EAGAIN;
    if (size == 0) return false;
    for (ssize_t done = 0; done < size;) {
      const auto more =
          send(to, buffer.data() + done, static_cast<std::size_t>(size - done), MSG_NOSIGNAL);
      if (more <= 0) return false;
      done += more;
    }
    if (count != nullptr) *count += static_cast<std::uint64_t>(size);
    return true;
  }

  const int upstream_;
  const std::string address_;
  int port_;
  std::atomic<bool> held_{false};
  std::atomic<bool> silentForGood_{false};
  std::atomic<bool> ending_{false};
  std::atomic<std::uint64_t> sent_{0};
  std::mutex mutex_;
  int listener_ = -1;        // guarded by mutex_
  std::vector<Pair> pairs_;  // guarded by mutex_
  std::thread thread_;
};

}  // namespace orvo::soak
