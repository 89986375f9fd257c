#include <OrvoAPI/Context/Response.h>
#include <OrvoAPI/Context/URLService.h>
#include <OrvoAPI/Futures/GeneralError.h>
#include <OrvoAPI/HTTP/URLError.h>
#include <OrvoAPI/Network/SessionError.h>
#include <OrvoAPI/Parsing/DateFormatError.h>
#include <OrvoAPI/Parsing/JSONParseError.h>
#include <OrvoAPI/Parsing/JSONReaderError.h>
#include <tool/ErrorReport.h>
#include <tool/ModelJson.h>

namespace orvo::tool {

namespace {

Json kind(const char* name) { return Json::object({{"kind", name}}); }

Json unableToParse(const JSONParseError::unableToParse& error, Secrets secrets) {
  const auto& [type, value] = error;
  Json json = kind("unableToParse");
  json.set("type", type);
  json.set("key", error.key() != nullptr ? Json(*error.key()) : Json());
  if (const auto* document = std::get_if<JSONValue>(&value)) {
    const bool hidden = secrets == Secrets::hidden && type == "Session";
    json.set("value", hidden ? Json("(hidden)") : toJson(*document));
  }
  return json;
}

Json generalError(const GeneralError& error, Secrets secrets);

/// The inner object: the kind and its payload.
Json inner(const AnyError& error, Secrets secrets) {
  if (const auto* general = error.as<GeneralError>()) return generalError(*general, secrets);
  if (const auto* parse = error.as<JSONParseError>()) {
    const auto* unable = parse->as<JSONParseError::unableToParse>();
    return unable != nullptr ? unableToParse(*unable, secrets) : kind("unexpectedType");
  }
  if (const auto* date = error.as<DateFormatError>()) {
    const auto* mismatch = date->as<DateFormatError::stringDoesNotMatchFormat>();
    return ORVO_WITH_FIELDS(kind("stringDoesNotMatchFormat"), *mismatch, string, format);
  }
  if (const auto* reader = error.as<JSONReaderError>()) {
    const auto& [code, message] = *reader;  // the code says no more than the message does
    return Json::object({{"kind", "reader"}, {"message", message}});
  }
  if (const auto* session = error.as<SessionError>()) {
    const auto* unexpected = session->as<SessionError::unexpectedStatus>();
    return unexpected != nullptr ? ORVO_WITH_FIELDS(kind("unexpectedStatus"), *unexpected, status)
                                 : kind("couldNotUpdateSession");
  }
  if (const auto* response = error.as<Response::Error>()) {
    const auto* bad = response->as<Response::Error::badStatus>();
    return ORVO_WITH_FIELDS(kind("badStatus"), *bad, status);
  }
  if (const auto* service = error.as<URLService::Error>()) {
    const auto* invalid = service->as<URLService::Error::invalidInput>();
    return ORVO_WITH_FIELDS(kind("invalidInput"), *invalid, input);
  }
  if (const auto* transport = error.as<URLError>()) {
    const auto& [code, message, timeline] = *transport;  // the timeline is for reports
    return Json::object({{"kind", "URLError"}, {"code", code}, {"message", message}});
  }
  return Json::object({{"kind", "other"}, {"message", error.description()}});
}

Json generalError(const GeneralError& error, Secrets secrets) {
  if (const auto* wrapper = error.as<GeneralError::underlying>()) {
    return Json::object({{"kind", "underlying"}, {"error", inner(wrapper->error, secrets)}});
  }
  return kind(error.is<GeneralError::elementNotFound>() ? "elementNotFound"
                                                        : "unableToPerformAction");
}

std::string statusText(int status) {
  const std::string text = "the service answered with status " + std::to_string(status);
  switch (status) {
    case 401:
      return text + " (the session is not accepted)";
    case 403:
      return text + " (not allowed)";
    case 404:
      return text + " (there is no such thing)";
    case 503:
      return text + " (out of order for the moment)";
    default:
      return text;
  }
}

std::string parseText(const JSONParseError& error) {
  const auto* unable = error.as<JSONParseError::unableToParse>();
  if (unable == nullptr) return "the document is JSON, but not of the expected shape";
  const std::string model = "the document is no " + unable->type;
  return unable->key() != nullptr ? model + ": \"" + *unable->key() + "\" is missing or wrong"
                                  : model + ": something in it is missing or wrong";
}

}  // namespace

Json errorValue(const AnyError& error) { return inner(error, Secrets::hidden); }

Json errorJson(const AnyError& error, Secrets secrets) {
  Json json = Json::object({{"error", inner(error, secrets)}});
  if (const ErrorContext* context = error.context()) {
    const auto& [operation, identifier, note] = *context;  // the note is for people
    const bool isNamed = !identifier.empty();
    json.set("subject", Json::object({{"operation", operation},
                                      {"identifier", isNamed ? Json(identifier) : Json()}}));
  }
  return json;
}

std::string explanation(const AnyError& error) {
  if (const auto* general = error.as<GeneralError>()) {
    const auto* wrapper = general->as<GeneralError::underlying>();
    if (wrapper != nullptr) return explanation(wrapper->error);
    return general->is<GeneralError::elementNotFound>() ? "there is no such thing"
                                                        : "this cannot be done now";
  }
  if (const auto* parse = error.as<JSONParseError>()) return parseText(*parse);
  if (const auto* reader = error.as<JSONReaderError>()) {
    return "the document cannot be read: " + reader->message;
  }
  if (const auto* response = error.as<Response::Error>()) {
    return statusText(response->as<Response::Error::badStatus>()->status);
  }
  if (const auto* session = error.as<SessionError>()) {
    const auto* status = session->as<SessionError::unexpectedStatus>();
    return status != nullptr ? statusText(status->status) : "the service refuses a new session";
  }
  if (const auto* input = error.as<URLService::Error>()) {
    return "no address can be made of \"" + input->as<URLService::Error::invalidInput>()->input +
           "\"";
  }
  if (const auto* transport = error.as<URLError>()) {
    const bool known = transport->code != URLError::unknown;
    return transport->message + (known ? " (code " + std::to_string(transport->code) + ")" : "");
  }
  return error.description();
}

std::string subject(const AnyError& error) {
  const ErrorContext* context = error.context();
  if (context == nullptr) return "";
  ErrorContext shown = *context;
  if (error.is<URLService::Error>()) shown.identifier.clear();
  return shown.description();
}

}  // namespace orvo::tool
