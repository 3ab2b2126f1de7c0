#include "adapters/sqlite/query_table.h"

#include <algorithm>
#include <span>
#include <vector>

#include "adapters/shared/dialect/token.h"
#include "adapters/shared/number_type.h"
#include "adapters/sqlite/failure.h"
#include "adapters/sqlite/result_names.h"
#include "adapters/sqlite/server.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::sqlite {
namespace {

using dialect::Token;
using dialect::Word;

bool IsSymbol(const Token& token, char symbol) {
  return token.kind == dialect::TokenKind::kSymbol && token.symbol == symbol;
}

/// NUMBER, VARCHAR2 or DATE for a type of that kind; empty for what is no type of Oracle's.
std::string_view KindOfType(std::string_view declared) {
  const std::string type = UpperCase(declared.substr(0, declared.find_first_of(" (")));
  if (IsNumberType(type)) return "NUMBER";
  if (type.find("CHAR") != std::string::npos || type.ends_with("CLOB") || type == "LONG") {
    return "VARCHAR2";
  }
  return type == "DATE" || type == "TIMESTAMP" ? "DATE" : "";
}

std::string_view TypeOfValue(const Value& value) {
  switch (value.kind) {
    case Value::Kind::kInteger:
    case Value::Kind::kReal: return "NUMBER";
    case Value::Kind::kText: return "VARCHAR2";
    case Value::Kind::kDate: return "DATE";
    case Value::Kind::kNull: break;
  }
  return "";
}

/// The type of a select item that is a CAST, maybe named; `tokens` are the item's.
std::string_view TypeOfCast(std::string_view query, std::span<const Token> tokens) {
  if (tokens.size() < 2 || tokens[0].word != Word::kCast || !IsSymbol(tokens[1], '(')) return {};
  int depth = 0;
  std::size_t type = 0;
  std::size_t close = 1;
  for (; close < tokens.size(); ++close) {
    if (IsSymbol(tokens[close], '(')) ++depth;
    if (IsSymbol(tokens[close], ')') && --depth == 0) break;
    if (depth == 1 && tokens[close].word == Word::kAs) type = close + 1;
  }
  const bool is_whole = close + 2 >= tokens.size() || tokens[close + 1].word == Word::kAs;
  if (!is_whole || type == 0) return {};
  return query.substr(tokens[type].begin, tokens[close].begin - tokens[type].begin);
}

/// What the select list of `query` casts to, as far as no "*" hides the columns' places.
std::vector<std::string_view> CastTypes(std::string_view query, std::span<const Token> tokens) {
  std::vector<std::string_view> types;
  std::size_t first = 1;
  const Word second = tokens[std::min<std::size_t>(1, tokens.size() - 1)].word;
  if (second == Word::kDistinct || second == Word::kUnique || second == Word::kAll) ++first;
  int depth = 0;
  for (std::size_t i = first; i < tokens.size(); ++i) {
    if (IsSymbol(tokens[i], '(')) ++depth;
    if (IsSymbol(tokens[i], ')')) --depth;
    const bool is_end = tokens[i].word == Word::kFrom;
    if (depth > 0 || !(is_end || IsSymbol(tokens[i], ','))) continue;
    if (i == first || IsSymbol(tokens[i - 1], '*')) break;
    types.push_back(TypeOfCast(query, tokens.subspan(first, i - first)));
    if (is_end) break;
    first = i + 1;
  }
  return types;
}

bool HasSetOperator(std::span<const Token> tokens) {
  return std::any_of(tokens.begin(), tokens.end(), [](const Token& token) {
    return token.word == Word::kUnion || token.word == Word::kMinus ||
           token.word == Word::kIntersect || token.word == Word::kExcept;
  });
}

}  // namespace

std::string ColumnsFor(Server& server, std::string_view query) {
  const std::vector<Token> tokens = dialect::Tokenize(query);
  const std::vector<std::string_view> casts = CastTypes(query, tokens);
  const bool has_set_operator = HasSetOperator(tokens);
  const dialect::Rewritten rewritten = server.Compile(query);
  Statement rows = server.Prepare(rewritten);
  RequireBound(rows, rewritten);
  bool has_row = rows.Step();
  std::vector<std::string> types;
  for (int i = 0; i < rows.Columns(); ++i) {
    const auto place = static_cast<std::size_t>(i);
    std::string_view type = rows.DeclaredType(i);
    if (place < casts.size() && !casts[place].empty()) type = casts[place];
    if (type == "LONG TEXT") type = "LONG";
    const std::string_view kind = KindOfType(type);
    // Of several queries the engine tells the first one's types, which may be too narrow.
    types.emplace_back(has_set_operator || kind.empty() ? kind : type);
  }
  const auto is_known = [](const std::string& type) { return !type.empty(); };
  while (has_row && !std::all_of(types.begin(), types.end(), is_known)) {
    for (std::size_t i = 0; i < types.size(); ++i) {
      if (types[i].empty()) types[i] = TypeOfValue(rows.Column(static_cast<int>(i)));
    }
    has_row = rows.Step();
  }
  std::string columns;
  for (std::size_t i = 0; i < types.size(); ++i) {
    const std::string name = ResultName(rows.ColumnName(static_cast<int>(i)), rewritten);
    if (types[i].empty()) {
      throw ServerFailure(1723, "zero-length columns are not allowed: no value tells the type of " +
                                    name + "; write CAST(... AS type)");
    }
    columns += (i > 0 ? ", " : "(") + QuotedName(name) + " " + types[i];
  }
  return columns + ")";
}

}  // namespace sabrel::sqlite
