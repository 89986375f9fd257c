#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>
#include <tests/support/Certificate.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <stdexcept>

namespace orvo::test {
namespace {

/// A certificate without a signature.
Certificate draft(const char* name, const CertificateOptions& options) {
  static std::atomic<long> serial{1};
  const Certificate draft{{X509_new(), X509_free}, {EVP_EC_gen("P-256"), EVP_PKEY_free}};
  auto* const certificate = draft.certificate.get();
  X509_set_version(certificate, X509_VERSION_3);
  ASN1_INTEGER_set(X509_get_serialNumber(certificate), serial++);
  const auto seconds = [](std::chrono::hours span) {
    return static_cast<long>(std::chrono::seconds(span).count());
  };
  X509_gmtime_adj(X509_getm_notBefore(certificate), seconds(options.validFrom));
  X509_gmtime_adj(X509_getm_notAfter(certificate), seconds(options.validTo));
  X509_set_pubkey(certificate, draft.key.get());
  X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate), "CN", MBSTRING_ASC,
                             reinterpret_cast<const unsigned char*>(name), -1, -1, 0);
  return draft;
}

void extend(X509* certificate, int kind, const std::string& value) {
  X509_EXTENSION* const extension = X509V3_EXT_conf_nid(nullptr, nullptr, kind, value.c_str());
  X509_add_ext(certificate, extension, -1);
  X509_EXTENSION_free(extension);
}

void sign(const Certificate& certificate, const Certificate& issuer) {
  X509_set_issuer_name(certificate.certificate.get(),
                       X509_get_subject_name(issuer.certificate.get()));
  X509_sign(certificate.certificate.get(), issuer.key.get(), EVP_sha256());
}

}  // namespace

CertificateAuthority::CertificateAuthority() {
  static std::atomic<int> number{1};  // two of one name would be taken for each other
  own_ = draft(("Test authority " + std::to_string(number++)).c_str(), {});
  extend(own_.certificate.get(), NID_basic_constraints, "critical,CA:TRUE");
  extend(own_.certificate.get(), NID_key_usage, "critical,keyCertSign,cRLSign");
  sign(own_, own_);
  file_ = (std::filesystem::temp_directory_path() / "orvo-authority-XXXXXX").string();
  const int descriptor = mkstemp(file_.data());
  if (descriptor < 0) throw std::runtime_error("no temporary file to be had");
  const std::unique_ptr<FILE, int (*)(FILE*)> stream(fdopen(descriptor, "w"), fclose);
  PEM_write_X509(stream.get(), own_.certificate.get());
}

CertificateAuthority::~CertificateAuthority() { std::remove(file_.c_str()); }

Certificate CertificateAuthority::issue(const CertificateOptions& options) const {
  const auto issued = draft(options.address.c_str(), options);
  extend(issued.certificate.get(), NID_subject_alt_name, "IP:" + options.address);
  sign(issued, options.selfSigned ? issued : own_);
  return issued;
}

}  // namespace orvo::test
