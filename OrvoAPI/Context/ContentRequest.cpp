#include <OrvoAPI/Context/ContentRequestInternal.h>
#include <OrvoAPI/Context/URLService.h>

#include <utility>

namespace orvo::detail {

ContentRequest& ContentRequest::add(std::string_view name, std::string_view value) {
  // An identifier may have brought a query of its own.
  reference_ += reference_.find('?') == std::string::npos ? '?' : '&';
  reference_ += name;
  reference_ += '=';
  reference_ += percentEncodedQueryValue(value);
  return *this;
}

ContentRequest& ContentRequest::add(const std::optional<ListPartRequest>& page) {
  if (!page) return *this;
  return add("offset", std::to_string(page->offset)).add("limit", std::to_string(page->limit));
}

Result<URL> ContentRequest::url(const URL& baseURL) const {
  auto url = URL::parse(reference_, baseURL);
  if (url && !url->fragment()) return std::move(*url);
  const AnyError error = URLService::Error::invalidInput{std::string(input_)};
  if (baseURL.isAbsolute()) return Failure{error};
  return Failure{error.withContext({.operation = {}, .note = std::string(kRelativeBase)})};
}

URL asBase(const URL& url) {
  return url.path().ends_with('/') ? url : url.appendingPathComponent("");
}

URLRequest uncachedRequest(URL url, std::chrono::seconds timeout) {
  return {.url = std::move(url),
          .cachePolicy = CachePolicy::reloadIgnoringLocalCacheData,
          .timeoutInterval = timeout};
}

}  // namespace orvo::detail
