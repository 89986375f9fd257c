#include "Service.h"

Service::Service(orvo::URL api, orvo::URL resources, orvo::BootstrapOptions options)
    : api_(std::move(api)), resources_(std::move(resources)), options_(std::move(options)) {}

void Service::load() {
  await(orvo::ContextService::context(api_, resources_, orvo::Client::appleTV, options_),
        [this](const auto& context) {
          context_ = context;
          renewal_ = orvo::SessionRenewal::make(context->sessionProvider());
        });
}

QVariantList Service::views() const {
  QVariantList views;
  if (context_ == nullptr) return views;
  for (const orvo::SystemView& view : context_->systemViews()) {
    views.append(QVariantMap{{"id", QString::fromStdString(view.id)},
                             {"label", QString::fromStdString(view.label)}});
  }
  return views;
}
