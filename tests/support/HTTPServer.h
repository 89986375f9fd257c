#pragma once

#include <OrvoAPI/HTTP/HTTPHeaders.h>
#include <OrvoAPI/HTTP/URL.h>
#include <tests/support/Test.h>

struct x509_st;
struct evp_pkey_st;

namespace orvo::test {

/// A server's certificate with its key.
struct Certificate {
  std::shared_ptr<x509_st> certificate;
  std::shared_ptr<evp_pkey_st> key;
};

struct CertificateOptions {
  std::string address = "127.0.0.1";
  std::chrono::hours validFrom{-1};  // from now on
  std::chrono::hours validTo{1};
  bool selfSigned = false;
  bool isRSA = false;
};

/// An authority that only this test knows, with its own certificate in a file for clients to trust.
class CertificateAuthority {
 public:
  CertificateAuthority();
  ~CertificateAuthority();
  CertificateAuthority(const CertificateAuthority&) = delete;
  CertificateAuthority& operator=(const CertificateAuthority&) = delete;

  [[nodiscard]] const std::string& file() const { return file_; }
  [[nodiscard]] Certificate issue(const CertificateOptions& options = {}) const;

 private:
  Certificate own_;
  std::string file_;
};

struct ServedRequest {
  std::string method;
  std::string target;  // path and query as they came
  HTTPHeaders headers;
  std::string body;
  int clientPort = 0;  // tells connections apart

  /// The header's value, or "(none)".
  [[nodiscard]] std::string header(std::string_view name) const {
    return std::string(headers.value(name).value_or("(none)"));
  }
};

struct ServedAnswer {
  int status = 200;
  std::string body = {};
  HTTPHeaders headers = {};
};

/// A real HTTP server on a free loopback port, over TLS when it is given a certificate. The handler
/// is called on many threads at once. Its destructor waits for the handlers.
class HTTPServer {
 public:
  using Handler = std::function<ServedAnswer(const ServedRequest&)>;

  explicit HTTPServer(Handler handler);
  HTTPServer(Handler handler, const Certificate& certificate);
  ~HTTPServer();
  HTTPServer(const HTTPServer&) = delete;
  HTTPServer& operator=(const HTTPServer&) = delete;

  [[nodiscard]] URL url(std::string_view target = "/") const;
  /// All requests so far, in the order of their arrival.
  [[nodiscard]] std::vector<ServedRequest> requests() const;
  /// Their targets, joined by spaces.
  [[nodiscard]] std::string targets() const;

 private:
  struct Running;
  const std::unique_ptr<Running> running_;
};

}  // namespace orvo::test
