#pragma once

#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Parsing/JSONValue.h>
#include <OrvoAPI/Platform/Data.h>

namespace orvo {

/// Reads a body of UTF-8 JSON, with or without a byte-order mark, at whose top level any value may
/// stand; fails with `JSONReaderError`. The value owns all that it shows; the body may go. Any
/// thread may call it at any time, and a document may end on another thread than it began on.
///
/// An integer beyond 64 bits reads as a double. Throws `std::bad_alloc` only when there is not even
/// memory for the error.
[[nodiscard]] Result<JSONValue> readJSON(const Data& data);

}  // namespace orvo
