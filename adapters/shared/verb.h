// What a failing statement was about to do; decides between native numbers that share a code.
#pragma once

#include <cstdint>
#include <string_view>

#include "adapters/shared/dialect/dialect.h"

namespace sabrel {

enum class Verb : std::uint8_t {
  kOther,
  kInsert,
  kUpdate,
  kUpdateOfReference,  // an UPDATE that sets a column which refers to another table
  kDelete,
};

[[nodiscard]] Verb VerbOf(dialect::StatementKind kind) noexcept;

}  // namespace sabrel
