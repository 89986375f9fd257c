#include <OrvoAPI/HTTP/TLSContextInternal.h>

#include <dirent.h>
#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>

namespace orvo::detail {
namespace {

/// OpenSSL's type of what judges whether keys and groups are strong enough.
using Judge = int (*)(const void* connection, const void* context, int what, int bits, int number,
                      void* other, void* extra);

/// OpenSSL's own functions: libcurl has loaded them, and the library does not depend on them.
struct OpenSSL {
  template <class Function>
  static Function* find(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_DEFAULT, name));
  }
  using SetKeyLog = void(void* context, void (*callback)(const void*, const char*));
  using JudgeOf = Judge(const void* context);
  using SetJudge = void(void* context, Judge judge);
  using BitsOf = int(const void* group);

  SetKeyLog* const setKeyLog = find<SetKeyLog>("SSL_CTX_set_keylog_callback");
  JudgeOf* const judgeOf = find<JudgeOf>("SSL_CTX_get_security_callback");
  SetJudge* const setJudge = find<SetJudge>("SSL_CTX_set_security_callback");
  /// Before version 3 a judge was given a group in another form.
  BitsOf* const bitsOfKey = find<BitsOf>("EVP_PKEY_get_bits");
  BitsOf* const bitsOf = bitsOfKey != nullptr ? bitsOfKey : find<BitsOf>("DH_bits");
};

const OpenSSL& openSSL() {
  static const OpenSSL functions;
  return functions;
}

/// The judge that OpenSSL gives every connection; written before a connection can ask.
Judge usualJudge = nullptr;

/// A group of 4096 bits takes a tenth of a second, the largest that OpenSSL accepts two seconds, or
/// ten on a small device. Servers that mean well offer elliptic curves besides.
int judge(const void* connection, const void* context, int what, int bits, int number, void* other,
          void* extra) {
  constexpr int kGroupOfServer = 0x40007;  // SSL_SECOP_TMP_DH
  constexpr int kMostBits = 4096;
  if (what == kGroupOfServer && other != nullptr && openSSL().bitsOf(other) > kMostBits) return 0;
  return usualJudge(connection, context, what, bits, number, other, extra);
}

/// libcurl has prepared a connection's TLS, and changes none of this later. On the network thread.
CURLcode onContext(CURL*, void* context, void* writesKeyLog) {
  const auto& functions = openSSL();
  if (functions.setKeyLog != nullptr && writesKeyLog == nullptr) {
    functions.setKeyLog(context, nullptr);
  }
  if (functions.judgeOf != nullptr && functions.setJudge != nullptr &&
      functions.bitsOf != nullptr) {
    usualJudge = functions.judgeOf(context);
    functions.setJudge(context, judge);
  }
  return CURLE_OK;
}

bool usesOpenSSL() {
  const char* const backend = curl_version_info(CURLVERSION_NOW)->ssl_version;
  return backend != nullptr && std::string_view(backend).starts_with("OpenSSL/");
}

std::size_t certificatesIn(const char* file) {
  std::ifstream stream(file);
  std::size_t count = 0;
  for (std::string line; std::getline(stream, line);) {
    count += line.starts_with("-----BEGIN CERTIFICATE-----");
  }
  return count;
}

/// "1234abcd.0"
bool isHash(std::string_view name) {
  constexpr std::size_t kDigits = 8;
  const auto isIn = [](std::string_view digits) {
    return [digits](char c) { return digits.find(c) != std::string_view::npos; };
  };
  return name.size() > kDigits + 1 && name[kDigits] == '.' &&
         std::all_of(name.begin(), name.begin() + kDigits, isIn("0123456789abcdef")) &&
         std::all_of(name.begin() + kDigits + 1, name.end(), isIn("0123456789"));
}

std::size_t hashesIn(const char* folder) {
  const std::unique_ptr<DIR, int (*)(DIR*)> opened(opendir(folder), &closedir);
  if (opened == nullptr) return 0;
  std::size_t count = 0;
  // Its own stream, so that no other thread reads it.
  while (const auto* const entry = readdir(opened.get())) {  // NOLINT(concurrency-mt-unsafe)
    count += isHash(static_cast<const char*>(entry->d_name)) &&
             faccessat(dirfd(opened.get()), static_cast<const char*>(entry->d_name), R_OK, 0) == 0;
  }
  return count;
}

const char* findAuthorityFolder() {
  const auto* const version = curl_version_info(CURLVERSION_NOW);
  if (!usesOpenSSL() || version->age < CURLVERSION_SEVENTH) return nullptr;
  if (version->cainfo == nullptr || version->capath == nullptr) return nullptr;
  const auto certificates = certificatesIn(version->cainfo);
  return certificates > 0 && hashesIn(version->capath) >= certificates ? version->capath : nullptr;
}

}  // namespace

const char* hashedAuthorityFolder() {
  static const char* const folder = findAuthorityFolder();
  return folder;
}

void prepareTLS(CURL* handle, bool writesKeyLog) {
  if (!usesOpenSSL()) return;
  static char mark;
  curl_easy_setopt(handle, CURLOPT_SSL_CTX_FUNCTION, &onContext);
  curl_easy_setopt(handle, CURLOPT_SSL_CTX_DATA, writesKeyLog ? &mark : nullptr);
}

}  // namespace orvo::detail
