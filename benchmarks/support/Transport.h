#pragma once

#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/Network/DefaultNetworkProvider.h>
#include <curl/curl.h>
#include <support/Nginx.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The same requests by the library and by raw libcurl, to an nginx that has nothing else to do.
namespace orvo::benchmarks {

constexpr std::size_t kConnections = 10;
constexpr std::size_t kSmallBody = 3'000;
constexpr std::size_t kLargeBody = 60'000;

/// What is to be fetched.
struct Work {
  std::string url;
  std::size_t bodySize;
  std::string authority;  // the file to trust
};

/// Serves "/3000" and "/60000"; below "/once/" each on a connection of its own.
class FileServer {
 public:
  FileServer() : nginx_("root files; location /once/ { alias files/; keepalive_timeout 0; }") {
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
    return work("https", nginx_.http2Port, "/", size);
  }
  [[nodiscard]] Work freshTLS() const {
    return work("https", nginx_.tlsPort, "/once/", kSmallBody);
  }
  [[nodiscard]] const test::Nginx& nginx() const { return nginx_; }

 private:
  [[nodiscard]] Work work(const std::string& scheme, int port, const std::string& folder,
                          std::size_t size) const {
    return {scheme + "://127.0.0.1:" + std::to_string(port) + folder + std::to_string(size), size,
            nginx_.certificateFile()};
  }

  test::Nginx nginx_;
};

inline void expectSize(std::size_t size, const Work& work) {
  if (size == work.bodySize) return;
  std::fprintf(stderr, "%zu bytes instead of %zu of %s\n", size, work.bodySize, work.url.c_str());
  std::exit(2);
}

/// The library: the provider that a context has, and three maps after each fetch.
class Library {
 public:
  explicit Library(Work work) : work_(std::move(work)), url_(*URL::parse(work_.url)) {
    provider_->setURLSession(std::make_shared<URLSession>(
        URLSessionConfiguration{.certificateAuthorityFile = work_.authority},
        provider_->sessionDelegate()));
  }

  /// Asks for all of them at once and waits for the last.
  void fetch(std::size_t count) {
    std::atomic<std::size_t> left = count;
    for (; count > 0; --count) {
      provider_->fetch({.url = url_})
          .map([](const HTTPResult& result) { return result.body; })
          .map([](const Data& body) { return body.size(); })
          .map([this](std::size_t size) {
            expectSize(size, work_);
            return true;
          })
          .onComplete([&left](const Result<bool>& result) {
            if (result.failed()) expectFailure(*result.error());
            if (left.fetch_sub(1) == 1) left.notify_one();
          });
    }
    for (auto now = left.load(); now > 0; now = left.load()) left.wait(now);
  }

 private:
  /// Is never asked: nothing redirects.
  class NoSession : public SessionProvider {
   public:
    [[nodiscard]] std::string currentToken() const override { return {}; }
    Future<std::string> retrieveSessionToken() override { return Promise<std::string>().future(); }
    Future<bool> updateSession() override { return Promise<bool>().future(); }
  };
  [[noreturn]] static void expectFailure(const AnyError& error) {
    std::fprintf(stderr, "%s\n", error.description().c_str());
    std::exit(2);
  }

