// Rows on their way out, one after the other: as a table, as CSV or as a JSON array.
//
// CSV and JSON keep nothing; a table keeps its first rows to find the widths of its columns.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cli/cell_text.h"
#include "cli/output.h"
#include "sabrel/platform/variant.h"

namespace sabrel::cli {

class RowPrinter {
 public:
  virtual ~RowPrinter() = default;
  /// One value per column. Errors: as Output::Write
  virtual void Row(const std::vector<Variant>& values) = 0;
  /// What stands behind the last row.
  virtual void End() = 0;
};

/// `out` must outlive the printer. Names may repeat: JSON tells them apart as NAME, NAME_2.
[[nodiscard]] std::unique_ptr<RowPrinter> MakeRowPrinter(Format format, Output& out,
                                                         const std::vector<std::string>& columns);
[[nodiscard]] std::unique_ptr<RowPrinter> MakeTablePrinter(Output& out,
                                                           const std::vector<std::string>& columns);

}  // namespace sabrel::cli
