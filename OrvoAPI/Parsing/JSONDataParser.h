#pragma once

#include <OrvoAPI/Base/Data.h>
#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Parsing/JSONValue.h>

#include <string>
#include <vector>

namespace orvo {

/// Reads a body as JSON of an expected top-level shape. Stateless: any thread may call any
/// operation at any time. The result owns all that it shows: the body may be dropped, and a
/// document destroyed on another thread than it was read on.
///
/// A body is UTF-8, with or without a byte-order mark. One that cannot be read fails with
/// `JSONReaderError`, one of another shape with `JSONParseError::unexpectedType`; a single element
/// of the wrong kind makes the shape wrong. An integer beyond 64 bits reads as a double.
///
/// What a document costs in memory is bounded, however much a server packs into it: a body with
/// more than 4,194,304 commas, colons and opening brackets fails with `URLError` -1103. Reading
/// then takes at most 7 times the default bound of a body (112 MiB), the body not counted.
/// Throws `std::bad_alloc` only when there is not even memory for the error or for the copied
/// strings.
class JSONDataParser {
 public:
  JSONDataParser() = delete;

  [[nodiscard]] static Result<JSONObject> object(const Data& data);
  /// An array of objects.
  [[nodiscard]] static Result<JSONObjects> array(const Data& data);
  [[nodiscard]] static Result<std::vector<std::string>> stringArray(const Data& data);
  /// A value of any kind, also a bare string or number.
  [[nodiscard]] static Result<JSONValue> value(const Data& data);
};

}  // namespace orvo
