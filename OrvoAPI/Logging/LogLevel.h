#pragma once

#include <OrvoAPI/Base/RawValue.h>

namespace orvo {

/// How severe a log message is. A value.
enum class LogLevel { fault, error, warning, info, default_ };

template <>
inline constexpr EnumCase enumCases<LogLevel>[] = {
    {"fault"}, {"error"}, {"warning"}, {"info"}, {"default"}};

}  // namespace orvo
