#include "sabrel/platform/runtime_error.h"

#include <new>
#include <utility>

#include "sabrel/platform/immortal.h"

namespace sabrel {
namespace {

constexpr std::string_view kSource = "Sabrel";

std::string UsualDescription(RuntimeErrorNumber number) {
  switch (number) {
    case RuntimeErrorNumber::kInvalidCall: return "Invalid procedure call or argument";
    case RuntimeErrorNumber::kOverflow: return "Overflow";
    case RuntimeErrorNumber::kOutOfMemory: return "Out of memory";
    case RuntimeErrorNumber::kSubscript: return "Subscript out of range";
    case RuntimeErrorNumber::kDivisionByZero: return "Division by zero";
    case RuntimeErrorNumber::kTypeMismatch: return "Type mismatch";
    case RuntimeErrorNumber::kInternal: return "Internal error";
    case RuntimeErrorNumber::kAccessFailure: return "Path/File access error";
    case RuntimeErrorNumber::kObjectNotSet: return "Object variable not set";
    case RuntimeErrorNumber::kInvalidUseOfNull: return "Invalid use of null";
    case RuntimeErrorNumber::kInvalidFileFormat: return "Invalid file format";
    case RuntimeErrorNumber::kCannotCreateObject: return "Cannot create object";
    case RuntimeErrorNumber::kDuplicateKey:
      return "This key is already associated with an element of this collection";
    case RuntimeErrorNumber::kNoCurrentRecord: return "No current record";
    case RuntimeErrorNumber::kNoSuchField: return "No such field in the record";
    case RuntimeErrorNumber::kObjectClosed: return "The recordset is not open";
  }
  return "Application-defined error";
}

}  // namespace

RuntimeError::RuntimeError(std::int32_t number, std::string source, std::string description,
                           std::string help_file, std::int32_t help_context) noexcept
    : number_(number), help_context_(help_context), texts_(NoTexts()) {
  if (source.empty() && description.empty() && help_file.empty()) return;
  try {
    texts_ = std::make_shared<const Texts>(
        Texts{std::move(source), std::move(description), std::move(help_file)});
  } catch (const std::bad_alloc&) {
    *this = RuntimeError(RuntimeErrorNumber::kOutOfMemory);
  }
}

RuntimeError::RuntimeError(RuntimeErrorNumber number) noexcept
    : number_(static_cast<std::int32_t>(RuntimeErrorNumber::kOutOfMemory)),
      help_context_(0),
      texts_(OutOfMemoryTexts()) {
  if (number == RuntimeErrorNumber::kOutOfMemory) return;
  try {
    *this = RuntimeError(number, UsualDescription(number));
  } catch (const std::bad_alloc&) {
    // Without memory for its description it stays number 7.
  }
}

RuntimeError::RuntimeError(RuntimeErrorNumber number, std::string description) noexcept
    : RuntimeError(static_cast<std::int32_t>(number), std::string(kSource),
                   std::move(description)) {}

RuntimeError::SharedTexts RuntimeError::NoTexts() noexcept {
  static internal::Immortal<const Texts> texts;
  return {SharedTexts(), &*texts};
}

RuntimeError::SharedTexts RuntimeError::OutOfMemoryTexts() noexcept {
  // Texts as short as these are kept inside a string object.
  static internal::Immortal<const Texts> texts(std::string(kSource), "Out of memory");
  return {SharedTexts(), &*texts};
}

void RuntimeError::Origin(std::string_view module, std::string_view procedure) {
  auto texts = std::make_shared<Texts>(*texts_);
  texts->module = module;
  texts->procedure = procedure;
  texts_ = std::move(texts);
}

RuntimeError FailureOf(const std::exception_ptr& exception) noexcept {
  try {
    std::rethrow_exception(exception);
  } catch (const RuntimeError& failure) {
    return failure;
  } catch (const std::bad_alloc&) {
    return RuntimeError(RuntimeErrorNumber::kOutOfMemory);
  } catch (const std::exception& foreign) {
    const char* const text = foreign.what();
    if (text == nullptr) return RuntimeError(RuntimeErrorNumber::kInternal);
    try {
      return {RuntimeErrorNumber::kInternal, text};
    } catch (const std::bad_alloc&) {
      return RuntimeError(RuntimeErrorNumber::kOutOfMemory);
    }
  } catch (...) {
    return RuntimeError(RuntimeErrorNumber::kInternal);
  }
}

RuntimeError CurrentFailure() noexcept { return FailureOf(std::current_exception()); }

void AssignText(std::string& text, std::string_view value) {
  RaisingRuntimeErrors([&] { text = value; });
}

std::int32_t CarriedCode(std::int32_t number) noexcept {
  const auto bits = static_cast<std::uint32_t>(number);
  return (bits >> 16U) == 0x8004U ? static_cast<std::int32_t>(bits & 0xFFFFU) : 0;
}

std::int32_t CarriedConnectionCode(std::int32_t number) noexcept {
  const std::int32_t code = CarriedCode(number) - kConnectionErrorBase;
  return code > 0 && code < 100 ? code : 0;
}

}  // namespace sabrel
