#include <demo/DemoService.h>
#include <demo/Router.h>
#include <httplib.h>
#include <sys/socket.h>
#include <zlib.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

namespace orvo::demo {

namespace {

constexpr const char* kHost = "127.0.0.1";

/// What a client sends may reach a terminal.
std::string printable(std::string text) {
  for (char& c : text) {
    if (static_cast<unsigned char>(c) < 0x20 || static_cast<unsigned char>(c) >= 0x7F) c = '?';
  }
  return text;
}

/// The text in gzip's form, or nothing when it cannot be made.
std::string zipped(std::string text) {
  constexpr int kGzip = 16 + MAX_WBITS;
  z_stream stream{};
  if (deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, kGzip, MAX_MEM_LEVEL, Z_DEFAULT_STRATEGY) !=
      Z_OK) {
    return {};
  }
  std::string out(deflateBound(&stream, text.size()), '\0');
  stream.next_in = reinterpret_cast<Bytef*>(text.data());
  stream.avail_in = static_cast<uInt>(text.size());
  stream.next_out = reinterpret_cast<Bytef*>(out.data());
  stream.avail_out = static_cast<uInt>(out.size());
  const bool isWhole = deflate(&stream, Z_FINISH) == Z_STREAM_END;
  out.resize(isWhole ? stream.total_out : 0);
  deflateEnd(&stream);
  return out;
}

/// httplib would compress JSON with brotli at its highest quality, which takes longer than all else
/// that is done for a request; it leaves a type with a parameter alone.
void setDocument(const httplib::Request& request, const Answer& answer,
                 httplib::Response& response) {
  const std::string type = answer.contentType + "; charset=utf-8";
  const bool takesGzip =
      request.get_header_value("Accept-Encoding").find("gzip") != std::string::npos;
  if (const std::string body = takesGzip ? zipped(answer.body) : ""; !body.empty()) {
    response.set_header("Content-Encoding", "gzip");
    response.set_content(body, type);
    return;
  }
  response.set_content(answer.body, type);
}

}  // namespace

struct DemoService::Server {
  explicit Server(DemoServiceOptions given) : options(std::move(given)) {}

  [[nodiscard]] Addresses addresses() const {
    return {"http://" + std::string(kHost) + ":" + std::to_string(port) + "/"};
  }

  void configure();
  void serve(const httplib::Request& received, httplib::Response& response);
  void log(const httplib::Request& request, const Answer& answer);

  DemoServiceOptions options;
  int port = 0;
  std::optional<Router> router;
  std::mutex logMutex;
  httplib::Server http;
  std::atomic<bool> ended = false;
  std::thread thread;
};

void DemoService::Server::configure() {
  http.set_tcp_nodelay(true);
  // httplib's own choice would let two services share a port, each getting half the requests.
  http.set_socket_options([](int socket) {
    const int yes = 1;
    setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  });
  // One request per connection, and little patience: stopping waits for open connections.
  http.set_keep_alive_max_count(1);
  http.set_keep_alive_timeout(1);
  http.set_read_timeout(1);
  http.set_pre_routing_handler([this](const auto& request, auto& response) {
    serve(request, response);
    return httplib::Server::HandlerResponse::Handled;
  });
}

void DemoService::Server::serve(const httplib::Request& received, httplib::Response& response) {
  Request request{.method = received.method,
                  .path = received.path,
                  .query = {received.params.begin(), received.params.end()},
                  .authorization = received.get_header_value("Authorization")};
  const Answer answer = router->answer(request);
  response.status = answer.status;
  if (answer.contentType == "application/json") {
    setDocument(received, answer, response);
  } else if (!answer.contentType.empty()) {
    response.set_content(answer.body, answer.contentType);
  }
  if (options.requestLog) log(received, answer);
}

void DemoService::Server::log(const httplib::Request& request, const Answer& answer) {
  const std::size_t query = std::min(request.target.find('?'), request.target.size());
  std::string line = withMilliseconds(present()).substr(11, 8);
  line += " " + std::to_string(answer.status) + " " + request.method + " " +
          Router::loggablePath(request.path) + request.target.substr(query);
  if (!answer.note.empty()) line += " (" + answer.note + ")";
  const std::lock_guard lock(logMutex);
  options.requestLog(printable(std::move(line)));
}

DemoService::DemoService(DemoServiceOptions options)
    : server_(std::make_unique<Server>(std::move(options))) {}

DemoService::~DemoService() { stop(); }

bool DemoService::start() {
  Server& server = *server_;
  server.configure();
  const int wanted = server.options.port;
  if (wanted == 0) {
    server.port = server.http.bind_to_any_port(kHost);
  } else if (server.http.bind_to_port(kHost, wanted)) {
    server.port = wanted;
  }
  if (server.port <= 0) {
    server.port = 0;
    return false;
  }
  server.router.emplace(server.addresses(), server.options.tokenLifetime,
                        server.options.programLength);
  server.thread = std::thread([&server] {
    server.http.listen_after_bind();
    server.ended = true;
  });
  // The socket has listened since it was bound; this only makes sure that a stop finds a server to
  // stop.
  while (!server.http.is_running() && !server.ended) std::this_thread::yield();
  return true;
}

void DemoService::stop() {
  if (!server_->thread.joinable()) return;
  server_->http.stop();
  server_->thread.join();
}

int DemoService::port() const { return server_->port; }

std::string DemoService::baseURL() const { return server_->addresses().api(); }

std::string DemoService::resourceURL() const { return server_->addresses().resources(); }

std::string DemoService::lineupURL(const std::string& name) const {
  return server_->addresses().lineup(name);
}

}  // namespace orvo::demo
