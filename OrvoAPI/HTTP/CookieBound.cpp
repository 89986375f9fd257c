#include <OrvoAPI/HTTP/CookieBoundInternal.h>

#include <algorithm>
#include <map>
#include <memory>
#include <new>
#include <string_view>

namespace orvo::detail {
namespace {

using Cookies = std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)>;

/// In libcurl's form, a line for each, which begins with the domain and a tab.
Cookies cookiesOf(CURL* handle) {
  curl_slist* cookies = nullptr;
  curl_easy_getinfo(handle, CURLINFO_COOKIELIST, &cookies);
  return {cookies, &curl_slist_free_all};
}

std::string_view domainOf(const char* cookie) {
  const std::string_view line = cookie;
  return line.substr(0, line.find('\t'));
}

}  // namespace

void CookieBound::enforce(CURL* handle) {
  received_ = 0;
  try {
    const auto cookies = cookiesOf(handle);
    std::map<std::string_view, std::size_t> sizes;
    std::size_t total = 0;
    for (const auto* cookie = cookies.get(); cookie != nullptr; cookie = cookie->next) {
      const auto size = std::string_view(cookie->data).size() + kBesideText;
      sizes[domainOf(cookie->data)] += size;
      total += size;
    }
    if (total <= kMost) return;
    while (total > kMost) {
      const auto largest = std::max_element(sizes.begin(), sizes.end(),
                                            [](auto& a, auto& b) { return a.second < b.second; });
      total -= largest->second;
      sizes.erase(largest);
    }
    curl_easy_setopt(handle, CURLOPT_COOKIELIST, "ALL");  // which takes them all away
    for (const auto* cookie = cookies.get(); cookie != nullptr; cookie = cookie->next) {
      if (sizes.contains(domainOf(cookie->data))) {
        curl_easy_setopt(handle, CURLOPT_COOKIELIST, cookie->data);
      }
    }
  } catch (const std::bad_alloc&) {
    curl_easy_setopt(handle, CURLOPT_COOKIELIST, "ALL");
  }
}

}  // namespace orvo::detail
