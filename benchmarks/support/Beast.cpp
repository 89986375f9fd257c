#include <benchmarks/support/Beast.h>

#if ORVO_HAS_BEAST
#include <OrvoAPI/HTTP/URL.h>

#include <boost/asio/connect.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ssl.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/ssl.hpp>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace orvo::benchmarks {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using Plain = beast::tcp_stream;
using Secure = beast::ssl_stream<beast::tcp_stream>;

/// What is common to both kinds of connections.
class Beast::Client {
 public:
  virtual ~Client() = default;
  virtual void fetch(std::size_t count) = 0;
};

namespace {

constexpr std::chrono::seconds kLimit{30};

void check(beast::error_code error) {
  if (!error) return;
  std::fprintf(stderr, "Boost.Beast: %s\n", error.message().c_str());
  std::exit(2);
}

template <class Stream>
class Connection {
 public:
  template <class... Arguments>
  Connection(const Work& work, const asio::ip::tcp::endpoint& host, Arguments&... arguments)
      : work_(work), path_(URL::parse(work.url)->path()), stream_(arguments...) {
    buffer_.reserve(std::size_t{64} << 10);  // or a large body would come in small pieces
    beast::get_lowest_layer(stream_).connect(host);
    if constexpr (std::is_same_v<Stream, Secure>) {
      stream_.handshake(asio::ssl::stream_base::client);
    }
    beast::get_lowest_layer(stream_).socket().set_option(asio::ip::tcp::no_delay(true));
  }

  /// Makes one request after another while there are any left.
  void run(std::size_t& left) {
    if (left == 0) return;
    --left;
    request_ = {http::verb::get, path_, 11};
    request_.set(http::field::host, "127.0.0.1");
    request_.set(http::field::user_agent, "beast");
    request_.set(kFieldName, kFieldValue);
    beast::get_lowest_layer(stream_).expires_after(kLimit);
    http::async_write(stream_, request_, [this, &left](beast::error_code error, std::size_t) {
      check(error);
      read(left);
    });
  }

 private:
  void read(std::size_t& left) {
    response_ = {};
    http::async_read(stream_, buffer_, response_, [this, &left](auto error, std::size_t) {
      check(error);
      const auto response = std::move(response_);  // the caller's from here
      expectSize(response.result_int() == 200 ? response.body().size() : 0, work_);
      run(left);
    });
  }

  const Work work_;
  const std::string path_;
  Stream stream_;
  beast::flat_buffer buffer_;
  http::request<http::empty_body> request_;
  http::response<http::string_body> response_;
};

template <class Stream>
class ClientOf : public Beast::Client {
 public:
  explicit ClientOf(const Work& work) {
    const URL url = *URL::parse(work.url);
    const asio::ip::tcp::endpoint host(asio::ip::make_address(std::string(url.host())),
                                       static_cast<unsigned short>(*url.port()));
    if constexpr (std::is_same_v<Stream, Secure>) {
      tls_.load_verify_file(work.authority);
      tls_.set_verify_mode(asio::ssl::verify_peer);
    }
    for (std::size_t i = 0; i < kConnections; ++i) {
      if constexpr (std::is_same_v<Stream, Secure>) {
        connections_.push_back(std::make_unique<Connection<Stream>>(work, host, context_, tls_));
      } else {
        connections_.push_back(std::make_unique<Connection<Stream>>(work, host, context_));
      }
    }
  }
  void fetch(std::size_t count) override {
    for (const auto& connection : connections_) connection->run(count);
    context_.restart();
    context_.run();
  }

 private:
  asio::io_context context_{1};
  asio::ssl::context tls_{asio::ssl::context::tls_client};
  std::vector<std::unique_ptr<Connection<Stream>>> connections_;
};

}  // namespace

Beast::Beast(const Work& work) {
  if (work.url.starts_with("https:")) {
    client_ = std::make_unique<ClientOf<Secure>>(work);
  } else {
    client_ = std::make_unique<ClientOf<Plain>>(work);
  }
}
Beast::~Beast() = default;

void Beast::fetch(std::size_t count) { client_->fetch(count); }

}  // namespace orvo::benchmarks
#endif
