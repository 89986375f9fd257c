#pragma once

#include <OrvoAPI/Base/RawValue.h>

namespace orvo {

/// The kind of device that the app runs on, as the service distinguishes them: by screen and input,
/// not by operating system. An app on Linux chooses the one whose use is closest to its own:
/// `appleTV` for what a remote control drives on a television, `iPad` for a desktop, a laptop or a
/// tablet, `iPhone` for a phone. A value.
enum class Client { iPhone, iPad, appleTV, appleWatch };

/// The operating-system family that the service is told. A value.
enum class OSFamily { ios, tvos, watchos };

/// The device category that the service is told. A value.
enum class Category { smartphone, tablet, tv, watch };

template <>
inline constexpr EnumCase enumCases<Client>[] = {{"iPhone"}, {"iPad"}, {"appleTV"}, {"appleWatch"}};

template <>
inline constexpr EnumCase enumCases<OSFamily>[] = {{"ios"}, {"tvos"}, {"watchos"}};

template <>
inline constexpr EnumCase enumCases<Category>[] = {{"smartphone"},
                                                   {"tablet"},
                                                   {"tv", "smart_tv"},  // the service knows no "tv"
                                                   {"watch"}};

/// The operating-system family of the client's devices.
[[nodiscard]] constexpr OSFamily osFamily(Client client) {
  switch (client) {
    case Client::iPhone:
    case Client::iPad:
      return OSFamily::ios;
    case Client::appleTV:
      return OSFamily::tvos;
    case Client::appleWatch:
      break;
  }
  return OSFamily::watchos;
}

/// The category of the client's devices.
[[nodiscard]] constexpr Category category(Client client) {
  switch (client) {
    case Client::iPhone:
      return Category::smartphone;
    case Client::iPad:
      return Category::tablet;
    case Client::appleTV:
      return Category::tv;
    case Client::appleWatch:
      break;
  }
  return Category::watch;
}

}  // namespace orvo
