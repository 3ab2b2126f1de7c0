// The rows that a statement returned, one current row at a time.
//
// `Open` reads up to 4 MB; if the rows end there the statement is finished. Otherwise it stays open
// and later rows are read in blocks as the reader moves on, so that walking any number of rows
// takes constant memory; `RecordCount` reads the rest in. A failure inside `Open` belongs to
// `Open`, one in moving on reaches whoever moves. Fields are found by name (any case) or by 0-based
// ordinal. Whoever receives a recordset closes it; closing twice does nothing.
//
//   for (; !rows.EndOfFile(); rows.MoveNext()) Use(rows.Fields().Item("NAME").Value());
//   rows.Close();
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sabrel/platform/data_link.h"
#include "sabrel/platform/row_block.h"
#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/variant.h"

namespace sabrel {

class Recordset;

/// One column of the current row; valid while its recordset lives.
class Field {
 public:
  Field(const Recordset& recordset, std::size_t ordinal)
      : recordset_(&recordset), ordinal_(ordinal) {}
  /// The column's name as the server gave it.
  [[nodiscard]] const std::string& Name() const;
  /// Errors: 3021 when there is no current row, 3704 when the recordset is closed
  [[nodiscard]] Variant Value() const;

 private:
  [[nodiscard]] std::size_t Ordinal() const;
  const Recordset* recordset_;
  std::size_t ordinal_;
};

/// The columns of a recordset, in order.
class FieldList {
 public:
  explicit FieldList(const Recordset& recordset) : recordset_(&recordset) {}
  [[nodiscard]] std::int32_t Count() const;
  /// Errors: 3265 when no column has that name (any case)
  [[nodiscard]] Field Item(std::string_view name) const;
  /// Errors: 3265 when `ordinal` is not in 0..Count-1
  [[nodiscard]] Field Item(std::int32_t ordinal) const;

 private:
  const Recordset* recordset_;
};

class Recordset {
 public:
  /// Bytes that Open reads before it leaves the rest with the server, and the size of later blocks.
  static constexpr std::size_t kOpenBytes = std::size_t{4} << 20U;
  static constexpr std::size_t kBlockBytes = std::size_t{256} << 10U;

  explicit Recordset(std::shared_ptr<DataLink> link) : link_(std::move(link)) {}

  /// Sends `sql` and reads its first rows; a recordset that is open is closed first.
  /// Cost: one round trip. Errors: the statement's
  void Open(std::string_view sql, std::string_view host, std::int32_t port, std::string_view user,
            std::string_view password, std::int32_t timeout_s);
  /// Sends a statement that returns no rows; does not touch the rows that are open. Returns the
  /// number of rows changed, or kUnknownRows.
  std::int64_t Execute(std::string_view sql, std::string_view host, std::int32_t port,
                       std::string_view user, std::string_view password, std::int32_t timeout_s);

  /// Rows in all, read and to be read. Cost: reads the rest in. Errors: 3704, the statement's
  [[nodiscard]] std::int32_t RecordCount();
  /// Errors: 3704 when not open
  [[nodiscard]] bool EndOfFile() const;
  /// A failure to read on leaves the reader where it was, and every later move fails with it again.
  /// It is then described by the platform's last database error of that time, which may be of
  /// another statement.
  /// Errors: 3021 at the end, 3704 when not open, the statement's. Cost: none, or one round trip a
  /// block
  void MoveNext();
  /// Errors: 3704 when not open
  [[nodiscard]] FieldList Fields() const;
  /// Ends the statement and drops the rows. Errors: none
  void Close() noexcept;

 private:
  friend class Field;
  friend class FieldList;
  void RequireOpen() const;
  [[nodiscard]] const RowBlock& CurrentBlock() const;
  void ReadBlock();

  std::shared_ptr<DataLink> link_;
  std::unique_ptr<Cursor> cursor_;
  std::optional<RuntimeError> failure_;
  std::vector<std::string> names_;
  std::deque<RowBlock> blocks_;
  std::size_t row_in_block_ = 0;
  std::size_t rows_read_ = 0;
  bool open_ = false;
};

using RecordsetRef = std::shared_ptr<Recordset>;

/// Closes a recordset, if there is one, when the scope is left.
class CloseAtEnd {
 public:
  explicit CloseAtEnd(std::shared_ptr<Recordset> rows) : rows_(std::move(rows)) {}
  CloseAtEnd(const CloseAtEnd&) = delete;
  CloseAtEnd& operator=(const CloseAtEnd&) = delete;
  ~CloseAtEnd() {
    if (rows_) rows_->Close();
  }

 private:
  std::shared_ptr<Recordset> rows_;
};

}  // namespace sabrel
