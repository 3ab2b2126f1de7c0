#include "adapters/sqlite/rounding.h"

#include <charconv>
#include <optional>

#include "adapters/sqlite/server.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::sqlite {
namespace {

std::string TriggerName(std::string_view event, std::string_view table) {
  return QuotedName("sabrel_round_" + LowerCase(event) + "_" + UpperCase(table));
}

/// Digits behind the point of a column's type as it was declared; nothing for a type that keeps
/// them all.
std::optional<int> ScaleOf(std::string_view declared) {
  const std::string type = UpperCase(declared);
  const std::string name = type.substr(0, type.find_first_of(" ("));
  const bool is_whole = name == "INTEGER" || name == "INT" || name == "SMALLINT";
  const bool is_decimal = name == "DECIMAL" || name == "DEC" || name == "NUMERIC";
  if (is_whole) return 0;
  if (!is_decimal && name != "NUMBER") return std::nullopt;
  const bool has_size = type.find('(') != std::string::npos;
  if (!has_size) return is_decimal ? std::optional<int>(0) : std::nullopt;
  const std::size_t comma = type.find(',');
  if (comma == std::string::npos) return 0;
  const std::size_t digits = type.find_first_of("-0123456789", comma);
  int scale = 0;
  if (digits != std::string::npos) {
    std::from_chars(type.data() + digits, type.data() + type.size(), scale);
  }
  return scale;
}

/// Columns that keep a certain number of digits.
struct Columns {
  std::string names;      // comma between
  std::string condition;  // that one has more digits than it keeps
  std::string rounded;    // assignments
};

struct Rounding {
  Columns key;
  Columns others;
  std::string row;  // condition: the row's own key
};

std::string Joined(const std::string& list, std::string_view between, const std::string& more) {
  return list + std::string(list.empty() || more.empty() ? "" : between) + more;
}

Rounding RoundingOf(Connection& engine, std::string_view table) {
  Rounding rounding;
  Statement each = engine.Prepare("SELECT name, type, pk FROM pragma_table_info(?1)");
  each.Bind(1, table);
  while (each.Step()) {
    const std::string name = QuotedName(each.Column(0).text);
    const bool is_key = each.Column(2).integer > 0;
    if (is_key) rounding.row = Joined(rounding.row, " AND ", name + " = NEW." + name);
    const std::optional<int> scale = ScaleOf(each.Column(1).text);
    if (!scale) continue;
    const std::string call = "round(NEW." + name + "," + std::to_string(*scale) + ")";
    // Whole numbers are kept as such, whatever they were written as.
    const std::string is_real = *scale < 0 ? "" : "typeof(NEW." + name + ") = 'real' AND ";
    Columns& columns = is_key ? rounding.key : rounding.others;
    columns.names = Joined(columns.names, ", ", name);
    columns.condition =
        Joined(columns.condition, " OR ", "(" + is_real + "NEW." + name + " <> " + call + ")");
    columns.rounded = Joined(columns.rounded, ", ", name + " = " + call);
  }
  if (rounding.row.empty()) rounding.row = "rowid = NEW.rowid";
  return rounding;
}

}  // namespace

void AddRounding(Connection& engine, std::string_view table) {
  const auto [key, others, row] = RoundingOf(engine, table);
  const std::string columns = Joined(others.names, ", ", key.names);
  if (columns.empty()) return;
  const std::string name = QuotedName(table);
  const std::string update = " UPDATE " + name + " SET ";
  std::string body =
      " ON " + name + " WHEN " + Joined(others.condition, " OR ", key.condition) + " BEGIN";
  // The key apart: setting it, even to what it was, moves the row and looks for rows that refer to
  // it. And first: the triggers that this fires round the rest, and there is no row left here.
  if (!key.names.empty()) {
    body += update + key.rounded + " WHERE (" + key.condition + ") AND " + row + ";";
  }
  if (!others.names.empty()) body += update + others.rounded + " WHERE " + row + ";";
  body += " END";
  engine.Run(("CREATE TRIGGER " + TriggerName("insert", table) + " AFTER INSERT" + body).c_str());
  engine.Run(
      ("CREATE TRIGGER " + TriggerName("update", table) + " AFTER UPDATE OF " + columns + body)
          .c_str());
}

void DropRounding(Connection& engine, std::string_view table) {
  for (const char* event : {"insert", "update"}) {
    engine.Run(("DROP TRIGGER IF EXISTS " + TriggerName(event, table)).c_str());
  }
}

}  // namespace sabrel::sqlite
