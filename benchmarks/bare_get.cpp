// A request with libcurl and nothing else, or its version.
//
// usage: bare_get URL | --version

#include <curl/curl.h>

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>

int main(int argc, char** argv) {
  if (argc > 1 && std::strcmp(argv[1], "--version") == 0) return std::puts(curl_version()) < 0;
  std::string body;
  curl_global_init(CURL_GLOBAL_DEFAULT);
  CURL* const handle = curl_easy_init();
  const auto append = +[](char* data, std::size_t, std::size_t size, void* to) {
    static_cast<std::string*>(to)->append(data, size);
    return size;
  };
  curl_easy_setopt(handle, CURLOPT_URL, argc > 1 ? argv[1] : "");
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, append);
  curl_easy_setopt(handle, CURLOPT_WRITEDATA, &body);
  const auto code = curl_easy_perform(handle);
  curl_easy_cleanup(handle);
  curl_global_cleanup();
  return code == CURLE_OK && !body.empty() ? 0 : 1;
}
