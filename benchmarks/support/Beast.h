#pragma once

#include <benchmarks/support/FileServer.h>

#include <cstddef>
#include <memory>

#if __has_include(<boost/beast/core.hpp>)
#define ORVO_HAS_BEAST 1
#else
#define ORVO_HAS_BEAST 0
#endif

namespace orvo::benchmarks {

/// The same requests by Boost.Beast on asio, over HTTP/1.1, as its examples make them: one thread,
/// connections that are kept, a limit of time for each request. It decodes nothing, keeps no
/// cookies, uses no proxy and follows no redirect.
class Beast {
 public:
  explicit Beast(const Work& work);
  ~Beast();
  Beast(const Beast&) = delete;
  Beast& operator=(const Beast&) = delete;

  void fetch(std::size_t count);

  class Client;

 private:
  std::unique_ptr<Client> client_;
};

}  // namespace orvo::benchmarks
