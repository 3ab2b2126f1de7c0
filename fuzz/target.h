// What the fuzz targets share.
//
// A target is a source file that defines `Check`: it reads its input, calls what it is about and
// requires what must hold for any input. A promise that is broken ends the process, as an exception
// that nothing documents does; the fuzzer then keeps the input.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/variant.h"

namespace sabrel::fuzz {

void Check(std::string_view input);

/// Says which promise is broken and by what, and aborts.
[[noreturn]] void Fail(std::string_view promise, std::string_view seen);
inline void Require(bool holds, std::string_view promise, std::string_view seen = {}) {
  if (!holds) Fail(promise, seen);
}

/// Whether `work` was done; any failure but a RuntimeError with one of `numbers` ends the process.
template <class Work>
bool DoneOr(std::initializer_list<RuntimeErrorNumber> numbers, Work&& work) {
  try {
    std::forward<Work>(work)();
    return true;
  } catch (const RuntimeError& failure) {
    for (const RuntimeErrorNumber number : numbers) {
      if (failure.Number() == static_cast<std::int32_t>(number)) return false;
    }
    Fail("fails with a documented number only",
         std::to_string(failure.Number()) + " " + failure.Description());
  }
}

/// Takes what a target needs off the front of its input; at the end there are zeros and empty
/// texts.
class Input {
 public:
  explicit Input(std::string_view bytes) : rest_(bytes) {}

  [[nodiscard]] bool AtEnd() const noexcept { return rest_.empty(); }
  [[nodiscard]] std::uint8_t Byte();
  /// 0 to `choices` - 1.
  [[nodiscard]] unsigned Choice(unsigned choices) { return Byte() % choices; }
  /// Little-endian.
  [[nodiscard]] std::uint64_t Bits(int bytes);
  /// As many bytes as the next one says.
  [[nodiscard]] std::string_view Text();
  /// A value of any kind that is no object; arrays are left out, too.
  [[nodiscard]] Variant Value();
  [[nodiscard]] std::string_view Rest() const noexcept { return rest_; }

 private:
  std::string_view rest_;
};

/// Kind and value, for messages.
[[nodiscard]] std::string Shown(const Variant& value);
/// As ==, but not-a-number equals itself and decimals are equal when their texts are.
[[nodiscard]] bool Same(const Variant& a, const Variant& b);

/// A folder of this process that is removed at its end.
[[nodiscard]] std::string TemporaryPath(const std::string& name);

}  // namespace sabrel::fuzz
