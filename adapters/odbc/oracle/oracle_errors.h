// Oracle's error numbers: which of them are failures of the connection.
//
// The driver passes the server's and the network layer's numbers on; all but the few below are
// database errors under their own number. What the driver raises itself has a state and no number.
#pragma once

#include "adapters/odbc/diagnosis.h"
#include "adapters/odbc/engine.h"

namespace sabrel::odbc {

[[nodiscard]] Meaning OracleMeaningOf(const Diagnosis& diagnosis);

}  // namespace sabrel::odbc
