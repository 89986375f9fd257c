#include <OrvoAPI/Context/Response.h>

namespace orvo {

Result<HTTPResult> Response::validate(const HTTPResult& result) {
  const int status = result.response.statusCode;
  if (status >= 400) return Failure{Error::badStatus{status}};
  return result;
}

}  // namespace orvo
