// One call of a packaged routine, and the lines that the trace shows of it.
//
// The pattern of every such call: append the parameters in order, trace the call as a PL/SQL block,
// execute, read what came back. A function's result position is a parameter without a value that is
// appended first. Procedure calls are not shown as they are sent: the trace is for reading.
//
//   PackageCall call("EA_Client.Add_Common_Entity");
//   call.Empty(kInteger).String(sEntityName).Integer(ordParent);
//   TraceCall("Add Common Entity Ready.", [&] { return ...; });
//   call.Execute();  const std::int32_t id = CVInt(call.Parameter(0));
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "sabrel/core/trace.h"
#include "sabrel/platform/procedure_call.h"
#include "sabrel/platform/variant.h"

namespace sabrel::MSabrel {

/// Type words of parameters.
inline constexpr std::string_view kInteger = "integer";
inline constexpr std::string_view kString = "string";

class PackageCall {
 public:
  /// Errors: what making the call object fails with. Cost: no round trip
  explicit PackageCall(std::string_view sProcedure);

  /// Another server than the session's own.
  PackageCall& Server(std::string_view host, std::int32_t port, std::string_view user,
                      std::string_view password, std::int32_t timeout_s);
  PackageCall& Integer(std::int32_t value);
  PackageCall& String(std::string_view value);
  /// A parameter without a value: null, an out parameter or the result position.
  PackageCall& Empty(std::string_view type_word);

  /// Errors: the routine's. Cost: one round trip, two at a routine's first call
  Variant Execute();
  /// By 0-based index, the result position counted. Errors: 9 for one that was not appended
  [[nodiscard]] Variant Parameter(std::int32_t index) const;

 private:
  std::shared_ptr<ProcedureCall> call_;
};

/// The caption, and the call as the trace shows it: "BEGIN call ; END;".
[[nodiscard]] std::string CallLines(std::string_view caption, std::string_view call_text);

/// Traces a call, whose text `make_text` makes, when tracing is on.
template <class MakeText>
void TraceCall(std::string_view caption, MakeText make_text) {
  TraceWhenOn([&] { return CallLines(caption, make_text()); });
}

[[nodiscard]] std::string ReturnedLine(std::int32_t value);
/// Hands "Function returned: value" to the trace without asking the switch.
void TraceReturned(std::int32_t value);

}  // namespace sabrel::MSabrel
