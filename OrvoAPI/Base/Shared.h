#pragma once

#include <memory>

namespace orvo {

/// An immutable value with shared ownership: copying it copies a pointer. Null means none.
template <class T>
using Shared = std::shared_ptr<const T>;

}  // namespace orvo
