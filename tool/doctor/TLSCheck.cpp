#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>
#include <tool/Arguments.h>
#include <tool/TrustedFile.h>
#include <tool/Wording.h>
#include <tool/doctor/Network.h>
#include <tool/doctor/TLSCheck.h>

#include <arpa/inet.h>
#include <array>
#include <ctime>
#include <memory>

namespace orvo::tool {

namespace {

using Context = std::unique_ptr<SSL_CTX, void (*)(SSL_CTX*)>;
using Session = std::unique_ptr<SSL, void (*)(SSL*)>;

Date dateOf(const ASN1_TIME* time) {
  std::tm fields{};
  if (ASN1_TIME_to_tm(time, &fields) != 1) return Date(0);
  return Date(std::int64_t{1000} * timegm(&fields));
}

std::string textOf(const X509_NAME* name, int field) {
  std::array<char, 256> text{};
  const int size = X509_NAME_get_text_by_NID(name, field, text.data(), text.size());
  return size > 0 ? std::string(text.data()) : "";
}

std::string alternativeName(const GENERAL_NAME& name) {
  int kind = 0;
  const auto* const value = static_cast<const ASN1_STRING*>(GENERAL_NAME_get0_value(&name, &kind));
  if (kind != GEN_DNS && kind != GEN_IPADD) return "";
  const auto size = static_cast<std::size_t>(ASN1_STRING_length(value));
  const auto* const bytes = ASN1_STRING_get0_data(value);
  if (kind == GEN_DNS) return {reinterpret_cast<const char*>(bytes), size};
  std::array<char, INET6_ADDRSTRLEN> text{};
  const int family = size == sizeof(in_addr) ? AF_INET : AF_INET6;
  if (family == AF_INET6 && size != sizeof(in6_addr)) return "";
  return inet_ntop(family, bytes, text.data(), text.size()) != nullptr ? text.data() : "";
}

std::vector<std::string> namesOf(const X509& certificate) {
  constexpr int kMost = 8;
  constexpr std::size_t kLongest = 100;
  std::vector<std::string> names;
  auto* const list = static_cast<GENERAL_NAMES*>(
      X509_get_ext_d2i(&certificate, NID_subject_alt_name, nullptr, nullptr));
  for (int i = 0; list != nullptr && i < sk_GENERAL_NAME_num(list) && i < kMost; ++i) {
    names.push_back(alternativeName(*sk_GENERAL_NAME_value(list, i)).substr(0, kLongest));
  }
  GENERAL_NAMES_free(list);
  if (names.empty()) names.push_back(textOf(X509_get_subject_name(&certificate), NID_commonName));
  return names;
}

CertificateFacts factsOf(const X509& certificate) {
  const X509_NAME* const issuer = X509_get_issuer_name(&certificate);
  return {.issuer = joined({textOf(issuer, NID_commonName), textOf(issuer, NID_organizationName)}),
          .names = namesOf(certificate),
          .validFrom = dateOf(X509_get0_notBefore(&certificate)),
          .validTo = dateOf(X509_get0_notAfter(&certificate))};
}

/// Why no handshake was done, once time has not run out.
Handshake refused() {
  const unsigned long error = ERR_peek_last_error();
  const int reason = ERR_GET_LIB(error) == ERR_LIB_SSL ? ERR_GET_REASON(error) : 0;
  if (reason == SSL_R_WRONG_VERSION_NUMBER || reason == SSL_R_HTTP_REQUEST) {
    return {.error = "what answers does not speak TLS",
            .advice = "check the port, and whether the base URL should begin with http"};
  }
  if (reason == SSL_R_UNSUPPORTED_PROTOCOL || reason == SSL_R_TLSV1_ALERT_PROTOCOL_VERSION) {
    return {.error = "the server speaks no version of TLS from 1.2 on",
            .advice = "have the server, or the proxy in front of it, updated"};
  }
  if (reason == 0 || reason == SSL_R_UNEXPECTED_EOF_WHILE_READING) {
    return {.error = "the connection is closed during the handshake",
            .advice = "a firewall may do so, or the server knows no host of this name"};
  }
  const char* const text = ERR_reason_error_string(error);
  return {.error = std::string("the handshake fails: ") + (text != nullptr ? text : "unknown"),
          .advice = "look into the server's log, or into that of a proxy in front of it"};
}

/// Whom to trust, as the library does; says why not when that cannot be read.
std::optional<Handshake> loadAuthorities(SSL_CTX* context) {
  const auto file = trustedFile();
  if (!file) {
    if (SSL_CTX_set_default_verify_paths(context) == 1) return std::nullopt;
    return Handshake{.error = "the certificates of the authorities to trust cannot be read",
                     .advice = "install ca-certificates"};
  }
  auto fault = faultOfTrustedFile(*file);
  if (fault.empty()) {
    if (SSL_CTX_load_verify_file(context, file->c_str()) == 1) return std::nullopt;
    fault = "SSL_CERT_FILE names " + *file + ", in which no certificates can be read";
  }
  return Handshake{.error = fault,
                   .advice = "name a file of certificates (PEM) there, or unset the variable"};
}

void expect(SSL* session, const std::string& host) {
  if (isAddress(host)) {
    X509_VERIFY_PARAM_set1_ip_asc(SSL_get0_param(session), host.c_str());
  } else {
    SSL_set_tlsext_host_name(session, host.c_str());
    SSL_set1_host(session, host.c_str());
  }
}

/// What is wrong with a certificate that cannot be trusted.
Finding distrusted(const Handshake& handshake, const std::string& host, Date now) {
  const CertificateFacts& certificate = *handshake.certificate;
  const std::string clock = clockAdvice(now);
  switch (handshake.verdict) {
    case X509_V_ERR_CERT_NOT_YET_VALID:
      return bad("TLS", "the certificate is not good before " + dateText(certificate.validFrom),
                 clock.empty() ? "the device's clock says " + dateText(now) +
                                     ": set it if that is wrong; else the certificate is"
                               : clock);
    case X509_V_ERR_CERT_HAS_EXPIRED:
      return bad("TLS", "the certificate was good until " + dateText(certificate.validTo),
                 "the device's clock says " + dateText(now) +
                     ": set it if that is wrong; else the service needs a new certificate");
    case X509_V_ERR_HOSTNAME_MISMATCH:
    case X509_V_ERR_IP_ADDRESS_MISMATCH:
      return bad("TLS", "the certificate is for another name: " + joined(certificate.names),
                 "something else answers for " + host + ", or the base URL should name that host");
    case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
      return bad("TLS", "the certificate is signed by nobody but itself",
                 "if that is meant, name its file in SSL_CERT_FILE; else somebody is in between");
    case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
    case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
      return bad("TLS", "nobody here knows who issued the certificate: " + certificate.issuer,
                 "a proxy that looks into connections, or an authority of one's own: name its "
                 "file in SSL_CERT_FILE if you trust it; else install ca-certificates");
    default:
      return bad("TLS",
                 std::string("the certificate is refused: ") +
                     X509_verify_cert_error_string(handshake.verdict),
                 "have the service's certificate looked at");
  }
}

}  // namespace

Handshake shakeHands(int socket, const std::string& host, std::chrono::milliseconds limit) {
  const Context context(SSL_CTX_new(TLS_client_method()), SSL_CTX_free);
  SSL_CTX_set_min_proto_version(context.get(), TLS1_2_VERSION);
  if (auto unread = loadAuthorities(context.get())) return *std::move(unread);
  const Session session(SSL_new(context.get()), SSL_free);
  expect(session.get(), host);
  SSL_set_fd(session.get(), socket);
  const Deadline deadline(limit);
  ERR_clear_error();
  for (int done; (done = SSL_connect(session.get())) != 1;) {
    const int error = SSL_get_error(session.get(), done);
    if (error != SSL_ERROR_WANT_READ && error != SSL_ERROR_WANT_WRITE) return refused();
    if (!deadline.wait(socket, error == SSL_ERROR_WANT_READ ? POLLIN : POLLOUT)) {
      return {.error = "the server does not answer the handshake",
              .advice = "it is stuck, or something on the way swallows what it says"};
    }
  }
  Handshake handshake{.version = SSL_get_version(session.get()),
                      .verdict = SSL_get_verify_result(session.get())};
  const std::unique_ptr<X509, void (*)(X509*)> certificate(SSL_get1_peer_certificate(session.get()),
                                                           X509_free);
  if (certificate) handshake.certificate = factsOf(*certificate);
  return handshake;
}

std::string clockAdvice(Date now) {
  const auto made = date(ORVO_RELEASE_DATE "T00:00Z");
  if (!made || now >= *made - std::chrono::hours(24)) return "";
  const std::string text = dayText(now);
  return "the device's clock says " + text.substr(text.rfind(' ') + 1) + ": set it";
}

Finding tlsFinding(const Handshake& handshake, const std::string& host, Date now) {
  if (!handshake.certificate) return bad("TLS", handshake.error, handshake.advice);
  const CertificateFacts& certificate = *handshake.certificate;
  Finding finding{.name = "TLS"};
  if (handshake.verdict != X509_V_OK) {
    finding = distrusted(handshake, host, now);
  } else {
    const auto left = certificate.validTo - now;
    finding.detail = handshake.version + ", issued by " + certificate.issuer + ", good until " +
                     dateText(certificate.validTo) + " (for " + spanOfDaysText(left) + ")";
    constexpr std::chrono::hours kSoon{14 * 24};
    if (left < kSoon) finding.advice = "the certificate ends soon: have it renewed";
  }
  finding.facts = Json::object(
      {{"version", handshake.version},
       {"issuer", certificate.issuer},
       {"names", Json::list(certificate.names, [](const auto& name) { return Json(name); })},
       {"validFrom", toJson(certificate.validFrom)},
       {"validTo", toJson(certificate.validTo)}});
  return finding;
}

}  // namespace orvo::tool
