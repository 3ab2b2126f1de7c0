// Trace lines: written only while tracing is on, which is asked before each of them.
//
//   TraceWhenOn([&] { return "DoesTableExists succeeded for T.\r\n" + QueryLine(sql); });
#pragma once

#include <string>
#include <string_view>

#include "sabrel/platform/platform.h"

namespace sabrel::MSabrel {

/// The statement as trace and log show it.
[[nodiscard]] inline std::string QueryLine(std::string_view sSql) {
  return std::string("Query: ").append(sSql);
}

/// Writes the line that `make_text` makes, which is called only when it is wanted. Errors: of the
/// services
template <class MakeText>
void TraceWhenOn(Services& services, MakeText make_text) {
  if (services.TraceSwitch()) services.WriteTrace(make_text());
}

/// The same with the thread's services, which are held: they may run the host.
template <class MakeText>
void TraceWhenOn(MakeText make_text) {
  const auto services = CurrentPlatform().services;
  TraceWhenOn(*services, make_text);
}

}  // namespace sabrel::MSabrel
