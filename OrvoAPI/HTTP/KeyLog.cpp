#include <OrvoAPI/HTTP/KeyLogInternal.h>

#include <dlfcn.h>

#include <cstdlib>
#include <string_view>

namespace orvo::detail {
namespace {

using SetKeyLog = void (*)(void* context, void (*callback)(const void*, const char*));

/// OpenSSL's own function: libcurl has loaded it, and the library does not depend on it.
SetKeyLog setKeyLog() {
  const char* const backend = curl_version_info(CURLVERSION_NOW)->ssl_version;
  if (backend == nullptr || !std::string_view(backend).starts_with("OpenSSL/")) return nullptr;
  return reinterpret_cast<SetKeyLog>(dlsym(RTLD_DEFAULT, "SSL_CTX_set_keylog_callback"));
}

/// libcurl has prepared a connection's TLS, and sets no callback after this.
CURLcode onContext(CURL*, void* context, void*) {
  static const auto set = setKeyLog();
  if (set != nullptr) set(context, nullptr);
  return CURLE_OK;
}

}  // namespace

void forgoKeyLog(CURL* handle) {
  // Like every read of the environment: safe as long as the app does not write to it.
  if (std::getenv("SSLKEYLOGFILE") == nullptr) return;  // NOLINT(concurrency-mt-unsafe)
  curl_easy_setopt(handle, CURLOPT_SSL_CTX_FUNCTION, &onContext);
}

}  // namespace orvo::detail
