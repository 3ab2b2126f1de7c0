// A call of a stored routine, built parameter by parameter.
//
// Parameters are appended as text with a type word; an empty value is null. A function's result
// position is one parameter more, appended first with an empty value. After `Execute` every out
// parameter and the result position can be read by 0-based index; an in-argument reads as it was
// appended, null where that was nothing.
//
//   call.ProcedureName("PKG.F"); call.AppendParameter("", "integer", ""); Use(call.Execute());
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "sabrel/platform/data_link.h"
#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/variant.h"

namespace sabrel {

class ProcedureCall {
 public:
  explicit ProcedureCall(std::shared_ptr<DataLink> link) : link_(std::move(link)) {}

  void ProcedureName(std::string_view name) { AssignText(call_.procedure, name); }
  void Host(std::string_view host) { AssignText(call_.address.host, host); }
  void Port(std::int32_t port) { call_.address.port = port; }
  void UserName(std::string_view user) { AssignText(call_.address.user, user); }
  void Password(std::string_view password) { AssignText(call_.address.password, password); }
  void TimeOut(std::int32_t timeout_s) { call_.address.timeout_s = timeout_s; }
  void AppendParameter(std::string_view value, std::string_view type_word, std::string_view name);

  /// Runs the call as one transaction and returns a function's result, null for a procedure.
  /// Cost: one round trip, two at a routine's first call. Errors: 6550 for an unknown routine or a
  /// wrong count of parameters, else the routine's
  Variant Execute();
  /// Errors: 9 when `index` is not in 0..parameters-1
  [[nodiscard]] Variant ParameterValue(std::int32_t index) const;

 private:
  std::shared_ptr<DataLink> link_;
  RoutineCall call_;
  RoutineOutcome outcome_;
};

}  // namespace sabrel
