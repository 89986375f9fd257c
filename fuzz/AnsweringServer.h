#pragma once

#include <fuzz/FuzzTarget.h>
#include <poll.h>
#include <support/Loopback.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <tuple>

namespace orvo::fuzz {

/// Answers one request after another with what the input says, as raw bytes. Its threads never end:
/// neither may the object.
class AnsweringServer {
 public:
  struct Manner {
    /// A connection waits for further requests instead of being closed after the first.
    bool keepsAlive = false;
    /// The last answer is sent over and over.
    bool isEndless = false;
  };

  AnsweringServer() {
    std::tie(listener_, port_) = test::listenOnLoopback();
    std::thread([this] {
      while (true) {
        const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        std::thread([this, socket] { serve(socket); }).detach();
      }
    }).detach();
  }

  [[nodiscard]] int port() const { return port_; }

  /// From now on the answers are these, each ended by a byte 0xFF.
  void play(std::string_view answers, Manner manner) {
    const std::lock_guard guard(lock_);
    answers_ = answers;
    manner_ = manner;
    requests_ = 0;
  }
  [[nodiscard]] int requests() {
    const std::lock_guard guard(lock_);
    return requests_;
  }

 private:
  /// How long a connection that is kept stays open without a request. The client that still waits
  /// for the rest of an answer then learns that there is none.
  static constexpr int kPatienceInMilliseconds = 20;

  struct Answer {
    std::string bytes;
    Manner manner;
    bool isLast;
  };

  Answer next() {
    const std::lock_guard guard(lock_);
    ++requests_;
    std::string_view rest = answers_;
    std::string bytes(takePiece(rest, '\xFF'));
    answers_ = std::string(rest);
    return {std::move(bytes), manner_, answers_.empty()};
  }

  void serve(int socket) {
    for (bool isOpen = hears(socket); isOpen;) {
      const auto answer = next();
      const bool repeats = answer.manner.isEndless && answer.isLast && !answer.bytes.empty();
      do {
        isOpen = send(socket, answer.bytes);
      } while (isOpen && repeats);
      pollfd waiting{socket, POLLIN, 0};
      isOpen = isOpen && answer.manner.keepsAlive && !answer.isLast &&
               poll(&waiting, 1, kPatienceInMilliseconds) == 1 && hears(socket);
    }
    close(socket);
  }

  static bool hears(int socket) {
    std::string head;
    std::array<char, 4096> buffer;
    while (head.find("\r\n\r\n") == std::string::npos) {
      const auto count = recv(socket, buffer.data(), buffer.size(), 0);
      if (count <= 0) return false;
      head.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return true;
  }

  static bool send(int socket, std::string_view bytes) {
    while (!bytes.empty()) {
      const auto count = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (count <= 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
  }

  int listener_ = -1;
  int port_ = 0;
  std::mutex lock_;
  // Guarded by lock_.
  std::string answers_;
  Manner manner_;
  int requests_ = 0;
};

}  // namespace orvo::fuzz
