#pragma once

#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Parsing/JSONValue.h>

#include <string>

namespace orvo {

/// What the service asks of an app before it may run. The library carries the values only; the app
/// compares them with what it is and acts. By default each asks for nothing.
struct Requirements {
  /// Which builds of the app may run.
  struct AppVersion {
    /// The lowest build of the app that may run.
    std::string minBuild = "0.1.0";
    /// To be shown when the requirement is not met.
    std::string message = {};
  };
  /// Which versions of the operating system the app may run on.
  struct OSVersion {
    /// The lowest version of the operating system on which the app may run.
    std::string minOsVersion = "0.1.0";
    /// To be shown when the requirement is not met.
    std::string message = {};
  };
  /// Whether the app may run at all.
  struct KillSwitch {
    /// Whether the app is switched off.
    bool kill = false;
    /// To be shown when it is.
    std::string message = {};
  };

  AppVersion appVersion = {};
  OSVersion osVersion = {};
  KillSwitch killSwitch = {};
};

/// Reads the section "app_update". Stateless; may be called from any thread.
struct AppVersionParser {
  [[nodiscard]] static Result<Requirements::AppVersion> parse(const JSONObject& json);
};

/// Reads the section "device_update". Stateless; may be called from any thread.
struct OSVersionParser {
  [[nodiscard]] static Result<Requirements::OSVersion> parse(const JSONObject& json);
};

/// Reads the section "end_of_life". Stateless; may be called from any thread.
struct KillSwitchParser {
  [[nodiscard]] static Result<Requirements::KillSwitch> parse(const JSONObject& json);
};

}  // namespace orvo
