// The table that CREATE TABLE ... AS SELECT makes.
//
// The engine would forget the types of the query's columns. Here they come from the tables that the
// query reads, from its casts, else from the values of its first rows. A column that nothing gives
// a type takes values of every type.
#pragma once

#include <string>
#include <string_view>

namespace sabrel::sqlite {

class Server;

/// The list of columns, "(A NUMBER(5), B DATE)", of a table that takes the rows of `query`. Runs
/// the query until each column has a type.
/// Errors (ServerFailure): the query's, 1723 for a column of NULL
[[nodiscard]] std::string ColumnsFor(Server& server, std::string_view query);

}  // namespace sabrel::sqlite
