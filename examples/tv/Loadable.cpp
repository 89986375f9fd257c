#include "Loadable.h"

void Loadable::setState(State state, const QString& error) {
  state_ = state;
  error_ = error;
  emit stateChanged();
}

QString Loadable::textOf(const orvo::AnyError& error) {
  if (error.is<orvo::URLError>()) return "The service cannot be reached.";
  if (const auto* const refusal = error.as<orvo::SessionError>();
      refusal != nullptr && *refusal == orvo::SessionError::unexpectedStatus{404}) {
    return "This is not there any more.";
  }
  return "The service has trouble at the moment.";
}
