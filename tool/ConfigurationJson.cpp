#include <fmt/format.h>
#include <tool/ModelJson.h>

namespace orvo::tool {

std::string hexText(const Color& color) {
  return fmt::format("#{:02x}{:02x}{:02x}", color.red8(), color.green8(), color.blue8());
}

Json toJson(const Configuration::SystemView& view) {
  return Json::object({{"name", view.name}, {"label", view.label}, {"id", view.id}});
}

Json toJson(const Constants& constants) {
  return Json::object({{"hlsBaseURL", toJson(constants.hlsBaseURL)},
                       {"linearStreamID", constants.linearStreamID},
                       {"upNextHintTimeout", constants.upNextHintTimeout},
                       {"playerControlsTimeout", constants.playerControlsTimeout},
                       {"discoveryResetTimeout", constants.discoveryResetTimeout},
                       {"relaunchResumeTimeout", constants.relaunchResumeTimeout},
                       {"countdownVisibilityTimeout", constants.countdownVisibilityTimeout},
                       {"recentlyWatched", constants.recentlyWatched},
                       {"startedMinimumPercent", constants.startedMinimumPercent},
                       {"startedMinimumTime", constants.startedMinimumTime},
                       {"watchedMinimumPercent", constants.watchedMinimumPercent},
                       {"watchedMinimumTime", constants.watchedMinimumTime},
                       {"shareStringTemplate", constants.shareStringTemplate},
                       {"searchTopResultsLimit", constants.searchTopResultsLimit},
                       {"playbackInterruptDelay", constants.playbackInterruptDelay},
                       {"adCornerBugDelay", constants.adCornerBugDelay}});
}

Json toJson(const ColorResource& resource) {
  return Json::object({{"transform", resource.transform}, {"color", hexText(resource.color)}});
}

Json toJson(const ColorPalette& palette) {
  Json json = Json::object();
  for (const ColorPalette::Entry& entry : ColorPalette::entries) {
    json.set(std::string(entry.name), toJson(palette.*entry.resource));
  }
  return json;
}

Json toJson(const Links& links) {
  return Json::object({{"imprint", toJson(links.imprint)},
                       {"about", toJson(links.about)},
                       {"privacy", toJson(links.privacy)},
                       {"terms", toJson(links.terms)},
                       {"contact", toJson(links.contact)},
                       {"feedback", toJson(links.feedback)}});
}

Json toJson(const Requirements::AppVersion& version) {
  return Json::object({{"minBuild", version.minBuild}, {"message", version.message}});
}

Json toJson(const Requirements::OSVersion& version) {
  return Json::object({{"minOsVersion", version.minOsVersion}, {"message", version.message}});
}

Json toJson(const Requirements::KillSwitch& killSwitch) {
  return Json::object({{"kill", killSwitch.kill}, {"message", killSwitch.message}});
}

Json toJson(const RatingPromptConfig& config) {
  return Json::object({{"sessionCountThreshold", config.sessionCountThreshold},
                       {"activeSessionTimeThreshold", config.activeSessionTimeThreshold},
                       {"enabled", config.enabled},
                       {"repeatDelay", config.repeatDelay}});
}

Json toJson(const DisplayAd& ad) {
  return Json::object(
      {{"server", toJson(ad.server)}, {"network", ad.network}, {"profile", ad.profile}});
}

Json toJson(const Configuration& configuration) {
  const Requirements& requirements = configuration.requirements;
  const LinearStream& stream = configuration.linearStream;
  const Configuration::UpcomingEvents& events = configuration.upcomingEvents;
  return Json::object(
      {{"systemViews", toJson(configuration.systemViews)},
       {"constants", toJson(configuration.constants)},
       {"colorPalette", toJson(configuration.colorPalette)},
       {"links", toJson(configuration.links)},
       {"requirements", Json::object({{"appVersion", toJson(requirements.appVersion)},
                                      {"osVersion", toJson(requirements.osVersion)},
                                      {"killSwitch", toJson(requirements.killSwitch)}})},
       {"ratingPromptConfig", toJson(configuration.ratingPromptConfig)},
       {"displayAd", toJson(configuration.displayAd)},
       {"linearStream", Json::object({{"id", stream.id},
                                      {"label", stream.label},
                                      {"description", stream.description},
                                      {"iconID", stream.iconID}})},
       {"upcomingEvents", Json::object({{"label", events.label}, {"id", events.id}})},
       {"environment", caseName(configuration.environment)}});
}

}  // namespace orvo::tool
