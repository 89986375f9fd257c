#include <OrvoAPI/Context/Response.h>

namespace orvo {

std::string Response::Error::description() const {
  return "badStatus " + std::to_string(as<badStatus>()->status);
}

Result<HTTPResult> Response::validate(const HTTPResult& result) {
  const int status = result.response.statusCode;
  if (status >= 400) return Failure{Error::badStatus{status}};
  return result;
}

}  // namespace orvo
