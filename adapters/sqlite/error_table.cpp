#include "adapters/sqlite/error_table.h"

#include <sqlite3.h>

#include <charconv>

namespace sabrel::sqlite {
namespace {

/// A row of the table: a code (0 in its low byte: any extension of it), a piece of the engine's
/// text ("" for any), the native number and its message; "$" in the message takes what follows the
/// piece.
struct Row {
  int code;
  std::string_view needle;
  std::int32_t number;
  std::string_view message;
};

// Most specific first.
constexpr Row kRows[] = {
    {SQLITE_CONSTRAINT_UNIQUE, "UNIQUE constraint failed: ", 1, "unique constraint ($) violated"},
    {SQLITE_CONSTRAINT_PRIMARYKEY, "UNIQUE constraint failed: ", 1,
     "unique constraint ($) violated"},
    {SQLITE_CONSTRAINT_UNIQUE, "", 1, "unique constraint violated"},
    {SQLITE_CONSTRAINT_PRIMARYKEY, "", 1, "unique constraint violated"},
    {SQLITE_CONSTRAINT_ROWID, "", 1, "unique constraint violated"},
    {SQLITE_CONSTRAINT_NOTNULL, "NOT NULL constraint failed: ", 1400,
     "cannot insert NULL into ($)"},
    {SQLITE_CONSTRAINT_CHECK, kWidthCheck, 12899, "value too large for column $"},
    {SQLITE_CONSTRAINT_CHECK, kTextCheck, 932, "inconsistent datatypes: text due in $"},
    {SQLITE_CONSTRAINT_CHECK, kNoDateCheck, 932,
     "inconsistent datatypes: expected NUMBER got DATE for column $"},
    {SQLITE_CONSTRAINT_CHECK, kNumberCheck, 1722, "invalid number for column $"},
    {SQLITE_CONSTRAINT_CHECK, kPrecisionCheck, 1438,
     "value larger than specified precision allowed for column $"},
    {SQLITE_CONSTRAINT_CHECK, kOverflowCheck, 1426, "numeric overflow for column $"},
    {SQLITE_CONSTRAINT_CHECK, kDateCheck, 1861,
     "literal does not match format string: no date for column $"},
    {SQLITE_CONSTRAINT_CHECK, "failed: ", 2290, "check constraint ($) violated"},
    {SQLITE_CONSTRAINT_DATATYPE, "", 1722, "invalid number"},
    // ON DELETE RESTRICT, which is the parent's.
    {SQLITE_CONSTRAINT_TRIGGER, "FOREIGN KEY constraint failed", 2292,
     "integrity constraint violated - child record found"},
    {SQLITE_CONSTRAINT_TRIGGER, "", 20000, "$"},
    {SQLITE_CONSTRAINT, "", 2290, "constraint violated"},
    {SQLITE_MISMATCH, "", 1722, "invalid number"},
    {SQLITE_TOOBIG, "", 1489, "result of string concatenation is too long"},
    {SQLITE_NOMEM, "", 4030, "out of process memory"},
    {SQLITE_FULL, "", 1653, "unable to extend the file: the disk is full"},
    {SQLITE_CORRUPT, "", 1578, "the file is damaged"},
    {SQLITE_NOTADB, "", 1578, "the file is not a database"},
    {SQLITE_READONLY, "", 16000,
     "the file is open for read-only access: changes want a writable file, and reading, too, a "
     "writable folder"},
    {SQLITE_CANTOPEN, "", 1157, "cannot open the file"},
    {SQLITE_IOERR_NOMEM, "", 4030, "out of process memory"},
    {SQLITE_IOERR, "", 1115, "I/O error on the file"},
    {SQLITE_BUSY, "", 54, "resource busy: another session holds the lock of the file"},
    {SQLITE_PROTOCOL, "", 54, "resource busy: the file's locks are held"},
    {SQLITE_LOCKED, "", 54, "resource busy: the object is in use by this session"},
    {SQLITE_INTERRUPT, "", 1013, "user requested cancel of current operation"},
    {SQLITE_PERM, "", 1031, "insufficient privileges"},
    {SQLITE_AUTH, "", 1031, "insufficient privileges"},
    {SQLITE_RANGE, "", 1008, "not all variables bound"},
    {SQLITE_ERROR, "no such table: ", 942, "table or view does not exist: $"},
    {SQLITE_ERROR, "no such view: ", 942, "table or view does not exist: $"},
    {SQLITE_ERROR, "no such module: ", 942, "table or view does not exist: it is one of $"},
    {SQLITE_ERROR, "use DROP ", 942, "table or view does not exist"},
    {SQLITE_ERROR, "no such index: ", 1418, "specified index does not exist: $"},
    {SQLITE_ERROR, "no such trigger: ", 4080, "trigger does not exist: $"},
    {SQLITE_ERROR, "no such column: ", 904, "invalid identifier: $"},
    {SQLITE_ERROR, "no such function: ", 904, "invalid identifier: $"},
    {SQLITE_ERROR, "has no column named ", 904, "invalid identifier: $"},
    {SQLITE_ERROR, "unknown column ", 904, "invalid identifier: $"},
    {SQLITE_ERROR, "ambiguous column name: ", 918, "column ambiguously defined: $"},
    {SQLITE_ERROR, "syntax error", 900, "invalid SQL statement"},
    {SQLITE_ERROR, "incomplete input", 936, "missing expression: the statement ends too early"},
    {SQLITE_ERROR, "unrecognized token", 911, "invalid character"},
    {SQLITE_ERROR, "sub-select returns", 913, "too many values"},
    {SQLITE_ERROR, "all VALUES must have", 947, "not enough values"},
    {SQLITE_ERROR, "do not have the same number of result columns", 1789,
     "query block has incorrect number of result columns"},
    {SQLITE_ERROR, "there is already", 955, "name is already used by an existing object"},
    {SQLITE_ERROR, "already exists", 955, "name is already used by an existing object"},
    {SQLITE_ERROR, "duplicate column name: ", 957, "duplicate column name: $"},
    {SQLITE_ERROR, "wrong number of arguments to function ", 909, "invalid number of arguments: $"},
    {SQLITE_ERROR, "misuse of aggregate", 934, "group function is not allowed here"},
    {SQLITE_ERROR, "misuse of window", 30483, "window functions are not allowed here"},
    {SQLITE_ERROR, "non-deterministic functions", 1743, "only pure functions can be indexed"},
    {SQLITE_ERROR, "GROUP BY clause is required before HAVING", 979, "not a GROUP BY expression"},
    {SQLITE_ERROR, "ORDER BY term", 1785, "ORDER BY item must be the number of a select item"},
    {SQLITE_ERROR, "because it is a view", 1732, "data manipulation not legal on this view"},
    {SQLITE_ERROR, "may not be ", 1031, "insufficient privileges"},
    {SQLITE_ERROR, "foreign key mismatch", 2270, "no matching unique or primary key"},
    {SQLITE_ERROR, "more than one primary key", 2260, "table can have only one primary key"},
    {SQLITE_ERROR, "ESCAPE expression must be", 1425, "escape character must be one character"},
    {SQLITE_ERROR, "Cannot add a column with non-constant default", 900,
     "an added column with a computed default, such as a date, is not supported: add it without "
     "one, then UPDATE the rows"},
    {SQLITE_ERROR, "pattern too complex", 1460,
     "unreasonable conversion requested: a pattern of LIKE has at most 4000 bytes"},
    {SQLITE_ERROR, "integer overflow", 1426, "numeric overflow"},
    {SQLITE_ERROR, "no tables specified", 923, "FROM keyword not found where expected"},
    {SQLITE_ERROR, "row value misused", 920, "invalid relational operator"},
    {SQLITE_ERROR, "too many ", 1745, "the statement is too large for this server"},
    {SQLITE_ERROR, "unknown database ", 1918, "user does not exist: $"},
    {SQLITE_ERROR, " columns for '", 1730, "invalid number of column names specified"},
    {SQLITE_ERROR, " is circularly defined", 1731, "circular view definition encountered"},
    {SQLITE_ERROR, "Expression tree is too large", 1745, "the expression is nested too deeply"},
    {SQLITE_ERROR, "parser stack overflow", 1745, "the expression is nested too deeply"},
};

/// "T has 3 columns but 4 values were supplied" and "4 values for 3 columns" as too many or too few
/// values.
bool CountMismatch(std::string_view text, NativeError& error) {
  const auto number_before = [text](std::string_view words) -> long {
    const std::size_t at = text.find(words);
    if (at == std::string_view::npos) return -1;
    std::size_t start = at;
    while (start > 0 && text[start - 1] >= '0' && text[start - 1] <= '9') --start;
    long number = -1;
    std::from_chars(text.data() + start, text.data() + at, number);
    return number;
  };
  const long values = number_before(" value");
  const long columns = number_before(" column");
  if (values < 0 || columns < 0) return false;
  error = values > columns ? NativeError{913, "too many values"}
                           : NativeError{947, "not enough values"};
  return true;
}

NativeError ForeignKeyError(Verb verb) {
  if (verb == Verb::kDelete || verb == Verb::kUpdate) {
    return {2292, "integrity constraint violated - child record found"};
  }
  return {2291, "integrity constraint violated - parent key not found"};
}

std::string Filled(std::string_view message, std::string_view rest) {
  std::string filled(message);
  if (const std::size_t at = filled.find('$'); at != std::string::npos) filled.replace(at, 1, rest);
  return filled;
}

}  // namespace

NativeError NativeErrorOf(int code, std::string_view text, Verb verb) {
  if (code == SQLITE_CONSTRAINT_FOREIGNKEY) return ForeignKeyError(verb);
  NativeError error;
  if (code == SQLITE_ERROR && CountMismatch(text, error)) return error;
  for (const Row& row : kRows) {
    const bool same_code = row.code > 0xFF ? row.code == code : row.code == (code & 0xFF);
    if (!same_code) continue;
    const std::size_t at = text.find(row.needle);
    if (at == std::string_view::npos) continue;
    error.number = row.number;
    error.message = Filled(row.message, text.substr(at + row.needle.size()));
    const bool is_update = verb == Verb::kUpdate || verb == Verb::kUpdateOfReference;
    if (error.number == 1400 && (is_update || verb == Verb::kDelete)) {  // ON DELETE SET NULL
      error.number = 1407;
      error.message = Filled("cannot update ($) to NULL", text.substr(at + row.needle.size()));
    }
    return error;
  }
  return {600, "the engine refused the statement"};
}

}  // namespace sabrel::sqlite
