#include <tool/Arguments.h>
#include <tool/Profiles.h>
#include <tool/ServiceChoice.h>
#include <tool/ValueCheck.h>

#include <cstdlib>

namespace orvo::tool {

namespace {

/// What the variable says; one that is empty says nothing.
std::string variable(const char* name, const Values& values) {
  const char* value = std::getenv(name);
  if (value == nullptr || *value == '\0') return "";
  const std::string wrong = complaint(values, value);
  if (!wrong.empty()) throw WrongUsage(std::string(name) + ": " + wrong);
  return value;
}

/// The service of whoever is asked first and says something.
Profile choose(const WrittenService& written, std::string& source) {
  if (written.demo) {
    source = "--demo";
    return {};
  }
  if (!written.api.empty()) {
    source = "--api";
    return {.name = "", .api = written.api, .resources = written.resources};
  }
  if (written.profile) {
    source = "--profile " + *written.profile;
    return readProfiles().named(*written.profile);
  }
  if (written.environment) {
    source = "--environment";
    return {};
  }
  const std::string api = variable("ORVO_API", baseURLs());
  const std::string resources = variable("ORVO_RESOURCES", baseURLs());
  if (!api.empty()) {
    source = "ORVO_API";
    return {.name = "", .api = api, .resources = resources};
  }
  if (!resources.empty()) throw WrongUsage("ORVO_RESOURCES is set, but ORVO_API is not");
  const Profiles profiles = readProfiles();
  source = profiles.used.empty() ? "compiled in" : "profile " + profiles.used;
  return profiles.used.empty() ? Profile{} : profiles.named(profiles.used);
}

}  // namespace

ServiceChoice chooseService(const WrittenService& written) {
  ServiceChoice choice{.demo = written.demo};
  if (written.environment) choice.environment = *environmentNamed(*written.environment);
  const Profile service = choose(written, choice.source);
  const std::string source = choice.source;
  if (!service.api.empty()) {
    const bool isWhole = !service.resources.empty();
    choice.api = baseURL(service.api);
    choice.resources = isWhole ? *baseURL(service.resources) : resourceURL(choice.environment);
    if (!isWhole) choice.source += ", resources compiled in";
  }
  const std::string fromVariable = written.client ? "" : variable("ORVO_CLIENT", clientNames());
  if (written.client) {
    choice.client = *caseNamed<Client>(*written.client);
    choice.clientSource = "--client";
  } else if (!fromVariable.empty()) {
    choice.client = *caseNamed<Client>(fromVariable);
    choice.clientSource = "ORVO_CLIENT";
  } else if (!service.client.empty()) {
    choice.client = *caseNamed<Client>(service.client);
    choice.clientSource = source;
  } else {
    choice.clientSource = "default";
  }
  return choice;
}

}  // namespace orvo::tool
