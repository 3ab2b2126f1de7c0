#include "sabrel/platform/error_handler.h"

#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/template_text.h"

namespace sabrel {

void ErrorHandler::Register(std::int32_t code, std::string_view message) {
  RaisingRuntimeErrors([&] { messages_.insert_or_assign(code, std::string(message)); });
}

void ErrorHandler::Raise(std::int32_t code, std::string_view module, std::string_view procedure,
                         const std::vector<std::string>& arguments) const {
  const auto message = messages_.find(code);
  // Unsigned, so that a negative code wraps instead of overflowing.
  const auto number = static_cast<std::int32_t>(static_cast<std::uint32_t>(kCodeBase) +
                                                static_cast<std::uint32_t>(code));
  throw RaisingRuntimeErrors([&] {
    RuntimeError failure(number, source_,
                         message == messages_.end() ? "Error " + std::to_string(code)
                                                    : FillTemplate(message->second, arguments));
    failure.Origin(module, procedure);
    return failure;
  });
}

}  // namespace sabrel
