#pragma once

#include <fcntl.h>
#include <signal.h>  // kill
#include <support/Loopback.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>

namespace orvo::test {

/// An nginx with one worker on free ports of this machine, with a folder and a certificate of its
/// own, and what it serves; stopped and cleared away with the object. Used by one thread, with
/// which nginx ends too.
class Nginx {
 public:
  /// `locations` is the body of its servers in nginx's syntax, `tls` what those have besides that
  /// speak TLS; what lies in `folder()` is served from there by `root`. Throws
  /// `std::runtime_error` when nginx or openssl is missing.
  explicit Nginx(const std::string& locations,
                 const std::string& tls = "ssl_session_cache shared:s:1m;") {
    std::string pattern = std::filesystem::temp_directory_path() / "orvo-nginx-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no folder for nginx");
    folder_ = pattern;
    makeCertificate();
    const auto listen = [](int number) { return "listen 127.0.0.1:" + std::to_string(number); };
    const auto files = " ssl_certificate " + certificateFile() + "; ssl_certificate_key " +
                       folder_ + "/key.pem;" + tls;
    std::ofstream(folder_ + "/nginx.conf")
        << (geteuid() == 0 ? "user root;" : "") << "daemon off; worker_processes 1;"
        << "error_log " << folder_ << "/error.log crit; pid " << folder_ << "/pid;"
        << "events { worker_connections 2048; }"
        << "http { access_log off; sendfile on; keepalive_requests 1000000;" << temporaryFolders()
        << "server { " << listen(port) << ";" << locations << "}"
        << "server { " << listen(tlsPort) << " ssl;" << files << locations << "}"
        << "server { " << listen(http2Port) << " ssl http2;" << files << locations << "}}";
    start();
  }
  Nginx(const Nginx&) = delete;
  Nginx& operator=(const Nginx&) = delete;
  ~Nginx() {
    stop(SIGTERM);
    std::filesystem::remove_all(folder_);
  }

  const int port = freePort();
  const int tlsPort = freePort();
  const int http2Port = freePort();
  [[nodiscard]] const std::string& folder() const { return folder_; }
  /// The authority to trust; it vouches for 127.0.0.1 and for `moving.test`.
  [[nodiscard]] std::string certificateFile() const { return folder_ + "/certificate.pem"; }
  [[nodiscard]] pid_t process() const { return process_; }

  /// Lets a new worker take over; the old one finishes what it has begun.
  void reload() { kill(process_, SIGHUP); }
  /// With SIGTERM every connection is closed, with SIGKILL they break.
  void stop(int signal) {
    if (process_ <= 0) return;
    kill(signal == SIGKILL ? -process_ : process_, signal);
    waitpid(process_, nullptr, 0);
    process_ = -1;
  }
  /// Returns when it answers.
  void start() {
    const auto configuration = folder_ + "/nginx.conf";
    process_ = fork();
    if (process_ == 0) {
      setpgid(0, 0);
      prctl(PR_SET_PDEATHSIG, SIGTERM);
      const int nowhere = open("/dev/null", O_RDWR);
      dup2(nowhere, STDOUT_FILENO);
      dup2(nowhere, STDERR_FILENO);
      execlp("nginx", "nginx", "-p", folder_.c_str(), "-c", configuration.c_str(), nullptr);
      _exit(127);
    }
    for (int tries = 0; !answers(); ++tries) {
      if (tries > 1000) throw std::runtime_error("nginx does not start");
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }

 private:
  static int freePort() {
    const auto [socket, port] = listenOnLoopback();
    close(socket);
    return port;
  }
  static std::string temporaryFolders() {
    std::string lines;
    for (const auto* const kind : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"}) {
      lines.append(kind).append("_temp_path temporary;");
    }
    return lines;
  }
  void makeCertificate() const {
    const auto command =
        "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes"
        " -days 2 -subj /CN=127.0.0.1 -addext subjectAltName=IP:127.0.0.1,DNS:moving.test "
        "-keyout " +
        folder_ + "/key.pem -out " + certificateFile() + " 2>/dev/null";
    if (std::system(command.c_str()) != 0) throw std::runtime_error("no certificate");
  }
  [[nodiscard]] bool answers() const {
    const int socket = connectToLoopback(http2Port);
    if (socket >= 0) close(socket);
    return socket >= 0;
  }

  std::string folder_;
  pid_t process_ = -1;
};

}  // namespace orvo::test
