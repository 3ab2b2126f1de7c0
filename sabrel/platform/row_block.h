// A packed run of rows: how fetched rows travel and wait.
//
// An adapter appends cell after cell and ends each row; readers take cells out by row and column. A
// cell costs its text, or 4 to 16 bytes for a number or a date, plus 5 bytes; there is no
// allocation per cell or row.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/variant.h"

namespace sabrel {

class RowBlock {
 public:
  explicit RowBlock(std::size_t columns) : columns_(columns) {}

  void AddNull();
  void AddInt32(std::int32_t value);
  void AddDouble(double value);
  void AddDecimal(const Decimal& value);
  void AddDate(Date value);
  void AddText(std::string_view value);
  /// A whole number of any size: a 32-bit integer when it fits, else a decimal.
  void AddWhole(std::int64_t value);
  /// Ends the row; the cells of an unfinished row can be taken back with DropUnfinishedRow.
  void EndRow() { ++rows_; }
  void DropUnfinishedRow();

  [[nodiscard]] std::size_t Rows() const noexcept { return rows_; }
  [[nodiscard]] std::size_t Columns() const noexcept { return columns_; }
  /// Bytes that the rows take, without spare capacity.
  [[nodiscard]] std::size_t Bytes() const noexcept {
    return bytes_.size() + offsets_.size() * sizeof(std::uint32_t);
  }
  /// Gives spare capacity back.
  void Pack();

  [[nodiscard]] Variant Cell(std::size_t row, std::size_t column) const;

 private:
  void Start(VariantKind kind);
  template <class T>
  void Append(VariantKind kind, const T& value);
  [[nodiscard]] std::string_view Raw(std::size_t row, std::size_t column) const;

  std::size_t columns_;
  std::size_t rows_ = 0;
  std::string bytes_;
  std::vector<std::uint32_t> offsets_;
};

}  // namespace sabrel
