#pragma once

#include <OrvoAPI/Futures/AnyError.h>

namespace orvo::detail {

/// Does what completes a future or promise in the end, and fails it with what that throws: nobody
/// else would complete it.
template <class Completable, class F>
void orFail(const Completable& completable, F&& f) {
  try {
    f();
  } catch (...) {
    completable.failure(AnyError::current());
  }
}

}  // namespace orvo::detail
