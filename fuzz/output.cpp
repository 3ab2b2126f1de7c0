// Rows as CSV, JSON and tables: read by other parsers, the cells hold the values that were printed;
// nothing in a table steers a terminal.
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>

#include "cli/cell_text.h"
#include "cli/output.h"
#include "cli/row_printer.h"
#include "fuzz/target.h"
#include "sabrel/platform/conversions.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::fuzz {
namespace {

using Rows = std::vector<std::vector<Variant>>;

/// A field of a CSV file; without quotes and empty it is null.
struct Cell {
  std::string text;
  bool quoted = false;
};

/// Reads RFC 4180 with LF.
std::vector<std::vector<Cell>> ReadCsv(std::string_view text) {
  std::vector<std::vector<Cell>> rows;
  std::size_t at = 0;
  const auto next = [&] { return at < text.size() ? text[at] : '\0'; };
  while (at < text.size()) {
    Cell& cell =
        (rows.empty() || text[at - 1] == '\n' ? rows.emplace_back() : rows.back()).emplace_back();
    cell.quoted = next() == '"';
    if (cell.quoted) {
      for (++at; at < text.size(); ++at) {
        if (text[at] == '"' && text.substr(at + 1, 1) != "\"") break;
        if (text[at] == '"') ++at;
        cell.text += text[at];
      }
      Require(next() == '"', "a quoted field is closed", text);
      ++at;
    } else {
      const std::size_t end = text.find_first_of(",\n", at);
      cell.text = text.substr(at, end - at);
      at += cell.text.size();
    }
    Require(next() == ',' || next() == '\n', "a field ends at a comma or a line break", text);
    if (text[at++] == ',' && (at == text.size() || text[at] == '\n')) {
      rows.back().emplace_back();
      ++at;
    }
  }
  return rows;
}

/// What `print` writes.
std::string Printed(cli::Format format, const std::vector<std::string>& columns, const Rows& rows) {
  static const int file = ::memfd_create("output", 0);
  Require(file >= 0 && ::ftruncate(file, 0) == 0 && ::lseek(file, 0, SEEK_SET) == 0, "has a file");
  cli::Output out(file);
  const auto printer = cli::MakeRowPrinter(format, out, columns);
  for (const std::vector<Variant>& row : rows) printer->Row(row);
  printer->End();
  out.Flush();
  std::string text(static_cast<std::size_t>(::lseek(file, 0, SEEK_END)), '\0');
  Require(::pread(file, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()),
          "a file can be read");
  return text;
}

/// The value's text by the rules of files, written down apart from the printers.
std::string Expected(const Variant& value) {
  static const LocaleFacts neutral;
  switch (value.kind()) {
    case VariantKind::kDecimal: return value.Get<Decimal>().Text();
    case VariantKind::kBoolean: return value.Get<bool>() ? "true" : "false";
    case VariantKind::kDate: {
      std::string text = FormatDateTime(value.Get<Date>(), neutral);
      text[10] = 'T';
      return text;
    }
    default: return ToText(value, neutral);
  }
}

bool IsNoValue(const Variant& value) { return value.IsNull() || value.IsEmpty(); }

bool ReadsAs(const std::string& text, double number) {
  double read = 0.0;
  const auto end = std::from_chars(text.data(), text.data() + text.size(), read);
  if (end.ptr != text.data() + text.size()) return false;
  return read == number || (std::isnan(read) && std::isnan(number));
}

void CheckCsv(const std::vector<std::string>& columns, const Rows& rows) {
  const std::string text = Printed(cli::Format::kCsv, columns, rows);
  const auto cells = ReadCsv(text);
  Require(cells.size() == rows.size() + 1, "a row is a record", text);
  for (std::size_t i = 0; i < columns.size(); ++i) {
    Require(cells[0].size() == columns.size() && cells[0][i].text == columns[i],
            "the first record has the names", text);
  }
  for (std::size_t i = 0; i < rows.size(); ++i) {
    Require(cells[i + 1].size() == rows[i].size(), "a record has a field for each column", text);
    for (std::size_t j = 0; j < rows[i].size(); ++j) {
      const Variant& value = rows[i][j];
      const Cell& cell = cells[i + 1][j];
      if (IsNoValue(value)) {
        Require(cell.text.empty() && !cell.quoted, "null is an empty field", text);
      } else if (const auto* number = value.GetIf<double>()) {
        Require(ReadsAs(cell.text, *number), "a field reads as the same double", cell.text);
      } else {
        Require(cell.text == Expected(value) && (cell.quoted || !cell.text.empty()),
                "a field has its value's text", cell.text);
      }
    }
  }
}

void CheckJsonCell(const nlohmann::json& cell, const Variant& value) {
  const std::string seen = cell.dump(-1, ' ', true, nlohmann::json::error_handler_t::replace);
  if (IsNoValue(value)) return Require(cell.is_null(), "null is null", seen);
  if (const auto* truth = value.GetIf<bool>()) return Require(cell == *truth, "a boolean", seen);
  if (const auto* number = value.GetIf<double>(); number != nullptr && std::isfinite(*number)) {
    return Require(cell.is_number() && cell.get<double>() == *number, "the same double", seen);
  }
  if (cell.is_number()) {
    Require(cli::IsNumber(value) && ReadsAs(Expected(value), cell.get<double>()), "the same number",
            seen);
    return;
  }
  Require(cell.is_string(), "a string", seen);
  const auto text = cell.get<std::string>();
  if (const auto* bytes = value.GetIf<std::string>(); bytes != nullptr && !IsValidUtf8(*bytes)) {
    return Require(IsValidUtf8(text), "what is no UTF-8 is replaced", seen);
  }
  if (value.kind() != VariantKind::kDouble) Require(text == Expected(value), "the same text", seen);
}

void CheckJson(const std::vector<std::string>& columns, const Rows& rows) {
  const std::string text = Printed(cli::Format::kJson, columns, rows);
  const auto json = nlohmann::ordered_json::parse(text);
  Require(json.is_array() && json.size() == rows.size(), "a row is an element", text);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    Require(json[i].size() == rows[i].size(), "each column has a name of its own", text);
    std::size_t column = 0;
    for (const auto& cell : json[i]) CheckJsonCell(cell, rows[i][column++]);
  }
}

void CheckTable(const std::vector<std::string>& columns, const Rows& rows) {
  const std::string text = Printed(cli::Format::kTable, columns, rows);
  Require(IsValidUtf8(text), "a table is UTF-8", text);
  for (const char c : text) {
    Require((c >= 0 ? c >= ' ' || c == '\n' : true) && c != '\x7f', "nothing steers a terminal",
            text);
  }
}

}  // namespace

void Check(std::string_view bytes) {
  Input input(bytes);
  std::vector<std::string> columns(1 + input.Choice(4));
  for (std::string& column : columns) column = input.Text();
  Rows rows;
  while (!input.AtEnd() && rows.size() < 6) {
    std::vector<Variant>& row = rows.emplace_back();
    for (std::size_t i = 0; i < columns.size(); ++i) {
      Variant value = input.Value();
      // Servers give no dates beyond the calendar.
      const bool has_text =
          DoneOr({RuntimeErrorNumber::kOverflow}, [&] { static_cast<void>(cli::CsvText(value)); });
      row.push_back(has_text ? std::move(value) : Variant(Null{}));
    }
  }
  CheckCsv(columns, rows);
  CheckJson(columns, rows);
  CheckTable(columns, rows);
}

}  // namespace sabrel::fuzz
