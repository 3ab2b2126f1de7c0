// CAST. The engine's own knows classes of storage only, so a function makes the value and the
// engine's CAST around it merely tells how the result compares.
#include <charconv>
#include <cmath>

#include "adapters/shared/number_type.h"
#include "adapters/sqlite/failure.h"
#include "adapters/sqlite/functions.h"
#include "adapters/sqlite/server.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::sqlite {
namespace {

constexpr int kMostDigits = 38;

std::int64_t NumberIn(std::string_view size) {
  std::int64_t number = 0;
  std::from_chars(size.data(), size.data() + size.size(), number);
  return number;
}

/// sabrel_number(value[, precision, scale])
Value CastToNumber(Arguments a, void*) {
  if (a[0].IsNull()) return {};
  const Value number = NumberOf(a[0]);
  if (a.size() == 1) return number;
  const Value rounded = RoundedTo(number, a[2].integer);
  const auto places = static_cast<double>(a[1].integer - a[2].integer);
  if (std::fabs(RealOf(rounded)) >= std::pow(10.0, places)) {
    throw ServerFailure(1438, "value larger than specified precision allowed for CAST");
  }
  return rounded;
}

/// sabrel_text(value[, width]): a text is cut to the width, anything else must fit.
Value CastToText(Arguments a, void* connection) {
  if (a[0].IsNull()) return {};
  const std::string text = PlainTextOf(a[0], DateFormatOf(connection));
  if (a.size() == 1) return TextValue(text);
  const std::size_t fitting = ByteLengthOf(text, static_cast<std::size_t>(a[1].integer));
  if (fitting < text.size() && a[0].kind != Value::Kind::kText) {
    throw ServerFailure(25137, "data value out of range: CAST to a text of " +
                                   std::to_string(a[1].integer) + " characters");
  }
  return TextValue(text.substr(0, fitting));
}

dialect::Engine::CastParts PartsOfNumber(std::string_view type,
                                         const std::vector<std::string>& sizes) {
  dialect::Engine::CastParts parts{"sabrel_number(", ") AS NUMERIC"};
  const bool is_whole = type == "INTEGER" || type == "INT" || type == "SMALLINT";
  const bool is_decimal = type == "DECIMAL" || type == "DEC" || type == "NUMERIC";
  if (!is_whole && !is_decimal && (type != "NUMBER" || sizes.empty())) return parts;
  const std::int64_t precision = sizes.empty() ? kMostDigits : NumberIn(sizes[0]);
  const std::int64_t scale = sizes.size() > 1 ? NumberIn(sizes[1]) : 0;
  if (precision < 1 || precision > kMostDigits) {
    throw dialect::SyntaxFailure{1727, "numeric precision specifier is out of range (1 to 38)"};
  }
  parts.behind.insert(0, "," + std::to_string(precision) + "," + std::to_string(scale));
  return parts;
}

dialect::Engine::CastParts PartsOfText(std::string_view type,
                                       const std::vector<std::string>& sizes) {
  dialect::Engine::CastParts parts{"sabrel_text(", ") AS TEXT"};
  if (type.ends_with("CLOB")) return parts;
  const bool is_varying = type.find("VAR") != std::string_view::npos;
  if (sizes.empty() && is_varying) {
    throw dialect::SyntaxFailure{
        906, "missing left parenthesis: CAST wants the width of " + std::string(type)};
  }
  const std::int64_t width = sizes.empty() ? 1 : NumberIn(sizes[0]);
  if (width < 1) throw dialect::SyntaxFailure{1723, "zero-length columns are not allowed"};
  parts.behind.insert(0, "," + std::to_string(width));
  return parts;
}

constexpr SqlFunction kFunctions[] = {
    {"SABREL_NUMBER", 1, 3, true, CastToNumber},
    {"SABREL_TEXT", 1, 2, true, CastToText},
};

}  // namespace

dialect::Engine::CastParts SqliteDialect::PartsOfCast(std::string_view upper_name,
                                                      const std::vector<std::string>& sizes) const {
  if (IsNumberType(upper_name)) return PartsOfNumber(upper_name, sizes);
  constexpr std::string_view kTexts[] = {
      "VARCHAR2",     "VARCHAR",           "NVARCHAR2",     "CHAR", "NCHAR", "CHARACTER",
      "CHAR VARYING", "CHARACTER VARYING", "NCHAR VARYING", "CLOB", "NCLOB"};
  for (const std::string_view text : kTexts) {
    if (upper_name == text) return PartsOfText(upper_name, sizes);
  }
  throw dialect::SyntaxFailure{902, "invalid datatype in CAST: " + std::string(upper_name)};
}

void RegisterCasts(Connection& connection) {
  for (const SqlFunction& function : kFunctions) Register(connection, function, &connection);
}

}  // namespace sabrel::sqlite
