#include <OrvoAPI/HTTP/CurlErrorsInternal.h>
#include <OrvoAPI/HTTP/HTTPExchangeInternal.h>

#include <cerrno>
#include <new>

namespace orvo::detail {
namespace {

long number(CURL* transfer, CURLINFO info) {
  long value = 0;
  curl_easy_getinfo(transfer, info, &value);
  return value;
}

int couldNotConnect(CURL* transfer) {
  const auto error = number(transfer, CURLINFO_OS_ERRNO);
  const bool offline = error == ENETUNREACH || error == ENETDOWN;
  return offline ? URLError::notConnectedToInternet : URLError::cannotConnectToHost;
}

/// The TLS library's verify results, whose numbers its headers fix for good.
int certificateFault(CURL* transfer) {
  switch (number(transfer, CURLINFO_SSL_VERIFYRESULT)) {
    case 9:  // not yet valid
      return URLError::serverCertificateNotYetValid;
    case 10:  // expired
      return URLError::serverCertificateHasBadDate;
    case 2:   // no issuer
    case 19:  // a self-signed one at the end of the chain
    case 20:  // no issuer found here
    case 21:  // the first one could not be verified
      return URLError::serverCertificateHasUnknownRoot;
    default:  // self-signed, or in another name
      return URLError::serverCertificateUntrusted;
  }
}

int errorCode(CURL* transfer, CURLcode code) {
  switch (code) {
    case CURLE_URL_MALFORMAT:
    case CURLE_BAD_FUNCTION_ARGUMENT:
      return URLError::badURL;
    case CURLE_UNSUPPORTED_PROTOCOL:
      // Once the request is sent, it is the answer that is in no protocol that we know.
      return number(transfer, CURLINFO_REQUEST_SIZE) > 0 ? URLError::badServerResponse
                                                         : URLError::unsupportedURL;
    case CURLE_NOT_BUILT_IN:
      return URLError::unsupportedURL;
    case CURLE_WEIRD_SERVER_REPLY:
      return URLError::badServerResponse;
    case CURLE_COULDNT_RESOLVE_PROXY:
    case CURLE_COULDNT_RESOLVE_HOST:
      return URLError::cannotFindHost;
    case CURLE_COULDNT_CONNECT:
      return couldNotConnect(transfer);
    case CURLE_INTERFACE_FAILED:
    case CURLE_PROXY:
      return URLError::cannotConnectToHost;
    case CURLE_OPERATION_TIMEDOUT:
      return URLError::timedOut;
    case CURLE_TOO_MANY_REDIRECTS:
      return URLError::httpTooManyRedirects;
    case CURLE_HTTP2:
    case CURLE_PARTIAL_FILE:
    case CURLE_GOT_NOTHING:
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
    case CURLE_HTTP2_STREAM:
    case CURLE_HTTP3:
    case CURLE_QUIC_CONNECT_ERROR:
      return URLError::networkConnectionLost;
    case CURLE_BAD_CONTENT_ENCODING:
      return URLError::cannotDecodeRawData;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_ENGINE_NOTFOUND:
    case CURLE_SSL_ENGINE_SETFAILED:
    case CURLE_SSL_CIPHER:
    case CURLE_USE_SSL_FAILED:
    case CURLE_SSL_ENGINE_INITFAILED:
    case CURLE_SSL_SHUTDOWN_FAILED:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_INVALIDCERTSTATUS:
      return URLError::secureConnectionFailed;
    case CURLE_PEER_FAILED_VERIFICATION:
      return certificateFault(transfer);
    case CURLE_SSL_CERTPROBLEM:
      return URLError::clientCertificateRejected;
    case CURLE_SSL_CLIENTCERT:
      return URLError::clientCertificateRequired;
    case CURLE_ABORTED_BY_CALLBACK:
      return URLError::cancelled;
    default:
      return URLError::unknown;
  }
}

}  // namespace

URLError urlError(CURL* transfer, CURLcode code) {
  // The fixed text of the code: the detailed one may repeat what the URL said.
  return makeURLError(errorCode(transfer, code), curl_easy_strerror(code));
}

URLError makeURLError(int code, const char* message) noexcept {
  try {
    return {code, message};
  } catch (const std::bad_alloc&) {
    return {code, {}};
  }
}

/// Short enough for a string without memory of its own.
URLError outOfMemory() noexcept { return {URLError::unknown, "out of memory"}; }

}  // namespace orvo::detail
