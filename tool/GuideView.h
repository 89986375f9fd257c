#pragma once

#include <OrvoAPI/Configuration/LinearStream.h>
#include <OrvoAPI/Linear/LinearProgramGuide.h>
#include <tool/Screen.h>

namespace orvo::tool {

/// How people see the programme guide: a strip of what is on around the present, and a table.
void drawGuide(Screen& screen, const LinearProgramGuide& guide, const LinearStream& stream,
               Date now);

}  // namespace orvo::tool
