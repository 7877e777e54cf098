// Defines Status, the result of an operation that can fail: a code and a message.
// A Status is a plain value; it owns its message.
#pragma once

#include <string>

namespace Orlo {

class Status {
 public:
  // Codes compare with plain numbers: status.GetCode() == 2.
  enum StatusCode {
    kOk = 0,              // success
    kNotApplicable = 1,   // the operation does not apply to this block
    kFailed = 2,          // the operation failed
    kInvalidArgument = 3  // an argument is not valid
  };

  Status() = default;
  Status(StatusCode code, std::string message) : m_code(code), m_message(std::move(message)) {}

  void Set(StatusCode code, const std::string& message) {
    m_code = code;
    m_message = message;
  }

  StatusCode GetCode() const { return m_code; }
  const std::string& GetMessage() const { return m_message; }
  bool IsOk() const { return m_code == kOk; }

 private:
  StatusCode m_code = kOk;
  std::string m_message;
};

}  // namespace Orlo

// Returns from the enclosing function when `expr` yields a Status that is not ok.
#define ORLO_RETURN_IF_ERROR(expr)                 \
  do {                                             \
    ::Orlo::Status orlo_status_ = (expr);          \
    if (!orlo_status_.IsOk()) return orlo_status_; \
  } while (false)
