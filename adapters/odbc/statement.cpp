#include "adapters/odbc/statement.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <utility>

#include "adapters/odbc/driver.h"
#include "adapters/odbc/wide_text.h"

namespace sabrel::odbc {
namespace {

constexpr std::size_t kBufferBytes = std::size_t{1} << 20U;
constexpr std::size_t kMostRowsPerFetch = 500;
// Sign, digits of the largest exact number and its point; longer ones are read on their own.
constexpr std::size_t kNumberBytes = 64;
// Code units that a text's buffer holds: as wide as the column is declared, within limits.
constexpr std::size_t kMostTextUnits = 4001;
constexpr std::size_t kUnknownTextUnits = 1001;
// Drivers count in milliseconds of 32 bits.
constexpr std::int32_t kLongestTimeoutSeconds = 1000000;

// "2024-03-09" and with its time; a time alone is shorter than the one or the other.
constexpr SQLLEN kDateLength = 10;
constexpr SQLLEN kTimestampLength = 19;

std::size_t TextUnits(SQLLEN declared) {
  if (declared <= 0) return kUnknownTextUnits;
  return std::min(static_cast<std::size_t>(declared), kMostTextUnits - 1) + 1;
}

// What a driver is asked of a column it knows from the rows alone: for the concise type, and for
// SQLDescribeCol, one may ask the server's catalogue about each table.
SQLLEN AttributeOf(SQLHSTMT statement, std::size_t column, SQLUSMALLINT attribute) {
  SQLLEN value = 0;
  Require(SQLColAttributeW(statement, static_cast<SQLUSMALLINT>(column + 1), attribute, nullptr, 0,
                           nullptr, &value),
          SQL_HANDLE_STMT, statement);
  return value;
}

std::string LabelOf(SQLHSTMT statement, std::size_t column) {
  constexpr SQLSMALLINT kUnits = 300;
  std::u16string label(kUnits, u'\0');
  SQLSMALLINT bytes = 0;
  Require(SQLColAttributeW(statement, static_cast<SQLUSMALLINT>(column + 1), SQL_DESC_LABEL,
                           WideArgument(label), kUnits * sizeof(SQLWCHAR), &bytes, nullptr),
          SQL_HANDLE_STMT, statement);
  label.resize(
      std::clamp<std::size_t>(static_cast<std::size_t>(bytes) / sizeof(SQLWCHAR), 0, kUnits - 1));
  return ToUtf8(label);
}

}  // namespace

void AppendExactNumber(RowBlock& block, std::string_view text) {
  if (text.find('.') != std::string_view::npos &&
      text.find_first_of("eE") == std::string_view::npos) {
    text = text.substr(0, text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.remove_suffix(1);
  }
  std::int64_t whole = 0;
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, whole);
  if (read.ec == std::errc() && read.ptr == end) return block.AddWhole(whole);
  try {
    block.AddDecimal(Decimal::Parse(text));
  } catch (const RuntimeError&) {
    double number = 0.0;
    if (std::from_chars(text.data(), end, number).ec == std::errc::result_out_of_range) {
      throw DriverFailure({"22003", 1426, "a number that is too large for a double"});
    }
    block.AddDouble(number);
  }
}

Statement::Statement(void* connection, std::shared_ptr<CancelPoint> cancel_point)
    : cancel_point_(std::move(cancel_point)) {
  Require(SQLAllocHandle(SQL_HANDLE_STMT, connection, &handle_), SQL_HANDLE_DBC, connection);
  cancel_point_->Running(handle_);
}

Statement::~Statement() {
  cancel_point_->Running(nullptr);
  SQLFreeHandle(SQL_HANDLE_STMT, handle_);
}

void Statement::SetTimeout(std::int32_t timeout_s) {
  // A driver without time-outs: the caller's clock holds all the same.
  SQLSetStmtAttr(
      handle_, SQL_ATTR_QUERY_TIMEOUT,
      NumberArgument(static_cast<std::uintptr_t>(std::clamp(timeout_s, 0, kLongestTimeoutSeconds))),
      0);
}

void Statement::Execute(const std::u16string& text, std::int32_t timeout_s) {
  SetTimeout(timeout_s);
  SQLSetStmtAttr(handle_, SQL_ATTR_NOSCAN, NumberArgument(SQL_NOSCAN_ON), 0);
  Require(SQLExecDirectW(handle_, WideArgument(text), static_cast<SQLINTEGER>(text.size())),
          SQL_HANDLE_STMT, handle_);
  Describe();
}

std::int64_t Statement::RowsChanged() const noexcept {
  SQLLEN rows = -1;
  return SQL_SUCCEEDED(SQLRowCount(handle_, &rows)) ? static_cast<std::int64_t>(rows) : -1;
}

void Statement::ExecutePrepared(std::int32_t timeout_s) {
  SetTimeout(timeout_s);
  Require(SQLExecute(handle_), SQL_HANDLE_STMT, handle_);
  Describe();
}

void Statement::Describe() {
  SQLSMALLINT count = 0;
  Require(SQLNumResultCols(handle_, &count), SQL_HANDLE_STMT, handle_);
  columns_.resize(static_cast<std::size_t>(count));
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    Column& column = columns_[i];
    column.name = LabelOf(handle_, i);
    switch (const SQLLEN type = AttributeOf(handle_, i, SQL_DESC_TYPE); type) {
      case SQL_BIT:
      case SQL_TINYINT:
      case SQL_SMALLINT:
      case SQL_INTEGER:
      case SQL_BIGINT:
        column.kind = Kind::kWhole;
        column.cell_bytes = sizeof(std::int64_t);
        break;
      case SQL_NUMERIC:
      case SQL_DECIMAL:
        column.kind = Kind::kExact;
        column.cell_bytes = kNumberBytes;
        break;
      case SQL_REAL:
      case SQL_FLOAT:
      case SQL_DOUBLE:
        column.kind = Kind::kReal;
        column.cell_bytes = sizeof(double);
        break;
      default: {
        const SQLLEN length = AttributeOf(handle_, i, SQL_DESC_LENGTH);
        const bool has_date = length == kDateLength || length >= kTimestampLength;
        if (type == SQL_DATETIME && has_date) {
          column.kind = Kind::kDate;
          column.cell_bytes = sizeof(SQL_TIMESTAMP_STRUCT);
        } else {
          column.cell_bytes = TextUnits(length) * sizeof(SQLWCHAR);
        }
      }
    }
  }
  Bind();
}

