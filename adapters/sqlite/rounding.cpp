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
  const bool is_decimal = name == "DECIMAL" || name == "NUMERIC";
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

struct Columns {
  std::string names;      // comma between
  std::string condition;  // that one has more digits than it keeps
  std::string rounded;    // assignments
  std::string key;        // the row's own
};

Columns ColumnsOf(Connection& engine, std::string_view table) {
  Columns columns;
  const auto add = [](std::string& list, std::string_view between, const std::string& item) {
    list += (list.empty() ? "" : std::string(between)) + item;
  };
  Statement each = engine.Prepare("SELECT name, type, pk FROM pragma_table_info(?1)");
  each.Bind(1, table);
  while (each.Step()) {
    const std::string name = QuotedName(each.Column(0).text);
    if (each.Column(2).integer > 0) add(columns.key, " AND ", name + " = NEW." + name);
    const std::optional<int> scale = ScaleOf(each.Column(1).text);
    if (!scale) continue;
    const std::string call = "round(NEW." + name + "," + std::to_string(*scale) + ")";
    // Whole numbers are kept as such, whatever they were written as.
    const std::string is_real = *scale < 0 ? "" : "typeof(NEW." + name + ") = 'real' AND ";
    add(columns.names, ", ", name);
    add(columns.condition, " OR ", "(" + is_real + "NEW." + name + " <> " + call + ")");
    add(columns.rounded, ", ", name + " = " + call);
  }
  if (columns.key.empty()) columns.key = "rowid = NEW.rowid";
  return columns;
}

}  // namespace

void AddRounding(Connection& engine, std::string_view table) {
  const Columns columns = ColumnsOf(engine, table);
  if (columns.names.empty()) return;
  const std::string name = QuotedName(table);
  const std::string body = " ON " + name + " WHEN " + columns.condition + " BEGIN UPDATE " + name +
                           " SET " + columns.rounded + " WHERE " + columns.key + "; END";
  engine.Run(("CREATE TRIGGER " + TriggerName("insert", table) + " AFTER INSERT" + body).c_str());
  engine.Run(("CREATE TRIGGER " + TriggerName("update", table) + " AFTER UPDATE OF " +
              columns.names + body)
                 .c_str());
}

void DropRounding(Connection& engine, std::string_view table) {
  for (const char* event : {"insert", "update"}) {
    engine.Run(("DROP TRIGGER IF EXISTS " + TriggerName(event, table)).c_str());
  }
}

}  // namespace sabrel::sqlite
