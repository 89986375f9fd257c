#pragma once

#include <netinet/tcp.h>
#include <poll.h>
#include <support/Loopback.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <list>
#include <string>
#include <thread>
#include <vector>

namespace orvo::benchmarks {

/// A long way to a server of this machine: passes on what comes to its port, each byte later by a
/// delay, the first ones of a connection later by two more, which is what it takes to make it.
/// Lasts as long as the process.
class Line {
 public:
  using Clock = std::chrono::steady_clock;

  Line(int target, Clock::duration delay) : target_(target), delay_(delay) {
    const auto [listener, port] = test::listenOnLoopback();
    listener_ = listener;
    port_ = port;
    std::thread([this] { run(); }).detach();
  }
  [[nodiscard]] int port() const { return port_; }
  /// Bytes that it has passed on to the clients' side.
  [[nodiscard]] std::uint64_t delivered() const { return delivered_; }

 private:
  struct Piece {
    Clock::time_point due;
    std::string bytes;  // none: the end
  };
  /// One direction of a connection.
  struct Way {
    int from, to;
    std::atomic<std::uint64_t>& passed;
    Clock::time_point opens = {};  // when the first bytes may arrive
    std::deque<Piece> pieces = {};
    std::size_t waiting = 0;
    bool isOpen = true;
    bool isFull = false;
  };
  using Pair = std::array<Way, 2>;

  /// No more than a socket would hold.
  static constexpr std::size_t kMost = 256 * 1024;

  void run() {
    while (true) {
      std::vector<pollfd> polled{{listener_, POLLIN, 0}};
      auto next = Clock::now() + std::chrono::hours(1);
      for (const auto& pair : pairs_) {
        for (const Way& way : pair) {
          polled.push_back({way.isOpen && way.waiting < kMost ? way.from : -1, POLLIN, 0});
          polled.push_back({way.isFull ? way.to : -1, POLLOUT, 0});
          if (!way.isFull && !way.pieces.empty()) next = std::min(next, way.pieces.front().due);
        }
      }
      const auto left = std::max(next - Clock::now(), Clock::duration::zero());
      const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
      const timespec limit{seconds.count(), std::chrono::nanoseconds(left - seconds).count()};
      ppoll(polled.data(), polled.size(), &limit, nullptr);
      std::size_t index = 1;
      for (auto pair = pairs_.begin(); pair != pairs_.end(); index += 4) {
        auto& [there, back] = *pair;
        const bool isAlive = receive(there, polled[index]) && receive(back, polled[index + 2]) &&
                             pass(there) && pass(back);
        pair = isAlive ? std::next(pair) : end(pair);
      }
      if (polled[0].revents != 0) accept();
    }
  }

  void accept() {
    const int client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    const int server = test::connectToLoopback(target_);
    for (const int socket : {client, server}) {
      const int on = 1;
      setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    }
    auto& [there, back] =
        pairs_.emplace_back(Pair{Way{client, server, sent_}, Way{server, client, delivered_}});
    there.opens = Clock::now() + 3 * delay_;
  }
  std::list<Pair>::iterator end(std::list<Pair>::iterator pair) {
    close(pair->front().from);
    close(pair->front().to);
    return pairs_.erase(pair);
  }

  /// False when the connection is over.
  bool receive(Way& way, const pollfd& polled) {
    if (polled.revents == 0) return true;
    std::array<char, 16 * 1024> buffer;
    const auto count = recv(way.from, buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (count < 0) return errno == EAGAIN;
    way.isOpen = count > 0;
    way.waiting += static_cast<std::size_t>(count);
    way.pieces.push_back({std::max(Clock::now() + delay_, way.opens),
                          std::string(buffer.data(), static_cast<std::size_t>(count))});
    return true;
  }
  bool pass(Way& way) {
    way.isFull = false;
    for (; !way.pieces.empty() && way.pieces.front().due <= Clock::now(); way.pieces.pop_front()) {
      auto& bytes = way.pieces.front().bytes;
      if (bytes.empty()) return false;
      const auto sent = send(way.to, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
      if (sent < 0 && errno != EAGAIN) return false;
      const auto passed = static_cast<std::size_t>(std::max<ssize_t>(sent, 0));
      way.waiting -= passed;
      way.passed += passed;
      bytes.erase(0, passed);
      way.isFull = !bytes.empty();
      if (way.isFull) break;
    }
    return true;
  }

  const int target_;
  const Clock::duration delay_;
  int listener_ = -1;
  int port_ = 0;
  std::list<Pair> pairs_;
  std::atomic<std::uint64_t> sent_{0}, delivered_{0};
};

}  // namespace orvo::benchmarks
