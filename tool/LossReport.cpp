#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <OrvoAPI/Queues/SerialQueue.h>
#include <tool/JsonLines.h>
#include <tool/LossReport.h>
#include <tool/Output.h>
#include <tool/Text.h>
#include <tool/Wording.h>

#include <chrono>
#include <utility>

namespace orvo::tool {

namespace {

using Reason = DocumentLoss::Reason;

Json lossJson(const DocumentLoss& loss) {
  const auto& [document, identifier, path, lost, reason, count] = loss;
  return Json::object({{"document", document},
                       {"identifier", identifier},
                       {"path", path},
                       {"lost", lost},
                       {"reason", caseName(reason)},
                       {"count", static_cast<std::int64_t>(count)}});
}

std::string reasonText(Reason reason) {
  switch (reason) {
    case Reason::missing:
      return " is missing";
    case Reason::null:
      return " is null";
    case Reason::wrongType:
      return " is of the wrong type";
    case Reason::badValue:
      return " cannot be used";
    case Reason::further:
      break;
  }
  return "";
}

std::string lossText(const DocumentLoss& loss) {
  std::string text = loss.document;
  if (!loss.identifier.empty()) text += " " + loss.identifier;
  text += ": ";
  if (loss.reason == Reason::further) {
    return text + countText(static_cast<std::int64_t>(loss.count)) + " more";
  }
  text += loss.path + reasonText(loss.reason);
  if (loss.lost.empty()) return text + ", and so nothing of it is used";
  return text +
         (loss.lost == loss.path ? ", and is ignored" : ", so that " + loss.lost + " is left out");
}

}  // namespace

void LossReport::listen(ContextOptions& options) {
  if (options.reportQueue == nullptr) options.reportQueue = SerialQueue::make("orvo.losses");
  queue_ = options.reportQueue;
  options.onLoss = [self = shared_from_this(),
                    earlier = std::move(options.onLoss)](const DocumentLoss& loss) {
    if (earlier) earlier(loss);
    self->add({loss});
  };
  hasRead_ = true;
}

void LossReport::add(const std::vector<DocumentLoss>& losses) {
  const std::lock_guard guard(lock_);
  hasRead_ = true;
  losses_.insert(losses_.end(), losses.begin(), losses.end());
}

void LossReport::addSent(const std::string& path, const Data& body) {
  constexpr std::size_t kMost = 100;
  const auto document = JSONDataParser::value(body);
  if (document.failed()) return;
  for (auto& list : shortLists(*document.value())) {
    const std::lock_guard guard(lock_);
    if (sent_.size() < kMost) sent_.push_back({path, std::move(list)});
  }
}

Json LossReport::sentJson(const Sent& sent) {
  const auto& [path, count, total, offset, promised] = sent.list;
  return Json::object({{"document", sent.document},
                       {"path", path},
                       {"count", count},
                       {"promised", promised},
                       {"total", total ? Json(*total) : Json()},
                       {"offset", offset}});
}

std::string LossReport::sentText(const Sent& sent) {
  return (sent.document.empty() ? "" : sent.document + ": ") + shortListText(sent.list);
}

std::vector<DocumentLoss> LossReport::taken() {
  if (queue_ != nullptr) {
    // What is told of a document is posted before its fetch ends.
    const Promise<bool> told;
    queue_->post([told] { told.success(true); });
    (void)told.future().wait(std::chrono::seconds(1));
  }
  const std::lock_guard guard(lock_);
  return std::exchange(losses_, {});
}

void LossReport::print(bool json, bool isDone) {
  const auto losses = taken();
  std::vector<Sent> sent;
  {
    const std::lock_guard guard(lock_);
    sent.swap(sent_);
    const bool isSaid = isDone || !losses.empty() || !sent.empty();
    if (std::exchange(isPrinted_, isPrinted_ || isSaid)) return;
  }
  if (losses.empty() && sent.empty() && !(isDone && hasRead_)) return;
  if (json) {
    const auto report = Json::object(
        {{"losses", Json::list(losses, lossJson)}, {"shortLists", Json::list(sent, sentJson)}});
    return printJsonLine(Json::object({{"report", report}}));
  }
  std::string text;
  for (const auto& loss : losses) text += escaped("orvo: " + lossText(loss)) + "\n";
  if (losses.empty()) text = "orvo: nothing was left out\n";
  for (const auto& list : sent) text += escaped("orvo: " + sentText(list)) + "\n";
  printDiagnostic(text);
}

}  // namespace orvo::tool
