#include <OrvoAPI/Platform/SystemLog.h>

#include <errno.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <utility>

namespace orvo {
namespace {

constexpr std::string_view kEllipsis = "\xE2\x80\xA6";

bool connectTo(int socket, const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.empty() || path.size() >= sizeof address.sun_path) return false;
  path.copy(address.sun_path, path.size());
  return connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

/// The name under which the system's tools list the process.
std::string_view identifier() { return program_invocation_short_name; }

iovec part(std::string_view text) {
  return {const_cast<char*>(text.data()), text.size()};  // sending only reads
}

/// At most `limit` bytes from the beginning, without a torn UTF-8 character at the end.
std::string_view cut(std::string_view text, std::size_t limit) {
  if (text.size() <= limit) return text;
  while (limit > 0 && (static_cast<unsigned char>(text[limit]) & 0xC0) == 0x80) --limit;
  return text.substr(0, limit);
}

/// How the journal wants the length of a value that holds line breaks: 8 bytes, lowest first.
std::array<char, 8> littleEndian(std::uint64_t number) {
  std::array<char, 8> bytes{};
  for (char& byte : bytes) {
    byte = static_cast<char>(number & 0xFF);
    number >>= 8;
  }
  return bytes;
}

bool needsBinaryForm(std::string_view value) { return value.find('\n') != std::string_view::npos; }

void appendField(std::string& record, std::string_view name, std::string_view value) {
  record.append(name);
  if (needsBinaryForm(value)) {
    const auto length = littleEndian(value.size());
    record.append(1, '\n').append(length.data(), length.size());
  } else {
    record.append(1, '=');
  }
  record.append(value).append(1, '\n');
}

void appendInOneLine(std::string& record, std::string_view text) {
  for (const char c : text)
    record += (static_cast<unsigned char>(c) < ' ' || c == '\x7F') ? ' ' : c;
}

/// "<14>Feb  5 01:02:03 ", the same under every locale.
std::string classicHeader(int priority) {
  static constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                            "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  constexpr int kUserFacility = 1 << 3;
  const time_t now = time(nullptr);
  tm local{};
  localtime_r(&now, &local);
  std::array<char, 40> text{};
  const int length = std::snprintf(text.data(), text.size(), "<%d>%s %2d %02d:%02d:%02d ",
                                   kUserFacility | priority, kMonths[local.tm_mon], local.tm_mday,
                                   local.tm_hour, local.tm_min, local.tm_sec);
  return {text.data(), static_cast<std::size_t>(length)};
}

}  // namespace

std::unique_ptr<const SystemLog> SystemLog::open(const Paths& paths) {
  if (auto journal = open(paths.journal, Kind::journal)) return journal;
  return open(paths.classic, Kind::classic);
}

std::unique_ptr<const SystemLog> SystemLog::open(const std::string& path, Kind kind) {
  const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (socket < 0) return nullptr;
  std::unique_ptr<const SystemLog> log(new SystemLog(socket, path, kind));
  if (!connectTo(socket, path)) return nullptr;
  return log;
}

SystemLog::~SystemLog() { close(socket_); }

SystemLog::Handle SystemLog::handle(std::string_view subsystem, std::string_view category) const {
  std::string text;
  if (kind_ == Kind::journal) {
    appendField(text, "SYSLOG_IDENTIFIER", identifier());
    appendField(text, "SUBSYSTEM", subsystem);
    appendField(text, "CATEGORY", category);
  } else {
    text += '[';
    appendInOneLine(text, subsystem);
    text += '-';
    appendInOneLine(text, category);
    text += "] ";
  }
  return Handle(std::move(text));
}

void SystemLog::send(const Handle& handle, Priority priority, std::string_view message) const {
  if (kind_ == Kind::journal) {
    sendToJournal(handle, priority, message);
  } else {
    sendToClassic(handle, priority, message);
  }
}

void SystemLog::sendToJournal(const Handle& handle, Priority priority,
                              std::string_view message) const {
  std::array<char, 11> priorityField{'P', 'R', 'I', 'O', 'R', 'I', 'T', 'Y', '=', '?', '\n'};
  priorityField[9] = static_cast<char>('0' + static_cast<int>(priority));
  const auto text = cut(message, kLongestJournalMessage);
  const auto mark = text.size() < message.size() ? kEllipsis : std::string_view();
  const auto length = littleEndian(text.size() + mark.size());
  const bool binary = needsBinaryForm(text);

  std::array parts{
      part(handle.text_),
      part({priorityField.data(), priorityField.size()}),
      part(binary ? "MESSAGE\n" : "MESSAGE="),
      part(binary ? std::string_view(length.data(), length.size()) : std::string_view()),
      part(text),
      part(mark),
      part("\n")};
  transmit(parts.data(), parts.size());
}

void SystemLog::sendToClassic(const Handle& handle, Priority priority,
                              std::string_view message) const {
  std::string record = classicHeader(static_cast<int>(priority));
  appendInOneLine(record, identifier());
  record.append("[").append(std::to_string(getpid())).append("]: ").append(handle.text_);
  const auto text = cut(message, kLongestClassicMessage);
  appendInOneLine(record, text);
  if (text.size() < message.size()) record += kEllipsis;
  auto whole = part(record);
  transmit(&whole, 1);
}

void SystemLog::transmit(iovec* parts, std::size_t count) const {
  msghdr message{};
  message.msg_iov = parts;
  message.msg_iovlen = count;
  const auto sent = [&] { return sendmsg(socket_, &message, MSG_NOSIGNAL | MSG_DONTWAIT) >= 0; };
  if (sent()) return;
  const bool readerHasGone = errno == ECONNREFUSED || errno == ENOTCONN || errno == ECONNRESET ||
                             errno == EPIPE || errno == EDESTADDRREQ;
  // Otherwise the reader's buffer is full: a lost record does less harm than a caller that waits.
  if (readerHasGone && connectTo(socket_, path_)) (void)sent();
}

}  // namespace orvo
