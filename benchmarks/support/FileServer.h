#pragma once

#include <support/Nginx.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

namespace orvo::benchmarks {

constexpr std::size_t kConnections = 10;
constexpr std::size_t kSmallBody = 3'000;
constexpr std::size_t kLargeBody = 60'000;

/// What each request carries besides: an app's have a token.
constexpr const char* kFieldName = "Authorization";
constexpr const char* kFieldValue = "eyJhbGciOiJIUzI1NiJ9.c2Vzc2lvbi10b2tlbg.3f2b6f0e5d0c4c7e";

/// What services speak; nginx 1.22 does so when it is told.
inline const std::string kProtocols = "ssl_protocols TLSv1.2 TLSv1.3;";
inline const std::string kSessions = "ssl_session_cache shared:s:1m;";

/// What is to be fetched.
struct Work {
  std::string url;
  std::size_t bodySize;
  std::string authority;  // the file to trust
  /// How many are under way at the same time, each on a connection of its own unless that carries
  /// several: as many as the library allows itself.
  std::size_t places = kConnections;
};

inline void expectSize(std::size_t size, const Work& work) {
  if (size == work.bodySize) return;
  std::fprintf(stderr, "%zu bytes instead of %zu of %s\n", size, work.bodySize, work.url.c_str());
  std::exit(2);
}

/// An nginx that has nothing else to do. Serves "/3000" and "/60000"; below "/once/" each on a
/// connection of its own.
class FileServer {
 public:
  explicit FileServer(const std::string& sessions = kSessions)
      : nginx_("root files; location /once/ { alias files/; keepalive_timeout 0; }",
               kProtocols + sessions) {
    std::filesystem::create_directory(nginx_.folder() + "/files");
    for (const auto size : {kSmallBody, kLargeBody}) {
      std::ofstream(nginx_.folder() + "/files/" + std::to_string(size)) << std::string(size, 'b');
    }
  }

  [[nodiscard]] Work http(std::size_t size) const { return work("http", nginx_.port, "/", size); }
  [[nodiscard]] Work tls(std::size_t size) const {
    return work("https", nginx_.tlsPort, "/", size);
  }
  [[nodiscard]] Work http2(std::size_t size) const {
    auto work = this->work("https", nginx_.http2Port, "/", size);
    work.places = 16;
    return work;
  }
  [[nodiscard]] Work once() const { return work("https", nginx_.tlsPort, "/once/", kSmallBody); }
  [[nodiscard]] const test::Nginx& nginx() const { return nginx_; }

 private:
  [[nodiscard]] Work work(const std::string& scheme, int port, const std::string& folder,
                          std::size_t size) const {
    return {scheme + "://127.0.0.1:" + std::to_string(port) + folder + std::to_string(size), size,
            nginx_.certificateFile()};
  }

  test::Nginx nginx_;
};

}  // namespace orvo::benchmarks
