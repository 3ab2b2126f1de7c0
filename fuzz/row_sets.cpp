// Row sets: texts of rows are refused with 5 or decoded into what encodes to the same again, packed
// rows and cells come back as they went in, and what is written to the embedded server is read
// there.
#include "adapters/sqlite/sqlite_rowlink.h"
#include "fuzz/site.h"
#include "fuzz/target.h"
#include "sabrel/platform/platform.h"
#include "sabrel/platform/row_block.h"
#include "sabrel/platform/row_text.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::fuzz {
namespace {

using Pieces = std::vector<std::optional<std::string>>;

std::string Encoded(const Pieces& pieces) {
  std::string row;
  for (const auto& piece : pieces) {
    if (&piece != pieces.data()) row += '|';
    row += piece ? EncodePiece(*piece) : std::string(EncodedNull());
  }
  return row;
}

void CheckRowText(std::string_view text) {
  Pieces pieces;
  if (!DoneOr({RuntimeErrorNumber::kInvalidCall}, [&] { pieces = DecodeRow(text); })) return;
  const std::string row = Encoded(pieces);
  Require(DecodeRow(row) == pieces, "pieces come back", row);
  Require(row.find_first_of("\r\n") == std::string::npos, "a row is a line", row);
}

void CheckPacking(std::string_view text) {
  RowTexts rows;
  std::vector<std::string_view> parts;
  for (std::string_view rest = text;; rest.remove_prefix(parts.back().size() + 1)) {
    parts.push_back(rest.substr(0, rest.find('\n')));
    rows.Add(parts.back());
    if (parts.back().size() == rest.size()) break;
  }
  std::size_t i = 0;
  for (const std::string_view row : rows) {
    Require(row == parts.at(i++), "a packed row comes back", row);
  }
  Require(i == rows.size() && i == parts.size(), "every packed row comes back");
}

/// Whether cells have values of this kind.
bool HasKind(const Variant& value) {
  switch (value.kind()) {
    case VariantKind::kInt32:
    case VariantKind::kDouble:
    case VariantKind::kDecimal:
    case VariantKind::kDate:
    case VariantKind::kString: return true;
    default: return false;
  }
}

void AddCell(RowBlock& block, const Variant& value) {
  switch (value.kind()) {
    case VariantKind::kInt32: return block.AddInt32(value.Get<std::int32_t>());
    case VariantKind::kDouble: return block.AddDouble(value.Get<double>());
    case VariantKind::kDecimal: return block.AddDecimal(value.Get<Decimal>());
    case VariantKind::kDate: return block.AddDate(value.Get<Date>());
    case VariantKind::kString: return block.AddText(value.Get<std::string>());
    default: return block.AddNull();
  }
}

void CheckCells(Input input) {
  const std::size_t columns = 1 + input.Choice(4);
  RowBlock block(columns);
  std::vector<Variant> values;
  while (!input.AtEnd()) {
    values.push_back(input.Value());
    AddCell(block, values.back());
    if (values.size() % columns == 0) block.EndRow();
  }
  if (values.size() % columns != 0) block.DropUnfinishedRow();
  if (values.size() % 2 != 0) block.Pack();
  Require(block.Rows() == values.size() / columns, "each row is there");
  for (std::size_t i = 0; i < block.Rows() * columns; ++i) {
    const Variant cell = block.Cell(i / columns, i % columns);
    Require(Same(cell, HasKind(values[i]) ? values[i] : Variant(Null{})), "a cell comes back",
            Shown(values[i]));
  }
}

void CheckOnServer(std::string_view text) {
  static const bool has_table = [] {
    UsePlatform();
    const auto rows = CurrentPlatform().rowlink->MakeRecordset();
    rows->Execute("CREATE TABLE T (ID NUMBER(10), NAME VARCHAR2(4000))", "", 0, "", "", 0);
    return true;
  }();
  static_cast<void>(has_table);
  const Rowlink& rowlink = *CurrentPlatform().rowlink;
  const auto writer = CurrentPlatform().rowlink->MakeRowSetWriter();
  writer->Table("T");
  writer->DeclareColumn("ID", "INT");
  writer->DeclareColumn("NAME", "STRING");
  writer->AddRow("1|" + EncodePiece(text));
  writer->AddRow("2|\\N");
  try {
    writer->Submit();
  } catch (const RuntimeError& failure) {
    Require(CarriedCode(failure.Number()) == kDatabaseErrorCode && !IsSendableText(text),
            "a text of 255 bytes can be written", rowlink.LastDatabaseError().message);
    const auto count = FirstValue("SELECT COUNT(*) FROM T");
    return Require(count && *count == Variant(0), "all rows are written or none");
  }
  const auto read = FirstValue("SELECT NAME FROM T WHERE ID = 1");
  Require(read && (text.empty() ? read->IsNull() : *read == Variant(text)),
          "a text that was written is read", text);
  CurrentPlatform().rowlink->MakeRecordset()->Execute("DELETE FROM T", "", 0, "", "", 0);
}

}  // namespace

void Check(std::string_view input) {
  CheckRowText(input);
  CheckPacking(input);
  CheckCells(Input(input));
  CheckOnServer(input.substr(0, 255));
}

}  // namespace sabrel::fuzz
