#include <fmt/format.h>
#include <tool/ModelJson.h>

namespace orvo::tool {

std::string hexText(const Color& color) {
  return fmt::format("#{:02x}{:02x}{:02x}", color.red8(), color.green8(), color.blue8());
}

Json toJson(const Configuration::SystemView& view) { return ORVO_FIELDS(view, name, label, id); }

Json toJson(const Constants& constants) {
  return ORVO_FIELDS(
      constants, hlsBaseURL, linearStreamID, upNextHintTimeout, playerControlsTimeout,
      discoveryResetTimeout, relaunchResumeTimeout, countdownVisibilityTimeout, recentlyWatched,
      startedMinimumPercent, startedMinimumTime, watchedMinimumPercent, watchedMinimumTime,
      shareStringTemplate, searchTopResultsLimit, playbackInterruptDelay, adCornerBugDelay);
}

Json toJson(const Color& color) { return hexText(color); }

Json toJson(const ColorResource& resource) { return ORVO_FIELDS(resource, transform, color); }

Json toJson(const ColorPalette& palette) {
  return ORVO_FIELDS(palette, pureWhite, pureBlack, white, black, red, yellow, orange, grey100,
                     grey150, grey200, grey300, grey350);
}

Json toJson(const Links& links) {
  return ORVO_FIELDS(links, imprint, about, privacy, terms, contact, feedback);
}

Json toJson(const Requirements::AppVersion& version) {
  return ORVO_FIELDS(version, minBuild, message);
}

Json toJson(const Requirements::OSVersion& version) {
  return ORVO_FIELDS(version, minOsVersion, message);
}

Json toJson(const Requirements::KillSwitch& killSwitch) {
  return ORVO_FIELDS(killSwitch, kill, message);
}

Json toJson(const RatingPromptConfig& config) {
  return ORVO_FIELDS(config, sessionCountThreshold, activeSessionTimeThreshold, enabled,
                     repeatDelay);
}

Json toJson(const DisplayAd& ad) { return ORVO_FIELDS(ad, server, network, profile); }

Json toJson(const LinearStream& stream) {
  return ORVO_FIELDS(stream, id, label, description, iconID);
}

Json toJson(const Requirements& requirements) {
  return ORVO_FIELDS(requirements, appVersion, osVersion, killSwitch);
}

Json toJson(const Configuration::UpcomingEvents& events) { return ORVO_FIELDS(events, label, id); }

Json toJson(const Configuration& configuration) {
  return ORVO_FIELDS(configuration, systemViews, constants, colorPalette, links, requirements,
                     ratingPromptConfig, displayAd, linearStream, upcomingEvents, environment);
}

}  // namespace orvo::tool
