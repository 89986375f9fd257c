#include <tool/Present.h>
#include <tool/har/Recorder.h>
#include <tool/har/Traffic.h>

#include <utility>

namespace orvo::tool {

Recording::Recording(const std::string& file, GlobalOptions& options,
                     std::vector<std::string> words) {
  if (file.empty()) return;
  holdPresent();
  recorder_ = std::make_shared<Recorder>(file, options.json, std::move(words));
  options.bootstrap.session.measuresRequests = true;
  options.bootstrap.wrapNetwork = [recorder = recorder_](auto network) {
    return recorder->before(std::move(network));
  };
  options.onService = [recorder = recorder_](const auto& service) { recorder->serves(service); };
  writing_.emplace([recorder = recorder_] { recorder->write(); });
}

int Recording::end(int status) { return recorder_ == nullptr || recorder_->write() ? status : 1; }

Recording::~Recording() {
  if (recorder_ != nullptr) recorder_->write();
}

}  // namespace orvo::tool
