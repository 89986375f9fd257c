#pragma once

#include <OrvoAPI/Configuration/ColorPalette.h>
#include <OrvoAPI/Configuration/Constants.h>
#include <OrvoAPI/Configuration/DisplayAd.h>
#include <OrvoAPI/Configuration/LinearStream.h>
#include <OrvoAPI/Configuration/Links.h>
#include <OrvoAPI/Configuration/RatingPromptConfig.h>
#include <OrvoAPI/Configuration/Requirements.h>
#include <OrvoAPI/Context/Environment.h>
#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Parsing/JSONValue.h>

#include <optional>
#include <string>
#include <vector>

namespace orvo {

/// The remote configuration: what the service tells its clients before anything else.
struct Configuration {
  /// A page with a fixed place in the app, such as the start page.
  struct SystemView {
    /// "discover", "calendar" or "channels".
    std::string name;
    std::string label;
    std::string id;
  };
  /// The playlist of upcoming live events.
  struct UpcomingEvents {
    std::string label = "Live Events";
    /// A whole identifier, as the playlist operations take it.
    std::string id = "playlists::ee9c13f1-9670-4ef5-975a-940461886100";
  };

  /// Look views up by name: those missing from the document are missing here.
  std::vector<SystemView> systemViews;
  Constants constants;
  ColorPalette colorPalette;
  Links links;
  Requirements requirements = {};
  RatingPromptConfig ratingPromptConfig = {};
  std::optional<DisplayAd> displayAd = {};
  LinearStream linearStream = {};
  UpcomingEvents upcomingEvents = {};
  /// Where the configuration was fetched from; not part of the document.
  Environment environment = Environment::production;
};

/// Reads the configuration. Stateless; may be called from any thread.
struct ConfigurationParser {
  /// Strict about the sections without which a client cannot work ("nav", "colors", "links", the
  /// constants, "linear_stream_id", "tv"), lenient about the rest.
  [[nodiscard]] static Result<Configuration> parse(const JSONObject& json, Environment environment);
};

}  // namespace orvo
