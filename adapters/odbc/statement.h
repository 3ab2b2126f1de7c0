// One statement on its way through the driver, and its rows in blocks.
//
// Columns are bound to buffers of many rows at once. A text that is longer than its buffer is
// fetched on its own, so that text of any length comes out whole. Used by its connection's worker
// only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/odbc/cancel_point.h"
#include "sabrel/platform/row_block.h"

namespace sabrel::odbc {

class Statement {
 public:
  /// `connection` is a driver handle that must outlive this.
  Statement(void* connection, std::shared_ptr<CancelPoint> cancel_point);
  ~Statement();
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  /// Sends `text`; the driver is told to give up after `timeout_s` seconds (0: never), which also
  /// holds for fetching. Errors: DriverFailure
  void Execute(const std::u16string& text, std::int32_t timeout_s);
  /// Of an INSERT, UPDATE, DELETE or MERGE; negative where the driver does not know. No round trip.
  [[nodiscard]] std::int64_t RowsChanged() const noexcept;
  /// Of the result; none where the statement returns no rows.
  [[nodiscard]] std::vector<std::string> ColumnNames() const;
  /// Appends rows until `block` holds about `byte_limit` bytes or the rows end; false when they
  /// have ended. Errors: DriverFailure
  bool Fetch(RowBlock& block, std::size_t byte_limit);

  [[nodiscard]] void* Handle() const noexcept { return handle_; }
  /// Executes what was prepared and bound on the handle.
  void ExecutePrepared(std::int32_t timeout_s);

 private:
  enum class Kind : std::uint8_t { kWhole, kExact, kReal, kDate, kText };
  struct Column {
    std::string name;
    Kind kind = Kind::kText;
    std::size_t cell_bytes = 0;
    std::vector<char> cells;
    std::vector<std::int64_t> lengths;
  };

  void Describe();
  void Bind();
  void SetTimeout(std::int32_t timeout_s);
  void AppendRows(RowBlock& block, std::size_t rows);
  void AppendCell(RowBlock& block, std::size_t column, std::size_t row);
  void AppendText(RowBlock& block, std::size_t column, std::size_t row, std::int64_t length);
  [[nodiscard]] std::u16string WholeText(std::size_t column, std::size_t row, std::int64_t length);

  void* handle_ = nullptr;
  std::shared_ptr<CancelPoint> cancel_point_;
  std::vector<Column> columns_;
  std::size_t rows_per_fetch_ = 1;
  std::size_t rows_fetched_ = 0;
  std::string utf8_;  // of the text that is being appended
};

/// Appends the number that `text` writes: a whole one of any size, an exact one, or the nearest
/// double where it is too large for either. Errors: DriverFailure where that cannot hold it
void AppendExactNumber(RowBlock& block, std::string_view text);

}  // namespace sabrel::odbc
