// What statements may reach: a site's tables and views, and Oracle's functions. What belongs to the
// engine or to this server, they may not.
//
// A user's text is judged by the names in it, before it is rewritten. What stored views lead to,
// the engine asks about whenever it prepares a statement; as it does so again after any change of
// the schema, for kept statements and for those of this server alike, names alone decide there,
// too.
#pragma once

#include <string_view>

namespace sabrel::sqlite {

class Connection;

/// Whether `name` belongs to this server or to the engine: their tables and functions begin with
/// SABREL_, SQLITE_ or PRAGMA_.
[[nodiscard]] bool IsOwnName(std::string_view name);
/// DUAL and the views of the dictionary, which each site has.
[[nodiscard]] bool IsDictionaryView(std::string_view name);
/// Throws ServerFailure 942 when a user's `text` has an own name.
void RefuseOwnNames(std::string_view text);

/// Whether a function of the engine itself is one of Oracle's, too.
[[nodiscard]] bool IsOraclesFunction(std::string_view upper_name);

/// Takes its modules from the connection and lets nothing be prepared that reaches what it must
/// not. Called once: each call would make the engine prepare all kept statements again.
void GuardStatements(Connection& connection);

}  // namespace sabrel::sqlite
