#include "sabrel/platform/row_set_writer.h"

#include <algorithm>

#include "sabrel/platform/runtime_error.h"

namespace sabrel {

void RowSetWriter::DeclareColumn(std::string_view name, std::string_view type_word) {
  RaisingRuntimeErrors([&] {
    rows_.columns.push_back({std::string(name), std::string(type_word)});
  });
}

void RowSetWriter::Submit() {
  RaisingRuntimeErrors([&] {
    RequireWholeRows();
    Deref(link_).Write(rows_);
  });
}

void RowSetWriter::RequireWholeRows() const {
  for (const std::string_view row : rows_.rows) {
    const auto pieces = static_cast<std::size_t>(std::count(row.begin(), row.end(), '|')) + 1;
    if (pieces != rows_.columns.size()) {
      throw RuntimeError(RuntimeErrorNumber::kInvalidCall,
                         "A row of " + std::to_string(pieces) + " pieces does not fit the " +
                             std::to_string(rows_.columns.size()) + " columns declared for " +
                             rows_.table);
    }
  }
}

}  // namespace sabrel
