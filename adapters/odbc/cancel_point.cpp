#include "adapters/odbc/cancel_point.h"

#include "adapters/odbc/driver.h"

namespace sabrel::odbc {

void CancelPoint::Cancel() noexcept {
  const std::lock_guard lock(mutex_);
  if (statement_ != nullptr) SQLCancel(statement_);
}

}  // namespace sabrel::odbc
