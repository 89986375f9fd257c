#include <OrvoAPI/Futures/Promise.h>
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
  {
    const std::lock_guard guard(lock_);
    if (std::exchange(isPrinted_, isPrinted_ || isDone || !losses.empty())) return;
  }
  if (losses.empty() && !(isDone && hasRead_)) return;
  if (json) {
    const auto report = Json::object({{"losses", Json::list(losses, lossJson)}});
    return printJsonLine(Json::object({{"report", report}}));
  }
  std::string text;
  for (const auto& loss : losses) text += escaped("orvo: " + lossText(loss)) + "\n";
  printDiagnostic(losses.empty() ? "orvo: nothing was left out\n" : text);
}

}  // namespace orvo::tool
