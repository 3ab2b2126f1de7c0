// Many rows for one table, sent in one request.
//
//   writer.Table("T"); writer.DeclareColumn("ID", "INT"); writer.DeclareColumn("NAME", "STRING");
//   writer.AddRow("1|" + EncodePiece(name)); writer.Submit();
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "sabrel/platform/data_link.h"
#include "sabrel/platform/runtime_error.h"

namespace sabrel {

class RowSetWriter {
 public:
  explicit RowSetWriter(std::shared_ptr<DataLink> link) : link_(std::move(link)) {}

  void Table(std::string_view name) { AssignText(rows_.table, name); }
  /// `type_word` is "INT" or "STRING".
  void DeclareColumn(std::string_view name, std::string_view type_word);
  /// Takes a row as row_text.h encodes it.
  void AddRow(std::string_view row_text) {
    RaisingRuntimeErrors([&] { rows_.rows.Add(row_text); });
  }
  /// Writes every row or none, also when there is no row. Cost: one round trip
  /// Errors: 5 when a row's number of pieces is not the number of columns, else the server's
  void Submit();

 private:
  void RequireWholeRows() const;

  std::shared_ptr<DataLink> link_;
  RowSet rows_;
};

}  // namespace sabrel
