#pragma once

#include <OrvoAPI/Base/RawValue.h>

namespace orvo {

/// The kind of device that the app runs on, as the service tells them apart: by screen and way of
/// use, not by operating system. An app on Linux takes the one that it is used like: `appleTV` for
/// what a remote control drives on a television, `iPad` for a desktop, a laptop or a tablet,
/// `iPhone` for a phone. A value.
enum class Client { iPhone, iPad, appleTV, appleWatch };

/// What the service is told of the device's operating system. A value.
enum class OSFamily { ios, tvos, watchos };

/// What the service is told of the device's shape. A value.
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
