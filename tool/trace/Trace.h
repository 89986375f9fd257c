#pragma once

#include <tool/RequestObserver.h>
#include <tool/Tool.h>

#include <cstddef>
#include <vector>

namespace orvo::tool {

/// Prints what became of a run's requests on standard error: a waterfall, or with `--json` a
/// document a line, `{"trace": …}`, as soon as each has ended. The tool is the one that it is
/// attached to.
class Trace final : public RequestObserver {
 public:
  explicit Trace(const Tool& tool);

  void take(const RequestReport& report) override;
  void flush() override;
  void close(const std::vector<RequestReport>& underWay) override;

 private:
  /// A monitor may run for months.
  static constexpr std::size_t kMost = 1000;

  void print();

  const Tool& tool_;
  /// Whether a recording answers: in no time.
  const bool isReplayed_;
  // Touched on the queue only.
  std::vector<RequestReport> reports_;
  std::size_t leftOut_ = 0;
  bool isClosed_ = false;
};

/// Whether the environment asks for one, by ORVO_TRACE.
[[nodiscard]] bool isTraceWanted();

}  // namespace orvo::tool