void Statement::Bind() {
  if (columns_.empty()) return;
  std::size_t row_bytes = 0;
  for (const Column& column : columns_) row_bytes += column.cell_bytes + sizeof(SQLLEN);
  rows_per_fetch_ = std::clamp<std::size_t>(kBufferBytes / row_bytes, 1, kMostRowsPerFetch);
  Require(SQLSetStmtAttr(handle_, SQL_ATTR_ROW_ARRAY_SIZE, NumberArgument(rows_per_fetch_), 0),
          SQL_HANDLE_STMT, handle_);
  Require(SQLSetStmtAttr(handle_, SQL_ATTR_ROWS_FETCHED_PTR, &rows_fetched_, 0), SQL_HANDLE_STMT,
          handle_);
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    Column& column = columns_[i];
    column.cells.resize(column.cell_bytes * rows_per_fetch_);
    column.lengths.resize(rows_per_fetch_);
    SQLSMALLINT type = SQL_C_WCHAR;
    switch (column.kind) {
      case Kind::kWhole: type = SQL_C_SBIGINT; break;
      case Kind::kExact: type = SQL_C_CHAR; break;
      case Kind::kReal: type = SQL_C_DOUBLE; break;
      case Kind::kDate: type = SQL_C_TYPE_TIMESTAMP; break;
      case Kind::kText: break;
    }
    static_assert(sizeof(SQLLEN) == sizeof(std::int64_t));
    Require(SQLBindCol(handle_, static_cast<SQLUSMALLINT>(i + 1), type, column.cells.data(),
                       static_cast<SQLLEN>(column.cell_bytes), column.lengths.data()),
            SQL_HANDLE_STMT, handle_);
  }
}

std::vector<std::string> Statement::ColumnNames() const {
  std::vector<std::string> names;
  names.reserve(columns_.size());
  for (const Column& column : columns_) names.push_back(column.name);
  return names;
}

bool Statement::Fetch(RowBlock& block, std::size_t byte_limit) {
  if (columns_.empty()) return false;
  do {
    rows_fetched_ = 0;
    const SQLRETURN result = SQLFetch(handle_);
    if (result == SQL_NO_DATA) return false;
    Require(result, SQL_HANDLE_STMT, handle_);
    AppendRows(block, rows_fetched_);
  } while (block.Bytes() < byte_limit);
  return true;
}

