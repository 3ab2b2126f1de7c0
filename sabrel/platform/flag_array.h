// Flags numbered from 1.
#pragma once

#include <cstdint>
#include <vector>

#include "sabrel/platform/runtime_error.h"

namespace sabrel {

class FlagArray {
 public:
  explicit FlagArray(std::int32_t count)
      : flags_(RaisingRuntimeErrors(
            [&] { return std::vector<bool>(count > 0 ? static_cast<std::size_t>(count) : 0); })) {}

  [[nodiscard]] std::int32_t Count() const noexcept {
    return static_cast<std::int32_t>(flags_.size());
  }
  /// Errors: 9 when `index` is not in 1..Count
  [[nodiscard]] bool Flag(std::int32_t index) const { return flags_[Position(index)]; }
  void Flag(std::int32_t index, bool value) { flags_[Position(index)] = value; }

 private:
  [[nodiscard]] std::size_t Position(std::int32_t index) const {
    if (index < 1 || index > Count()) throw RuntimeError(RuntimeErrorNumber::kSubscript);
    return static_cast<std::size_t>(index) - 1;
  }
  std::vector<bool> flags_;
};

}  // namespace sabrel
