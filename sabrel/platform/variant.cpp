#include "sabrel/platform/variant.h"

#include "sabrel/platform/runtime_error.h"

namespace sabrel {

Variant Object::DefaultProperty() const { throw RuntimeError(RuntimeErrorNumber::kTypeMismatch); }

void Variant::RaiseOtherKind() { throw RuntimeError(RuntimeErrorNumber::kTypeMismatch); }

}  // namespace sabrel
