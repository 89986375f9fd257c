#include <OrvoAPI/Version.h>

const double OrvoAPIVersionNumber = ORVO_API_VERSION_NUMBER;
const char* const OrvoAPIVersionString = ORVO_API_VERSION_STRING;
