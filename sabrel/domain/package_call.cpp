#include "sabrel/domain/package_call.h"

#include "sabrel/platform/platform.h"

namespace sabrel::MSabrel {

PackageCall::PackageCall(std::string_view sProcedure) {
  const auto rowlink = CurrentPlatform().rowlink;
  call_ = rowlink->MakeProcedureCall();
  Deref(call_).ProcedureName(sProcedure);
}

PackageCall& PackageCall::Server(std::string_view host, std::int32_t port, std::string_view user,
                                 std::string_view password, std::int32_t timeout_s) {
  call_->Host(host);
  call_->Port(port);
  call_->UserName(user);
  call_->Password(password);
  call_->TimeOut(timeout_s);
  return *this;
}

PackageCall& PackageCall::Integer(std::int32_t value) {
  call_->AppendParameter(std::to_string(value), kInteger, "");
  return *this;
}

PackageCall& PackageCall::String(std::string_view value) {
  call_->AppendParameter(value, kString, "");
  return *this;
}

PackageCall& PackageCall::Empty(std::string_view type_word) {
  call_->AppendParameter("", type_word, "");
  return *this;
}

Variant PackageCall::Execute() { return call_->Execute(); }

Variant PackageCall::Parameter(std::int32_t index) const { return call_->ParameterValue(index); }

std::string CallLines(std::string_view caption, std::string_view call_text) {
  return std::string(caption) + "\r\n" + QueryLine("BEGIN " + std::string(call_text) + " ; END;");
}

std::string ReturnedLine(std::int32_t value) {
  return "Function returned: " + std::to_string(value);
}

void TraceReturned(std::int32_t value) {
  const auto services = CurrentPlatform().services;
  services->WriteTrace(ReturnedLine(value));
}

}  // namespace sabrel::MSabrel
