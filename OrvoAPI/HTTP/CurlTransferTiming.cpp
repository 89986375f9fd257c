#include <OrvoAPI/HTTP/CurlSessionInternal.h>
#include <OrvoAPI/HTTP/CurlTransferInternal.h>

#include <chrono>

namespace orvo::detail {

curl_socket_t CurlTransfer::onOpenSocket(void* self, curlsocktype, curl_sockaddr* address) {
  auto* const transfer = static_cast<CurlTransfer*>(self);
  auto* const hop = transfer->exchange_->measured();
  if (hop != nullptr && hop->at(RequestTimeline::Stage::resolved) == NetworkTime()) {
    note(*hop, RequestTimeline::Stage::resolved);
  }
  return transfer->connections_.open(*address, transfer->host_->name);
}

int CurlTransfer::onCloseSocket(void* connections, curl_socket_t socket) {
  return static_cast<Connections*>(connections)->close(socket);
}

/// A name is to be resolved for the connection that it gets.
int CurlTransfer::onResolve(void*, void*, void* self) {
  if (auto* const hop = static_cast<CurlTransfer*>(self)->exchange_->measured()) {
    note(*hop, RequestTimeline::Stage::resolving);
  }
  return 0;
}

/// It has a connection, new or used before, and its request is about to be sent.
int CurlTransfer::onConnected(void* self, char* peer, char*, int peerPort, int localPort) {
  auto* const transfer = static_cast<CurlTransfer*>(self);
  transfer->noteActivity();
  transfer->isSent_ = true;
  if (auto* const hop = transfer->exchange_->measured()) note(*hop, RequestTimeline::Stage::sent);
  transfer->connection_ = transfer->connections_.find(peer, peerPort, localPort);
  return CURL_PREREQFUNC_OK;
}

void CurlTransfer::noteFirstByte(std::string_view statusLine) {
  auto& hop = *exchange_->measured();
  hop.protocol = statusLine.starts_with("HTTP/1.0") ? "1.0"
                 : statusLine.starts_with("HTTP/1") ? "1.1"
                                                    : "2";
  // The bytes were there when the thread woke up. The last response counts: those before were
  // interim ones, after which the server may think for long.
  note(hop, RequestTimeline::Stage::firstByte, NetworkThread::shared().now());
}

/// libcurl's own times are taken as differences, from a moment that was noted here.
void CurlTransfer::measure(RequestTimeline::Hop& hop) const {
  using Stage = RequestTimeline::Stage;
  const auto number = [this](CURLINFO info) {
    curl_off_t value = 0;
    curl_easy_getinfo(handle_, info, &value);
    return value;
  };
  hop.bytesReceived = static_cast<std::uint64_t>(number(CURLINFO_SIZE_DOWNLOAD_T));
  const auto resolved = hop.at(Stage::resolved);
  if (resolved == NetworkTime()) {
    // Without a new connection it has only waited for the one that it was sent on.
    hop.isConnectionReused = isSent_;
    if (isSent_) note(hop, Stage::resolving, hop.at(Stage::sent));
    return;
  }
  if (hop.at(Stage::resolving) == NetworkTime()) note(hop, Stage::resolving, resolved);
  const auto opened = number(CURLINFO_NAMELOOKUP_TIME_T);
  const auto noteAfter = [&](Stage stage, CURLINFO info) {
    const auto after = number(info) - opened;
    if (after > 0) note(hop, stage, resolved + std::chrono::microseconds(after));
  };
  noteAfter(Stage::connected, CURLINFO_CONNECT_TIME_T);
  noteAfter(Stage::secured, CURLINFO_APPCONNECT_TIME_T);
}

}  // namespace orvo::detail
