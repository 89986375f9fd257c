#pragma once

#include <OrvoAPI/Context/RequestRecordInternal.h>
#include <OrvoAPI/Parsing/DocumentLoss.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvo::detail {

/// Reports what was left out of the document that one request asked for. Thread-safe.
class LossReporter final : public std::enable_shared_from_this<LossReporter> {
 public:
  /// Null when there is no observer, or no memory.
  [[nodiscard]] static std::shared_ptr<const LossReporter> make(const RequestReporter* reporter,
                                                                const Subject& subject) noexcept;

  LossReporter(const RequestReporter& reporter, const Subject& subject);

  /// Calls the observer for each, on the queue of the reports.
  void report(const LossWatch& watch) const noexcept;

 private:
  void tell(std::vector<DocumentLoss>& losses) const;

  const std::shared_ptr<const RequestReporter> reporter_;
  /// Named after the request: "fetchPage" fetches a "Page".
  const std::string_view document_;
  const std::string identifier_;
};

/// The reading of a body; what it leaves out is reported if there is a reporter.
template <class Read>
class Watched {
 public:
  Watched(std::shared_ptr<const LossReporter> reporter, Read read)
      : reporter_(std::move(reporter)), read_(std::move(read)) {}

  template <class T>
  auto operator()(const T& body) const {
    if (reporter_ == nullptr) return read_(body);
    const LossWatch watch;
    auto result = read_(body);
    reporter_->report(watch);
    return result;
  }

 private:
  std::shared_ptr<const LossReporter> reporter_;
  Read read_;
};

}  // namespace orvo::detail
