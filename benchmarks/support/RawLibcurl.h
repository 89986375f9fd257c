#pragma once

#include <benchmarks/support/FileServer.h>
#include <curl/curl.h>

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

/// The same requests by libcurl alone, as a careful program makes them: handles are kept, each
/// request brings its URL and its header, and a response's fields and its body are handed over.
namespace orvo::benchmarks {

/// A response's fields, as a program keeps that may need any of them.
using Fields = std::vector<std::pair<std::string, std::string>>;

/// An easy handle that makes one request after another; cookies are kept.
class RawHandle {
 public:
  explicit RawHandle(const Work& work) : work_(work) {
    set(CURLOPT_PRIVATE, this);
    // Without a file, libcurl's own choice.
    if (!work.authority.empty()) {
      set(CURLOPT_CAINFO, work.authority.c_str());
      set(CURLOPT_CAPATH, nullptr);
    }
    set(CURLOPT_ACCEPT_ENCODING, "");
    set(CURLOPT_PIPEWAIT, 1L);
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_COOKIEFILE, "");
    set(CURLOPT_USERAGENT, "raw");
    set(CURLOPT_HEADERFUNCTION, &addField);
    set(CURLOPT_HEADERDATA, this);
    set(CURLOPT_WRITEFUNCTION, &append);
    set(CURLOPT_WRITEDATA, this);
  }
  RawHandle(const RawHandle&) = delete;
  RawHandle& operator=(const RawHandle&) = delete;
  ~RawHandle() {
    curl_easy_cleanup(handle_);
    curl_slist_free_all(fields_);
  }

  [[nodiscard]] CURL* handle() const { return handle_; }
  template <class Value>
  void set(CURLoption option, Value value) {
    curl_easy_setopt(handle_, option, value);
  }

  void begin() {
    const auto field = std::string(kFieldName) + ": " + kFieldValue;
    curl_slist_free_all(std::exchange(fields_, curl_slist_append(nullptr, field.c_str())));
    set(CURLOPT_HTTPHEADER, fields_);
    set(CURLOPT_URL, work_.url.c_str());
  }
  void end(CURLcode code) {
    long status = 0;
    curl_easy_getinfo(handle_, CURLINFO_RESPONSE_CODE, &status);
    const auto fields = std::exchange(received_, {});  // the caller's from here
    const auto body = std::exchange(body_, {});
    expectSize(code == CURLE_OK && status == 200 ? body.size() : 0, work_);
  }
  /// A request by itself.
  void fetch() {
    begin();
    end(curl_easy_perform(handle_));
  }

 private:
  static std::size_t addField(char* bytes, std::size_t size, std::size_t count, void* self) {
    const std::string_view line(bytes, size * count);
    const auto colon = line.find(':');
    if (colon == std::string_view::npos) return line.size();
    const auto begin = line.find_first_not_of(' ', colon + 1);
    const auto end = line.find_last_not_of("\r\n");
    if (begin == std::string_view::npos || end < begin) return line.size();
    static_cast<RawHandle*>(self)->received_.emplace_back(line.substr(0, colon),
                                                          line.substr(begin, end + 1 - begin));
    return line.size();
  }
  static std::size_t append(char* bytes, std::size_t size, std::size_t count, void* self) {
    auto* const raw = static_cast<RawHandle*>(self);
    if (raw->body_.empty()) {
      curl_off_t announced = -1;
      curl_easy_getinfo(raw->handle_, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &announced);
      if (announced > 0) raw->body_.reserve(static_cast<std::size_t>(announced));
    }
    raw->body_.append(bytes, size * count);
    return size * count;
  }

  const Work work_;
  CURL* const handle_ = curl_easy_init();
  curl_slist* fields_ = nullptr;
  Fields received_;
  std::string body_;
};

/// One thread with a multi handle.
class RawMulti {
 public:
  explicit RawMulti(const Work& work) {
    curl_multi_setopt(multi_, CURLMOPT_MAX_HOST_CONNECTIONS, long{kConnections});
    while (handles_.size() < work.places) handles_.push_back(std::make_unique<RawHandle>(work));
  }
  RawMulti(const RawMulti&) = delete;
  RawMulti& operator=(const RawMulti&) = delete;
  ~RawMulti() {
    handles_.clear();
    curl_multi_cleanup(multi_);
  }

  void fetch(std::size_t count) {
    std::size_t started = 0, ended = 0;
    const auto start = [&](RawHandle& handle) {
      handle.begin();
      curl_multi_add_handle(multi_, handle.handle());
      ++started;
    };
    for (std::size_t i = 0; i < handles_.size() && started < count; ++i) start(*handles_[i]);
    while (ended < count) {
      int running = 0;
      curl_multi_perform(multi_, &running);
      bool some = false;
      while (auto* const handle = next()) {
        ++ended;
        if (started == count) continue;
        start(*handle);
        some = true;
      }
      if (!some && ended < count) curl_multi_poll(multi_, nullptr, 0, 1000, nullptr);
    }
  }

 private:
  /// One that has ended.
  RawHandle* next() {
    int queued = 0;
    const CURLMsg* const message = curl_multi_info_read(multi_, &queued);
    if (message == nullptr) return nullptr;
    char* self = nullptr;
    curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &self);
    auto* const handle = reinterpret_cast<RawHandle*>(self);
    const CURLcode code = message->data.result;
    curl_multi_remove_handle(multi_, handle->handle());
    handle->end(code);
    return handle;
  }

  CURLM* const multi_ = curl_multi_init();
  std::vector<std::unique_ptr<RawHandle>> handles_;
};

/// As many threads as there may be connections, each of which waits for its answers.
class RawThreads {
 public:
  explicit RawThreads(const Work& work) {
    while (handles_.size() < work.places) handles_.push_back(std::make_unique<RawHandle>(work));
  }
  /// The threads are new, which is nothing beside a thousand fetches.
  void fetch(std::size_t count) {
    std::atomic<std::size_t> left = count;
    std::vector<std::thread> threads;
    for (const auto& handle : handles_) {
      threads.emplace_back([&left, &handle] {
        for (auto now = left.load(); now > 0;) {
          if (left.compare_exchange_weak(now, now - 1)) handle->fetch();
        }
      });
    }
    for (auto& thread : threads) thread.join();
  }

 private:
  std::vector<std::unique_ptr<RawHandle>> handles_;
};

}  // namespace orvo::benchmarks
