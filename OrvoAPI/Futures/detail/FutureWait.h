#pragma once

#include <OrvoAPI/Futures/AnyError.h>

namespace orvo::detail {

/// Why a wait is refused on this thread, with what to do instead.
[[nodiscard]] AnyError refusedWait();
/// Why a wait has ended without a result, with what may be done about it.
[[nodiscard]] AnyError vainWait(bool isCancelled);

}  // namespace orvo::detail
