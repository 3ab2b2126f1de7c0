// A prepared statement of the engine.
//
// Connection::Prepare hands it out and takes it back for the next use of the same text. A result
// code that tells of a failure becomes one in Connection::Fail.
//
//   Statement find = connection.Prepare("SELECT name FROM t WHERE id = ?1");
//   find.Bind(1, std::int64_t{7});
//   if (find.Step()) Use(find.Column(0).text);
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "adapters/shared/verb.h"
#include "adapters/sqlite/value.h"
#include "sabrel/platform/row_block.h"

struct sqlite3_stmt;

namespace sabrel::sqlite {

class Connection;

/// A prepared statement while it is used; goes back to its connection's cache when it is done with.
class Statement {
 public:
  Statement(Connection& connection, sqlite3_stmt* handle, std::string key, Verb verb);
  ~Statement();
  Statement(Statement&& other) noexcept;
  Statement& operator=(Statement&&) = delete;
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  /// 1-based.
  void Bind(int index, const Value& value);
  void Bind(int index, std::string_view text);
  void Bind(int index, std::int64_t number);
  /// Moves to the next row; false at the end. Errors: the statement's
  bool Step();
  /// Steps past all rows.
  void RunToEnd();
  /// Ends the run; bound values stay.
  void Reset() noexcept;
  [[nodiscard]] int Parameters() const noexcept;
  [[nodiscard]] int Columns() const noexcept;
  [[nodiscard]] std::string_view ColumnName(int column) const;
  /// As the table declares it; empty for what is no plain column.
  [[nodiscard]] std::string_view DeclaredType(int column) const;
  /// Errors (ServerFailure): 1426 for infinity
  [[nodiscard]] Value Column(int column) const;
  [[nodiscard]] bool IsReadOnly() const noexcept;
  /// Appends the current row.
  void AppendRow(RowBlock& block) const;

 private:
  [[nodiscard]] double RealColumn(int column) const;
  void AppendCell(RowBlock& block, int column) const;
  Connection* connection_;
  sqlite3_stmt* handle_;
  std::string key_;  // empty: not kept
  Verb verb_;
};

}  // namespace sabrel::sqlite
