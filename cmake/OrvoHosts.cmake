# The compiled-in hosts. They are checked here because a base URL without its trailing slash
# would only show as a wrong address at run time.
set(ORVO_PRODUCTION_URL "https://api.orvo.example/v3/" CACHE STRING "API base URL of production")
set(ORVO_QA_URL "https://api-qa.orvo.example/v3/" CACHE STRING "API base URL of QA")
set(ORVO_STAGING_URL "https://api-staging.orvo.example/v3/" CACHE STRING "API base URL of staging")
set(ORVO_RESOURCE_URL "https://resources.orvo.example/" CACHE STRING "Base URL of the resource host")

set(orvo_host_pattern "[A-Za-z0-9]([A-Za-z0-9.-]*[A-Za-z0-9])?(:[0-9]+)?")
foreach(name IN ITEMS PRODUCTION QA STAGING)
  if(NOT ORVO_${name}_URL MATCHES "^https://${orvo_host_pattern}/v3/$")
    message(FATAL_ERROR
      "ORVO_${name}_URL must read https://HOST/v3/, but is \"${ORVO_${name}_URL}\"")
  endif()
endforeach()
if(NOT ORVO_RESOURCE_URL MATCHES "^https://${orvo_host_pattern}/$")
  message(FATAL_ERROR
    "ORVO_RESOURCE_URL must read https://HOST/, but is \"${ORVO_RESOURCE_URL}\"")
endif()
