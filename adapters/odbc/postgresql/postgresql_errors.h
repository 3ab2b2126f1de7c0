// PostgreSQL's error codes (SQLSTATE) as the native numbers and connection codes that callers know.
//
// The driver gives one native number for every error of the server, so the state decides. The
// server's own functions raise "N" and the four digits of a native number, or 20000 to 20999 as
// RAISE_APPLICATION_ERROR has them. A login that is refused comes without a state of its own: there
// the server's text decides.
#pragma once

#include <optional>

#include "adapters/odbc/diagnosis.h"
#include "adapters/odbc/engine.h"

namespace sabrel::odbc {

[[nodiscard]] Meaning PostgresqlMeaningOf(const Diagnosis& diagnosis, Verb verb);
/// Nothing where the text says nothing of the login.
[[nodiscard]] std::optional<Meaning> PostgresqlMeaningOfRefusedLogin(const Diagnosis& diagnosis);

}  // namespace sabrel::odbc
