#include <OrvoAPI/HTTP/BodyFieldsInternal.h>
#include <OrvoAPI/HTTP/CurlErrorsInternal.h>
#include <OrvoAPI/HTTP/CurlSessionInternal.h>
#include <OrvoAPI/HTTP/CurlTransferInternal.h>
#include <OrvoAPI/HTTP/TLSContextInternal.h>
#include <OrvoAPI/HTTP/WatchdogInternal.h>
#include <OrvoAPI/Version.h>

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

namespace orvo::detail {
namespace {

/// What the headers of most answers need.
constexpr std::size_t kUsualFields = 16;
constexpr std::size_t kUsualFieldBytes = 384;

/// Before libcurl 8.2 a handle remembers the last header field of its previous answer, freed by
/// then, and writes into it when the next answer's header begins with a folded line.
bool handlesRememberFields() {
  static const bool remember = curl_version_info(CURLVERSION_NOW)->version_num < 0x080200;
  return remember;
}

/// A header has to be complete within this many timeout intervals.
constexpr int kIntervalsForHeader = 4;

/// Whether libcurl, which takes a mebibyte for the head of a request, could not send this one.
bool isTooLong(const URLRequest& request) {
  constexpr std::size_t kMost = (std::size_t{1} << 20) - 4096;  // it adds some fields
  auto size = request.url.text().size();
  for (const auto field : request.headers) size += field.name.size() + field.value.size() + 4;
  return size > kMost;
}

bool isFolded(std::string_view line) { return line.starts_with(' ') || line.starts_with('\t'); }

/// libcurl's form of "Name: value", in which a field without a value would mean "leave it out".
std::string headerLine(std::string_view name, std::string_view value) {
  std::string line(name);
  if (value.empty()) return line += ';';
  return line.append(": ").append(value);
}

}  // namespace

CurlTransfer::CurlTransfer(const URLSessionConfiguration& configuration, Connections& connections)
    : handle_(curl_easy_init()),
      connections_(connections),
      maximumBodySize_(configuration.maximumBodySize),
      maximumHeaderSize_(configuration.maximumHeaderSize) {
  if (handle_ == nullptr) throw std::bad_alloc();
}

/// By way of the other one, so that the handle goes when a setting is refused memory.
CurlTransfer::CurlTransfer(const URLSessionConfiguration& configuration, CURLSH* share,
                           Connections& connections)
    : CurlTransfer(configuration, connections) {
  set(CURLOPT_PRIVATE, this);
  set(CURLOPT_SHARE, share);
  set(CURLOPT_COOKIEFILE, "");       // cookies, kept in memory
  set(CURLOPT_ACCEPT_ENCODING, "");  // all that libcurl can decode
  set(CURLOPT_USERAGENT, "OrvoAPI/" ORVO_API_VERSION_STRING);
  set(CURLOPT_PATH_AS_IS, 1L);  // what the URL says goes on the wire
  set(CURLOPT_NOSIGNAL, 1L);
  // A transfer that is given up during name resolution would wait for the resolver.
  set(CURLOPT_QUICK_EXIT, 1L);
  set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
  // A connection whose other end vanished in silence is found out before it is needed.
  set(CURLOPT_TCP_KEEPALIVE, 1L);
  set(CURLOPT_TCP_KEEPIDLE, 30L);
  set(CURLOPT_TCP_KEEPINTVL, 10L);
  setSecurity(configuration);
  setCallbacks();
}

CurlTransfer::~CurlTransfer() { curl_easy_cleanup(handle_); }

void CurlTransfer::setSecurity(const URLSessionConfiguration& configuration) {
  set(CURLOPT_PROTOCOLS_STR, "http,https");
  prepareTLS(handle_, configuration.writesKeyLog);
  set(CURLOPT_SSLVERSION, long{CURL_SSLVERSION_TLSv1_2});
  // One source of authorities: a file, which is read whole for the first connection and kept, or
  // the system's folder.
  set(CURLOPT_CAPATH, static_cast<const char*>(nullptr));
  mayUseFolder_ = !configuration.certificateAuthorityFile;
  if (!mayUseFolder_) set(CURLOPT_CAINFO, configuration.certificateAuthorityFile->c_str());
}

/// Not before TLS is needed: the folder has to be looked at.
void CurlTransfer::useFolder() {
  const char* const folder = hashedAuthorityFolder();
  if (folder == nullptr) return;
  set(CURLOPT_CAPATH, folder);
  set(CURLOPT_CAINFO, static_cast<const char*>(nullptr));
}

void CurlTransfer::setCallbacks() {
  set(CURLOPT_HEADERFUNCTION, &CurlTransfer::onHeader);
  set(CURLOPT_HEADERDATA, this);
  set(CURLOPT_WRITEFUNCTION, &CurlTransfer::onBody);
  set(CURLOPT_WRITEDATA, this);
  set(CURLOPT_DEBUGFUNCTION, &CurlTransfer::onTrace);
  set(CURLOPT_DEBUGDATA, this);
  set(CURLOPT_OPENSOCKETFUNCTION, &CurlTransfer::onOpenSocket);
  set(CURLOPT_OPENSOCKETDATA, this);
  // The pool's, since a connection may outlive the transfer that it was opened for.
  set(CURLOPT_CLOSESOCKETFUNCTION, &CurlTransfer::onCloseSocket);
  set(CURLOPT_CLOSESOCKETDATA, &connections_);
  set(CURLOPT_RESOLVER_START_FUNCTION, &CurlTransfer::onResolve);
  set(CURLOPT_RESOLVER_START_DATA, this);
  set(CURLOPT_PREREQFUNCTION, &CurlTransfer::onConnected);
  set(CURLOPT_PREREQDATA, this);
  set(CURLOPT_XFERINFOFUNCTION, &CurlTransfer::onProgress);
  set(CURLOPT_XFERINFODATA, this);
}

CurlTransfer* CurlTransfer::from(CURL* handle) {
  char* self = nullptr;
  curl_easy_getinfo(handle, CURLINFO_PRIVATE, &self);
  return reinterpret_cast<CurlTransfer*>(self);
}

void CurlTransfer::begin(std::shared_ptr<HTTPExchange> exchange, CurlSession& session,
                         CurlHost& host) {
  exchange_ = std::move(exchange);
  session_ = &session;
  host_ = &host;
  body_ = BodyBuffer(host.largeBodies);
  noteActivity();
  const auto& request = exchange_->exchangeRequest();
  set(CURLOPT_URL, request.url.text().c_str());
  // HTTP/2 is negotiated within TLS only. Were it offered without TLS, a first burst would wait for
  // the first answer.
  const bool secure = request.url.text().starts_with("https:");
  if (secure && std::exchange(mayUseFolder_, false)) useFolder();
  set(CURLOPT_HTTP_VERSION, long{secure ? CURL_HTTP_VERSION_2TLS : CURL_HTTP_VERSION_1_1});
  // It gives a second address a chance when the first does not answer. Zero would mean libcurl's
  // default.
  constexpr std::int64_t kLongest = std::numeric_limits<int>::max();
  const std::int64_t timeout = request.timeoutInterval.count();
  set(CURLOPT_CONNECTTIMEOUT_MS,
      static_cast<long>(timeout > 0 ? std::min(timeout, kLongest) : kLongest));
  setMethod(request);
  setHeaders(request);
}

void CurlTransfer::setMethod(const URLRequest& request) {
  const bool bodyless = request.body.empty() && request.method != "POST" &&
                        request.method != "PUT" && request.method != "PATCH";
  const bool plainGet = bodyless && request.method == "GET";
  if (plainGet && plainGet_) return;
  plainGet_ = plainGet;
  set(CURLOPT_NOPROGRESS, long{bodyless});
  set(CURLOPT_HTTPGET, 1L);  // undoes what an earlier request has set
  set(CURLOPT_CUSTOMREQUEST, static_cast<const char*>(nullptr));
  if (plainGet) return;
  if (bodyless && request.method == "HEAD") {
    set(CURLOPT_NOBODY, 1L);
    return;
  }
  if (!bodyless) {
    set(CURLOPT_POST, 1L);
    set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
    // Not copied: the exchange holds the request as long as it is under way.
    set(CURLOPT_POSTFIELDS, request.body.empty() ? "" : request.body.view().data());
  }
  set(CURLOPT_CUSTOMREQUEST, request.method.c_str());
}

void CurlTransfer::setHeaders(const URLRequest& request) {
  if (plainGet_ && listedHeaders_ == request.headers && listedPolicy_ == request.cachePolicy)
    return;
  List list;
  const auto append = [&list](const std::string& line) {
    curl_slist* const longer = curl_slist_append(list.get(), line.c_str());
    if (longer == nullptr) throw std::bad_alloc();
    if (list == nullptr) list.reset(longer);
  };
  for (const auto field : request.headers) append(headerLine(field.name, field.value));
  if (request.cachePolicy == CachePolicy::reloadIgnoringLocalAndRemoteCacheData) {
    if (!request.headers.contains("Cache-Control")) append("Cache-Control: no-cache");
    if (!request.headers.contains("Pragma")) append("Pragma: no-cache");
  }
  if (!plainGet_) {
    append("Expect:");  // servers that do not know it would cost a second
    if (!request.headers.contains("Content-Type")) append("Content-Type:");
  }
  set(CURLOPT_HTTPHEADER, list.get());
  headerList_ = std::move(list);
  listedHeaders_ = plainGet_ ? std::optional(request.headers) : std::nullopt;
  listedPolicy_ = request.cachePolicy;
}

void CurlTransfer::setWaits(bool waits) {
  if (std::exchange(waits_, waits) != waits) set(CURLOPT_PIPEWAIT, long{waits});
}

void CurlTransfer::setFresh(bool connection, bool name) {
  constexpr long kUsualSeconds = 60;
  if (std::exchange(freshConnection_, connection) != connection) {
    set(CURLOPT_FRESH_CONNECT, long{connection});
  }
  if (std::exchange(freshName_, name) != name) {
    set(CURLOPT_DNS_CACHE_TIMEOUT, name ? 0L : kUsualSeconds);
  }
}

void CurlTransfer::noteSocketActivity(bool isInput) {
  if (multiplexed_ || headIsComplete_) return;
  noteActivity();
  if (isInput && isSent_ && headerBegan_ == NetworkTime::max()) headerBegan_ = lastActivity_;
}

NetworkTime CurlTransfer::deadline() const {
  if (failure_) return NetworkTime::min();
  const auto total = exchange_->deadline();
  const auto timeout = exchange_->exchangeRequest().timeoutInterval;
  if (!isLimit(timeout)) return total;
  const auto silence = std::min(total, lastActivity_ + timeout);
  if (headIsComplete_ || headerBegan_ == NetworkTime::max()) return silence;
  return std::min(silence, headerBegan_ + kIntervalsForHeader * timeout);
}

void CurlTransfer::end(CURLcode code) {
  // libcurl would send the next request on it as well.
  if (code == CURLE_HTTP2) connections_.retire(connection_);
  HTTPOutcome ended = outOfMemory();
  try {
    ended = outcome(code);
  } catch (const std::bad_alloc&) {
  }
  end(std::move(ended));
}

void CurlTransfer::end(HTTPOutcome outcome) { session_->transferDidEnd(*this, std::move(outcome)); }

void CurlTransfer::giveUp() {
  if (failure_) return end(HTTPOutcome(*std::exchange(failure_, std::nullopt)));
  const auto now = NetworkThread::shared().now();
  const bool isSilence = lastActivity_ + exchange_->exchangeRequest().timeoutInterval <= now;
  end(makeURLError(URLError::timedOut, exchange_->deadline() <= now ? "the request took too long"
                                       : isSilence                  ? "the server is silent"
                                                                    : "the header took too long"));
}

/// libcurl reports a request, or a line of a header, that is too long for it in the same way.
URLError CurlTransfer::faultOfMemory() {
  constexpr std::uint64_t kLeastForTooLong = 50'000;  // some fields are sent compressed
  if (isTooLong(exchange_->exchangeRequest())) {
    return makeURLError(URLError::badURL, "the request's header is too long");
  }
  if (!headIsComplete_ && connections_.received(connection_) >= kLeastForTooLong) {
    return makeURLError(URLError::dataLengthExceedsMaximum, "a header is too long");
  }
  return outOfMemory();
}

HTTPOutcome CurlTransfer::outcome(CURLcode code) {
  if (failure_) return *std::exchange(failure_, std::nullopt);
  if (code == CURLE_OUT_OF_MEMORY) return faultOfMemory();
  if (code != CURLE_OK) return urlError(handle_, code);
  long status = 0;
  curl_easy_getinfo(handle_, CURLINFO_RESPONSE_CODE, &status);
  if (status == 0) return URLError{URLError::badURL, "no HTTP response"};
  if (status < 100 || status > 999) return URLError{URLError::badServerResponse, "no status"};
  // libcurl takes an end within the header, or after an interim response, for the answer's.
  const bool interim = status < 200 && status != 101;
  if (!headIsComplete_ || interim) {
    return URLError{URLError::networkConnectionLost, "the connection ended within the header"};
  }
  return HTTPResult{
      {exchange_->exchangeRequest().url, static_cast<int>(status), std::move(headers_)},
      body_.take()};
}

void CurlTransfer::clear() {
  session_ = nullptr;
  host_ = nullptr;
  place_ = {};
  exchange_.reset();
  multiplexed_ = false;
  connection_ = {};
  isSent_ = false;
  headerBegan_ = NetworkTime::max();
  received_ = 0;
  sent_ = 0;
  headers_ = {};
  headerBytes_ = 0;
  codings_ = 0;
  headIsComplete_ = false;
  bodyHasBegun_ = false;
  body_ = {};
  failure_.reset();
}

bool CurlTransfer::failTooLong(const char* message) {
  failure_ = URLError{URLError::dataLengthExceedsMaximum, message};
  return false;
}

bool CurlTransfer::receiveHeader(std::string_view line) {
  noteActivity();
  received_ += line.size();
  headerBytes_ += line.size();  // interim responses count: there is no bound to their number
  if (headerBytes_ > maximumHeaderSize_) return failTooLong("the header is too long");
  if (bodyHasBegun_) return true;  // trailers
  if (line.starts_with("HTTP/")) {
    // A new response: the one before was an interim one.
    multiplexed_ = line.starts_with("HTTP/2");
    if (exchange_->measured() != nullptr) noteFirstByte(line);
    headIsComplete_ = false;
    if (headerBegan_ == NetworkTime::max()) headerBegan_ = lastActivity_;
    headers_ = {};
    if (handlesRememberFields()) set(CURLOPT_VERBOSE, 1L);
    return true;
  }
  const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
  while (!line.empty() && blank(line.back())) line.remove_suffix(1);
  if (line.empty()) {
    headIsComplete_ = true;
    headerBegan_ = NetworkTime::max();
    failure_ = faultOfBodyFields(headers_, codings_);
    return !failure_;
  }
  const auto colon = line.find(':');
  if (colon == std::string_view::npos) return true;
  auto value = line.substr(colon + 1);
  while (!value.empty() && blank(value.front())) value.remove_prefix(1);
  if (headers_.empty()) headers_.reserve(kUsualFields, kUsualFieldBytes);
  headers_.add(line.substr(0, colon), value);
  return true;
}

bool CurlTransfer::receiveBody(std::string_view bytes) {
  noteActivity();
  received_ += bytes.size();
  if (!bodyHasBegun_) {
    bodyHasBegun_ = true;
    curl_off_t announced = -1;
    curl_easy_getinfo(handle_, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &announced);
    if (announced > 0) {
      const auto size = static_cast<std::uint64_t>(announced);
      if (size > maximumBodySize_) return failTooLong("the body is too long");
      body_.expect(static_cast<std::size_t>(size));
    }
  }
  if (bytes.size() > maximumBodySize_ - body_.size()) return failTooLong("the body is too long");
  body_.append(bytes);
  return true;
}

template <class Receive>
std::size_t CurlTransfer::receive(std::string_view bytes, Receive&& receive) {
  Watchdog::shared().noteDelivered(bytes.size());
  try {
    return receive(bytes) ? bytes.size() : CURL_WRITEFUNC_ERROR;
  } catch (const std::bad_alloc&) {
    failure_ = outOfMemory();  // not through libcurl's frames
    return CURL_WRITEFUNC_ERROR;
  }
}

std::size_t CurlTransfer::onHeader(char* bytes, std::size_t size, std::size_t count, void* self) {
  auto* const transfer = static_cast<CurlTransfer*>(self);
  return transfer->receive({bytes, size * count}, [transfer](std::string_view line) {
    return transfer->receiveHeader(line);
  });
}

std::size_t CurlTransfer::onBody(char* bytes, std::size_t size, std::size_t count, void* self) {
  auto* const transfer = static_cast<CurlTransfer*>(self);
  return transfer->receive({bytes, size * count}, [transfer](std::string_view body) {
    return transfer->receiveBody(body);
  });
}

/// Sees the line after the status line before libcurl does, and nothing else: tracing everything
/// would cost more than the transfer. Pausing is what keeps libcurl from that line.
int CurlTransfer::onTrace(CURL* handle, curl_infotype kind, char* bytes, std::size_t size,
                          void* self) {
  if (kind != CURLINFO_HEADER_IN) return 0;
  curl_easy_setopt(handle, CURLOPT_VERBOSE, 0L);
  if (!isFolded({bytes, size})) return 0;
  curl_easy_pause(handle, CURLPAUSE_RECV);
  auto* const transfer = static_cast<CurlTransfer*>(self);
  transfer->failure_ = URLError{URLError::badServerResponse, "a folded line"};
  transfer->session_->transferDidFail();
  return 0;
}

}  // namespace orvo::detail
