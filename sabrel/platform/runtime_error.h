// The one exception type that crosses the component's surface, and the numbers it carries.
//
// A failure is a number with a source and a description. Three ranges of numbers exist: small ones
// for run-time failures (13 type mismatch, 94 invalid use of null, ...), `0x80040000 + code` for
// the component's own codes, and the two ranges below for what the Data Server reports. Nothing
// else is thrown: a foreign exception is turned into number 51, memory exhaustion into number 7.
// Making, copying and catching a failure never fails: one whose texts find no memory is a number 7.
//
//   try { ... } catch (const sabrel::RuntimeError& failure) { std::cerr << failure.Description(); }
#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace sabrel {

/// Numbers of run-time failures that callers test for.
enum class RuntimeErrorNumber : std::int32_t {
  kInvalidCall = 5,
  kOverflow = 6,
  kOutOfMemory = 7,
  kSubscript = 9,
  kDivisionByZero = 11,
  kTypeMismatch = 13,
  kInternal = 51,
  kAccessFailure = 75,  // a file or terminal that cannot be opened, read or written
  kObjectNotSet = 91,
  kInvalidUseOfNull = 94,
  kInvalidFileFormat = 321,   // a file whose contents are not what they should be
  kCannotCreateObject = 429,  // a program that is not installed cannot be started
  kDuplicateKey = 457,
  kNoCurrentRecord = 3021,
  kNoSuchField = 3265,
  kObjectClosed = 3704,
};

/// Base of every number that carries a code in its low 16 bits.
inline constexpr std::int32_t kCodeBase = static_cast<std::int32_t>(0x80040000U);
/// The code that marks a database failure; its native number stays with the data-access layer.
inline constexpr std::int32_t kDatabaseErrorCode = 28004;
/// A connection failure with code c carries this plus c.
inline constexpr std::int32_t kConnectionErrorBase = 28100;

/// Connection-failure codes of the Data Server, as users are told about them.
enum class ConnectionFailure : std::int32_t {
  kConnectTimeOut = 23,
  kReceiveTimeOut = 24,
  kRefusedOrSevered = 30,
  kHostUnknown = 31,
  kNetworkFailed = 33,
};

class RuntimeError : public std::exception {
 public:
  RuntimeError(std::int32_t number, std::string source, std::string description,
               std::string help_file = {}, std::int32_t help_context = 0) noexcept;

  /// A run-time failure with its usual English description.
  explicit RuntimeError(RuntimeErrorNumber number) noexcept;
  /// The same with a description of its own.
  RuntimeError(RuntimeErrorNumber number, std::string description) noexcept;

  // Copies share the texts; there are no moves, so that every failure has some.
  RuntimeError(const RuntimeError&) noexcept = default;
  RuntimeError& operator=(const RuntimeError&) noexcept = default;
  ~RuntimeError() override = default;

  [[nodiscard]] std::int32_t Number() const noexcept { return number_; }
  [[nodiscard]] const std::string& Source() const noexcept { return texts_->source; }
  [[nodiscard]] const std::string& Description() const noexcept { return texts_->description; }
  [[nodiscard]] const std::string& HelpFile() const noexcept { return texts_->help_file; }
  [[nodiscard]] std::int32_t HelpContext() const noexcept { return help_context_; }
  /// Module and procedure that raised a component code; empty for every other failure.
  [[nodiscard]] const std::string& Module() const noexcept { return texts_->module; }
  [[nodiscard]] const std::string& Procedure() const noexcept { return texts_->procedure; }
  void Origin(std::string_view module, std::string_view procedure);

  [[nodiscard]] const char* what() const noexcept override { return texts_->description.c_str(); }

 private:
  struct Texts {
    std::string source = {};
    std::string description = {};
    std::string help_file = {};
    std::string module = {};
    std::string procedure = {};
  };
  using SharedTexts = std::shared_ptr<const Texts>;
  static SharedTexts NoTexts() noexcept;
  static SharedTexts OutOfMemoryTexts() noexcept;

  std::int32_t number_;
  std::int32_t help_context_;
  SharedTexts texts_;
};

static_assert(std::is_nothrow_copy_constructible_v<RuntimeError> &&
              std::is_nothrow_copy_assignable_v<RuntimeError>);

/// The failure that `exception` stands for: itself when it is a RuntimeError, number 7 for
/// exhausted memory, number 51 with its text for anything else. Errors: none
[[nodiscard]] RuntimeError FailureOf(const std::exception_ptr& exception) noexcept;

/// The failure now being handled; to be called inside a `catch` only.
[[nodiscard]] RuntimeError CurrentFailure() noexcept;

/// What `work` fails with; nothing when it does not. Callers deal with a failure after it was
/// caught, so that to host code that runs meanwhile (a message box) there is no current error any
/// more.
template <class Work>
[[nodiscard]] std::optional<RuntimeError> FailureIn(Work&& work) {
  try {
    std::forward<Work>(work)();
    return std::nullopt;
  } catch (...) {
    return CurrentFailure();
  }
}

/// Runs `work`, which allocates or has the host's own code as a part: whatever that throws reaches
/// the caller as a RuntimeError.
template <class Work>
decltype(auto) RaisingRuntimeErrors(Work&& work) {
  try {
    return std::forward<Work>(work)();
  } catch (const RuntimeError&) {
    throw;
  } catch (...) {
    throw CurrentFailure();
  }
}

/// Replaces `text`. Errors: 7, `text` being what it was
void AssignText(std::string& text, std::string_view value);

/// The code that `number` carries: its low 16 bits when the high ones are 0x8004, else 0.
[[nodiscard]] std::int32_t CarriedCode(std::int32_t number) noexcept;

/// The connection-failure code that `number` carries, else 0.
[[nodiscard]] std::int32_t CarriedConnectionCode(std::int32_t number) noexcept;

/// Dereferences what may be absent: an absent object raises 91 instead of crashing.
template <class Pointer>
[[nodiscard]] decltype(auto) Deref(const Pointer& pointer) {
  if (!pointer) throw RuntimeError(RuntimeErrorNumber::kObjectNotSet);
  return *pointer;
}

}  // namespace sabrel
