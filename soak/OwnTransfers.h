#pragma once

#include <OrvoAPI/HTTP/URL.h>
#include <curl/curl.h>

#include <cstddef>

namespace orvo::soak {

/// The app's own use of libcurl.
class OwnTransfers {
 public:
  explicit OwnTransfers(const URL& url) {
    curl_global_init(CURL_GLOBAL_DEFAULT);
    handle_ = curl_easy_init();
    curl_easy_setopt(handle_, CURLOPT_URL, url.text().c_str());
    curl_easy_setopt(handle_, CURLOPT_WRITEFUNCTION, &OwnTransfers::ignore);
  }
  OwnTransfers(const OwnTransfers&) = delete;
  OwnTransfers& operator=(const OwnTransfers&) = delete;
  ~OwnTransfers() {
    curl_easy_cleanup(handle_);
    curl_global_cleanup();
  }
  /// On a connection that is kept from one time to the next; whether the answer is a 200.
  [[nodiscard]] bool work() {
    long status = 0;
    return curl_easy_perform(handle_) == CURLE_OK &&
           curl_easy_getinfo(handle_, CURLINFO_RESPONSE_CODE, &status) == CURLE_OK && status == 200;
  }

 private:
  static std::size_t ignore(char*, std::size_t size, std::size_t count, void*) {
    return size * count;
  }
  CURL* handle_;
};

}  // namespace orvo::soak
