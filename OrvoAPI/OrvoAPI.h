#pragma once

/// Everything but the headers that are included on purpose: the coroutine support
/// (Futures/Coroutine.h) and the test kit (Testing/).

#include <OrvoAPI/Platform/ConsoleSink.h>
#include <OrvoAPI/Platform/Fatal.h>
#include <OrvoAPI/Platform/QueueLabels.h>
#include <OrvoAPI/Platform/RawValue.h>
#include <OrvoAPI/Platform/Shared.h>
#include <OrvoAPI/Platform/URL.h>

#include <OrvoAPI/Parsing/DateFormatError.h>
#include <OrvoAPI/Parsing/DateFormatter.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <OrvoAPI/Parsing/JSONNode.h>
#include <OrvoAPI/Parsing/JSONParseError.h>
#include <OrvoAPI/Parsing/JSONReaderError.h>
#include <OrvoAPI/Parsing/JSONValue.h>

#include <OrvoAPI/Context/Environment.h>

#include <OrvoAPI/Version.h>
