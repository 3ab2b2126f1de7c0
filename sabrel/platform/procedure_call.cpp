#include "sabrel/platform/procedure_call.h"

#include "sabrel/platform/runtime_error.h"

namespace sabrel {

void ProcedureCall::AppendParameter(std::string_view value, std::string_view type_word,
                                    std::string_view name) {
  RaisingRuntimeErrors([&] {
    call_.parameters.push_back({std::string(value), std::string(type_word), std::string(name)});
  });
}

Variant ProcedureCall::Execute() {
  outcome_ = {};
  outcome_ = RaisingRuntimeErrors([&] { return Deref(link_).Call(call_); });
  return outcome_.result;
}

Variant ProcedureCall::ParameterValue(std::int32_t index) const {
  if (index < 0 || static_cast<std::size_t>(index) >= call_.parameters.size()) {
    throw RuntimeError(RuntimeErrorNumber::kSubscript);
  }
  const auto position = static_cast<std::size_t>(index);
  if (position < outcome_.outputs.size() && outcome_.outputs[position]) {
    return *outcome_.outputs[position];
  }
  const std::string& value = call_.parameters[position].value;
  return value.empty() ? Variant(Null{}) : Variant(value);
}

}  // namespace sabrel
