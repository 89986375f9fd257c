#include <httplib.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>
#include <tests/support/HTTPServer.h>
#include <tests/support/Test.h>
#include <unistd.h>

#include <filesystem>

namespace orvo::test {
namespace {

/// A certificate without a signature.
Certificate draft(const char* name, const CertificateOptions& options) {
  static std::atomic<long> serial{1};
  const Certificate draft{{X509_new(), X509_free},
                          {options.isRSA ? EVP_RSA_gen(2048) : EVP_EC_gen("P-256"), EVP_PKEY_free}};
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

struct HTTPServer::Running {
  Running(std::unique_ptr<httplib::Server> aServer, Handler aHandler, std::string aScheme)
      : server(std::move(aServer)), handler(std::move(aHandler)), scheme(std::move(aScheme)) {
    server->new_task_queue = [] { return new httplib::ThreadPool(32); };
    server->set_tcp_nodelay(true);
    server->set_keep_alive_max_count(1'000'000);
    const auto handle = [this](const httplib::Request& received, httplib::Response& response) {
      answer(received, response);
    };
    server->Get(".*", handle).Post(".*", handle).Put(".*", handle).Delete(".*", handle);
    int listener = -1;
    server->set_socket_options([&listener](int socket) { listener = socket; });
    port = server->bind_to_any_port("127.0.0.1");
    if (port <= 0) throw std::runtime_error("the server has no port");
    listen(listener, 128);  // the five that the library asks for cost a burst a second
    thread = std::thread([this] { server->listen_after_bind(); });
    while (!server->is_running()) std::this_thread::yield();  // or it could not be stopped
  }
  ~Running() {
    server->stop();
    thread.join();
  }

  void answer(const httplib::Request& received, httplib::Response& response) {
    ServedRequest request{
        received.method, received.target, {}, received.body, received.remote_port};
    for (const auto& [name, value] : received.headers) request.headers.add(name, value);
    {
      const std::lock_guard guard(mutex);
      requests.push_back(request);
    }
    const auto answer = handler(request);
    response.status = answer.status;
    for (const auto field : answer.headers) {
      response.headers.emplace(field.name, field.value);
    }
    response.body = answer.body;
  }

  const std::unique_ptr<httplib::Server> server;
  const Handler handler;
  const std::string scheme;
  int port = 0;
  mutable std::mutex mutex;
  std::vector<ServedRequest> requests;  // guarded by mutex
  std::thread thread;
};

HTTPServer::HTTPServer(Handler handler)
    : running_(std::make_unique<Running>(std::make_unique<httplib::Server>(), std::move(handler),
                                         "http")) {}

HTTPServer::HTTPServer(Handler handler, const Certificate& certificate)
    : running_(std::make_unique<Running>(std::make_unique<httplib::SSLServer>(
                                             certificate.certificate.get(), certificate.key.get()),
                                         std::move(handler), "https")) {}

HTTPServer::~HTTPServer() = default;

URL HTTPServer::url(std::string_view target) const {
  return *URL::parse(running_->scheme + "://127.0.0.1:" + std::to_string(running_->port) +
                     std::string(target));
}

std::vector<ServedRequest> HTTPServer::requests() const {
  const std::lock_guard guard(running_->mutex);
  return running_->requests;
}

std::string HTTPServer::targets() const {
  std::string targets;
  for (const auto& request : requests()) targets += (targets.empty() ? "" : " ") + request.target;
  return targets;
}

}  // namespace orvo::test
