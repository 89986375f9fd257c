#pragma once

#include <OrvoAPI/Base/Date.h>
#include <OrvoAPI/Platform/Clock.h>

#include <memory>

namespace orvo::tool {

/// The time of day as commands see it; of a run that is replayed, what it was then. Used by the
/// main thread.

/// Now; or, once it is held, the moment at which a run began, so that what is asked for depends on
/// nothing else.
[[nodiscard]] Date present();
/// A clock that goes on in any case.
[[nodiscard]] std::shared_ptr<const Clock> presentClock();

/// Holds the present from now on.
void holdPresent();
/// The same, and sets the clock to that moment.
void holdPresent(Date moment);

}  // namespace orvo::tool
