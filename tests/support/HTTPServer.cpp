#include <httplib.h>
#include <tests/support/HTTPServer.h>

#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>

namespace orvo::test {

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