  const Work work_;
  const URL url_;
  const std::shared_ptr<DefaultNetworkProvider> provider_ =
      std::make_shared<DefaultNetworkProvider>(std::make_shared<NoSession>());
};

inline std::size_t appendTo(char* bytes, std::size_t size, std::size_t count, void* body) {
  static_cast<std::string*>(body)->append(bytes, size * count);
  return size * count;
}

/// A response's fields, as a program keeps that may need any of them.
using Fields = std::vector<std::pair<std::string, std::string>>;

inline std::size_t addField(char* bytes, std::size_t size, std::size_t count, void* fields) {
  const std::string_view line(bytes, size * count);
  const auto colon = line.find(':');
  if (colon == std::string_view::npos) return line.size();
  const auto begin = line.find_first_not_of(' ', colon + 1);
  const auto end = line.find_last_not_of("\r\n");
  if (begin == std::string_view::npos || end < begin) return line.size();
  static_cast<Fields*>(fields)->emplace_back(line.substr(0, colon),
                                             line.substr(begin, end + 1 - begin));
  return line.size();
}

/// Raw libcurl: one thread, a multi handle, and a pool of easy handles that are used again; cookies
/// and a response's fields are kept as the library keeps them.
class RawMulti {
 public:
  explicit RawMulti(Work work) : work_(std::move(work)) {
    curl_multi_setopt(multi_, CURLMOPT_MAX_HOST_CONNECTIONS, long{kConnections});
    for (auto& slot : slots_) {
      slot.handle = curl_easy_init();
      curl_easy_setopt(slot.handle, CURLOPT_PRIVATE, &slot);
      curl_easy_setopt(slot.handle, CURLOPT_URL, work_.url.c_str());
      curl_easy_setopt(slot.handle, CURLOPT_CAINFO, work_.authority.c_str());
      curl_easy_setopt(slot.handle, CURLOPT_CAPATH, nullptr);
      curl_easy_setopt(slot.handle, CURLOPT_ACCEPT_ENCODING, "");
      curl_easy_setopt(slot.handle, CURLOPT_PIPEWAIT, 1L);
      curl_easy_setopt(slot.handle, CURLOPT_NOSIGNAL, 1L);
      curl_easy_setopt(slot.handle, CURLOPT_COOKIEFILE, "");
      curl_easy_setopt(slot.handle, CURLOPT_USERAGENT, "raw");
      curl_easy_setopt(slot.handle, CURLOPT_HEADERFUNCTION, &addField);
      curl_easy_setopt(slot.handle, CURLOPT_HEADERDATA, &slot.fields);
      curl_easy_setopt(slot.handle, CURLOPT_WRITEFUNCTION, &appendTo);
      curl_easy_setopt(slot.handle, CURLOPT_WRITEDATA, &slot.body);
    }
  }
  RawMulti(const RawMulti&) = delete;
  RawMulti& operator=(const RawMulti&) = delete;
  ~RawMulti() {
    for (auto& slot : slots_) curl_easy_cleanup(slot.handle);
    curl_multi_cleanup(multi_);
  }

  void fetch(std::size_t count) {
    std::size_t started = 0, ended = 0;
    for (auto& slot : slots_) {
      if (started == count) break;
      curl_multi_add_handle(multi_, slot.handle);
      ++started;
    }
    while (ended < count) {
      int running = 0;
      curl_multi_perform(multi_, &running);
      int queued = 0;
      bool some = false;
      while (const CURLMsg* const message = curl_multi_info_read(multi_, &queued)) {
        char* slot = nullptr;
        curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &slot);
        end(*reinterpret_cast<Slot*>(slot), message->data.result);
        ++ended;
        if (started < count) {
          curl_multi_add_handle(multi_, reinterpret_cast<Slot*>(slot)->handle);
          ++started;
          some = true;
        }
      }
      if (!some && ended < count) curl_multi_poll(multi_, nullptr, 0, 1000, nullptr);
    }
  }

 private:
  struct Slot {
    CURL* handle = nullptr;
    Fields fields;
    std::string body;
  };

  void end(Slot& slot, CURLcode code) {
    curl_multi_remove_handle(multi_, slot.handle);
    long status = 0;
    curl_easy_getinfo(slot.handle, CURLINFO_RESPONSE_CODE, &status);
    const auto fields = std::exchange(slot.fields, {});  // the caller's from here
    const auto body = std::exchange(slot.body, {});
    expectSize(code == CURLE_OK && status == 200 ? body.size() : 0, work_);
  }

  const Work work_;
  CURLM* const multi_ = curl_multi_init();
  std::array<Slot, kConnections> slots_;
};

}  // namespace orvo::benchmarks
