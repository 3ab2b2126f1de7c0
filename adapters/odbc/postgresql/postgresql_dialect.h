// Oracle's statements as PostgreSQL takes them.
//
// Constants stay in the text, comments are taken out, names that Oracle writes in upper case become
// lower case as the server folds them, functions that the server answers otherwise are those of the
// schema sabrel_dictionary. A block becomes one DO statement, whose calls ask the catalogue whether
// they call a function or a procedure.
//
//   CompileForPostgresql("SELECT LIMIT FROM t").text  // SELECT "limit" FROM t
#pragma once

#include <string>
#include <string_view>

#include "adapters/odbc/engine.h"

namespace sabrel::odbc {

/// `statement` is what dialect::RequireOneStatement returned.
/// Errors: dialect::SyntaxFailure; 1008 for a bind parameter, 900 for a stored routine in PL/SQL
[[nodiscard]] Compiled CompileForPostgresql(std::string_view statement);

/// In front of a query that by its form gives few rows: behind a comment the driver sees no query
/// and opens no cursor, which would take a second round trip, and a transaction of its own whose
/// failing commit nobody is told of.
inline constexpr std::string_view kWithoutCursor = "/**/";

/// Behind a text constant, which the server would otherwise read as whatever its place wants: a
/// date by rules of its own.
inline constexpr std::string_view kTextConstantEnd = "::text";

/// The parts of a qualified name as Oracle's catalogue holds them, each as PostgreSQL's does.
[[nodiscard]] std::string PostgresqlName(std::string_view catalogue_name);

}  // namespace sabrel::odbc
