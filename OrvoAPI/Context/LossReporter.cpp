#include <OrvoAPI/Context/LossReporterInternal.h>
#include <OrvoAPI/Context/RedactionInternal.h>

namespace orvo::detail {
namespace {

std::string_view documentOf(std::string_view operation) {
  constexpr std::string_view kVerb = "fetch";
  return operation.starts_with(kVerb) ? operation.substr(kVerb.size()) : operation;
}

}  // namespace

std::shared_ptr<const LossReporter> LossReporter::make(const RequestReporter* reporter,
                                                       const Subject& subject) noexcept {
  if (reporter == nullptr || reporter->onLoss() == nullptr) return nullptr;
  try {
    return std::make_shared<const LossReporter>(*reporter, subject);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

LossReporter::LossReporter(const RequestReporter& reporter, const Subject& subject)
    : reporter_(reporter.shared_from_this()),
      document_(documentOf(subject.operation)),
      identifier_(subject.identifier) {}

void LossReporter::report(const LossWatch& watch) const noexcept {
  try {
    auto losses = watch.losses(document_);
    if (losses.empty()) return;
    reporter_->queue()->post(
        [self = shared_from_this(), losses = std::move(losses)]() mutable { self->tell(losses); });
  } catch (const std::bad_alloc&) {
    // There is no report then.
  }
}

void LossReporter::tell(std::vector<DocumentLoss>& losses) const {
  try {
    const auto token = reporter_->currentToken();
    auto identifier = identifier_;
    Redaction(token).text(identifier);
    for (auto& loss : losses) loss.identifier = identifier;
  } catch (...) {
    return;  // what cannot be redacted is not told
  }
  for (const auto& loss : losses) {
    try {
      reporter_->onLoss()(loss);
    } catch (...) {
      // The fetch is none of its business.
    }
  }
}

}  // namespace orvo::detail
