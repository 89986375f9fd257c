#include <OrvoAPI/Base/ImmortalInternal.h>
#include <OrvoAPI/HTTP/LargeBodiesInternal.h>
#include <OrvoAPI/HTTP/NetworkThreadInternal.h>
#include <OrvoAPI/Queues/DispatchQueue.h>

#include <algorithm>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>

namespace orvo::detail {
namespace {

/// A host by one name, so that one which redirects to another spelling of itself gains nothing.
std::string nameOfHost(const URL& url) {
  const bool isSecure = url.scheme().size() == std::string_view("https").size();
  std::string name(isSecure ? "s:" : "p:");
  // Not through <cctype>: the app's locale has no say in it.
  for (const char c : url.host()) {
    name += c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
  }
  return name.append(":").append(std::to_string(url.port().value_or(isSecure ? 443 : 80)));
}

}  // namespace

/// What the bytes that a reader is given belong to.
struct LargeBodies::Turn {
  Data body;
  explicit Turn(Data read) : body(std::move(read)) {}
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;
  ~Turn() {
    body = {};  // first, so that the next reader finds its memory free
    shared().endTurn();
  }
};

LargeBodies& LargeBodies::shared() {
  static auto* const bodies = new (immortalPlace<LargeBodies>()) LargeBodies;
  return *bodies;
}

void LargeBodies::take(Share& share, std::size_t bytes) noexcept {
  share.bytes += bytes;
  bytes_ += bytes;
}

void LargeBodies::giveBack(Share& share, std::size_t bytes) noexcept {
  share.bytes -= bytes;
  bytes_ -= bytes;
  noteFreed();
}

std::shared_ptr<LargeBodies::Share> LargeBodies::shareOf(const URL& url) {
  auto name = nameOfHost(url);
  if (const auto known = shares_.find(name); known != shares_.end()) {
    if (auto share = known->second.lock()) return share;
  }
  std::erase_if(shares_, [](const auto& entry) { return entry.second.expired(); });
  auto share = std::make_shared<Share>();
  shares_.emplace(std::move(name), share);
  return share;
}

bool LargeBodies::hasRoom(const Share& share) const noexcept {
  return bytes_ < kBudget || !(share.underWay > 0 || isReading_);
}

bool LargeBodies::mayStart(const Share& share) noexcept {
  if (share.bytes.load(std::memory_order_relaxed) < kFairShare || hasRoom(share)) return true;
  isWaitedFor_ = true;
  return hasRoom(share);  // what was freed before that has woken nobody
}

void LargeBodies::noteFreed() noexcept {
  if (!isWaitedFor_ || !isWaitedFor_.exchange(false)) return;
  freed_ = true;
  NetworkThread::shared().wake();
}

void LargeBodies::read(const URL& url, const Data& body, const Reader& reader) {
  if (isForkedChild()) return reader(body);  // the turn may be that of a thread that is not here
  Job job;
  try {
    job = Job([body, reader] { begin(body, reader); });
    if (waitInLine(nameOfHost(url), job)) return;
  } catch (const std::bad_alloc&) {
    return reader(body);  // out of turn: there is no memory to wait with
  }
  job();
}

bool LargeBodies::waitInLine(std::string host, Job& job) {
  const LockGuard guard(lock_);
  if (!isReading_) {
    isReading_ = true;
    return false;
  }
  auto line = std::find_if(lines_.begin(), lines_.end(),
                           [&host](const Line& other) { return other.host == host; });
  if (line == lines_.end()) line = lines_.insert(line, Line{std::move(host), {}});
  line->jobs.append(job.release());
  return true;
}

void LargeBodies::begin(const Data& body, const Reader& reader) {
  Data inTurn = body;
  try {
    const auto turn = std::make_shared<const Turn>(body);
    inTurn = Data(std::shared_ptr<const char>(turn, body.view().data()), body.size());
  } catch (const std::bad_alloc&) {
    shared().endTurn();
  }
  reader(std::move(inTurn));
}

void LargeBodies::endTurn() noexcept {
  Job next;
  {
    const LockGuard guard(lock_);
    if (lines_.empty()) {
      isReading_ = false;
    } else {
      const auto line = lines_.begin();
      next = Job(line->jobs.pop());
      lines_.splice(lines_.end(), lines_, line);
      if (line->jobs.empty()) lines_.pop_back();
    }
  }
  if (!next) return noteFreed();
  DispatchQueue::global()->post(std::move(next));
}

}  // namespace orvo::detail
