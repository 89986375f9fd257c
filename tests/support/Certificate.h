#pragma once

#include <chrono>
#include <memory>
#include <string>

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

}  // namespace orvo::test