void Statement::AppendRows(RowBlock& block, std::size_t rows) {
  for (std::size_t row = 0; row < rows; ++row) {
    for (std::size_t column = 0; column < columns_.size(); ++column) {
      AppendCell(block, column, row);
    }
    block.EndRow();
  }
}

void Statement::AppendCell(RowBlock& block, std::size_t column_index, std::size_t row) {
  const Column& column = columns_[column_index];
  const std::int64_t length = column.lengths[row];
  if (length == SQL_NULL_DATA) return block.AddNull();
  const char* const cell = column.cells.data() + row * column.cell_bytes;
  switch (column.kind) {
    case Kind::kWhole: {
      std::int64_t value = 0;
      std::memcpy(&value, cell, sizeof(value));
      return block.AddWhole(value);
    }
    case Kind::kReal: {
      double value = 0.0;
      std::memcpy(&value, cell, sizeof(value));
      return block.AddDouble(value);
    }
    case Kind::kExact:
      if (length < static_cast<std::int64_t>(column.cell_bytes) && length >= 0) {
        return AppendExactNumber(block, {cell, static_cast<std::size_t>(length)});
      }
      return AppendExactNumber(block, ToUtf8(WholeText(column_index, row, length)));
    case Kind::kDate: {
      SQL_TIMESTAMP_STRUCT parts{};
      std::memcpy(&parts, cell, sizeof(parts));
      const CivilDate civil{parts.year, parts.month,  parts.day,
                            parts.hour, parts.minute, parts.second};
      if (!Date::IsValidCivil(civil)) {
        throw DriverFailure({"22008", 0, "a date outside the years 100 to 9999"});
      }
      return block.AddDate(Date::FromCivil(civil));
    }
    case Kind::kText: return AppendText(block, column_index, row, length);
  }
}

void Statement::AppendText(RowBlock& block, std::size_t column_index, std::size_t row,
                           std::int64_t length) {
  const Column& column = columns_[column_index];
  utf8_.clear();
  const std::size_t capacity = column.cell_bytes - sizeof(SQLWCHAR);  // the last unit ends it
  if (length >= 0 && static_cast<std::size_t>(length) <= capacity) {
    const char* const cell = column.cells.data() + row * column.cell_bytes;
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
    AppendUtf8({reinterpret_cast<const char16_t*>(cell),
                static_cast<std::size_t>(length) / sizeof(SQLWCHAR)},
               utf8_);
  } else {
    AppendUtf8(WholeText(column_index, row, length), utf8_);
  }
  block.AddText(utf8_);
}

// A cell that its buffer cut off, read once more from its beginning. `length` is its size in bytes
// where the driver knows it.
std::u16string Statement::WholeText(std::size_t column, std::size_t row, std::int64_t length) {
  if (rows_per_fetch_ > 1) {
    Require(SQLSetPos(handle_, row + 1, SQL_POSITION, SQL_LOCK_NO_CHANGE), SQL_HANDLE_STMT,
            handle_);
  }
  constexpr std::size_t kFirstUnits = 65536;
  std::size_t units =
      length > 0 ? static_cast<std::size_t>(length) / sizeof(SQLWCHAR) + 1 : kFirstUnits;
  std::u16string text;
  while (true) {
    const std::size_t have = text.size();
    text.resize(have + units);
    SQLLEN left = 0;
    const SQLRETURN result =
        SQLGetData(handle_, static_cast<SQLUSMALLINT>(column + 1), SQL_C_WCHAR, text.data() + have,
                   static_cast<SQLLEN>(units * sizeof(SQLWCHAR)), &left);
    if (result == SQL_NO_DATA) {
      text.resize(have);
      return text;
    }
    Require(result, SQL_HANDLE_STMT, handle_);
    const bool is_cut =
        left == SQL_NO_TOTAL || left >= static_cast<SQLLEN>(units * sizeof(SQLWCHAR));
    if (!is_cut) {
      text.resize(have + static_cast<std::size_t>(std::max<SQLLEN>(left, 0)) / sizeof(SQLWCHAR));
      return text;
    }
    text.resize(have + units - 1);  // without the piece's closing unit
    units = left == SQL_NO_TOTAL ? units * 2
                                 : static_cast<std::size_t>(left) / sizeof(SQLWCHAR) - units + 2;
  }
}

}  // namespace sabrel::odbc
