#include "adapters/shared/verb.h"

namespace sabrel {

Verb VerbOf(dialect::StatementKind kind) noexcept {
  switch (kind) {
    case dialect::StatementKind::kInsert: return Verb::kInsert;
    case dialect::StatementKind::kUpdate: return Verb::kUpdate;
    case dialect::StatementKind::kDelete: return Verb::kDelete;
    default: return Verb::kOther;
  }
}

}  // namespace sabrel
