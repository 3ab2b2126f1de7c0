#include "adapters/sqlite/query_table.h"

#include <algorithm>
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
using dialect::TokenSpan;
using dialect::Word;

bool IsSymbol(const Token& token, char symbol) {
  return token.kind == dialect::TokenKind::kSymbol && token.symbol == symbol;
}

/// Whether the engine itself named the type so, in a table that an older program made of a query.
bool IsEnginesType(std::string_view declared) {
  return declared == "NUM" || declared == "INT" || declared == "TEXT";
}

/// NUMBER, VARCHAR2 or DATE for a type of that kind; empty for all others.
std::string_view KindOfType(std::string_view declared) {
  const std::string type = UpperCase(declared.substr(0, declared.find_first_of(" (")));
  if (IsNumberType(type) || type == "NUM") return "NUMBER";
  if (type.find("CHAR") != std::string::npos || type.ends_with("CLOB") || type == "LONG" ||
      type == "TEXT") {
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

/// Depth in parentheses and CASE ... END.
class Nesting {
 public:
  [[nodiscard]] bool IsOutside() const { return depth_ == 0; }
  void Pass(const Token& token) {
    if (IsSymbol(token, '(') || token.word == Word::kCase) ++depth_;
    if (IsSymbol(token, ')') || token.word == Word::kEnd) --depth_;
  }

 private:
  int depth_ = 0;
};

/// The type of a select item that is a CAST, maybe named; `tokens` are the item's.
std::string_view TypeOfCast(std::string_view query, TokenSpan tokens) {
  if (tokens[0].word != Word::kCast || !IsSymbol(tokens[1], '(')) return {};
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

/// The items of the first select list, as far as no "*" hides the columns' places.
std::vector<TokenSpan> SelectItems(TokenSpan tokens) {
  std::vector<TokenSpan> items;
  std::size_t i = 0;
  while (IsSymbol(tokens[i], '(')) ++i;
  Nesting nesting;
  while (i < tokens.size() && (!nesting.IsOutside() || tokens[i].word != Word::kSelect)) {
    nesting.Pass(tokens[i++]);
  }
  std::size_t first = ++i;
  const Word word = tokens[first].word;
  if (word == Word::kDistinct || word == Word::kUnique || word == Word::kAll) ++first;
  for (i = first; i < tokens.size(); ++i) {
    const bool is_end = tokens[i].word == Word::kFrom;
    if (nesting.IsOutside() && (is_end || IsSymbol(tokens[i], ','))) {
      if (i == first || IsSymbol(tokens[i - 1], '*')) break;
      items.push_back(tokens.Part(first, i - first));
      if (is_end) break;
      first = i + 1;
    }
    nesting.Pass(tokens[i]);
  }
  return items;
}

bool HasSetOperator(TokenSpan tokens) {
  return std::any_of(tokens.begin(), tokens.end(), [](const Token& token) {
    return token.word == Word::kUnion || token.word == Word::kMinus ||
           token.word == Word::kIntersect || token.word == Word::kExcept;
  });
}

/// Whether a view has one of the query's names.
bool ReadsView(Connection& engine, std::string_view query, TokenSpan tokens) {
  return std::any_of(tokens.begin(), tokens.end(), [&](const Token& token) {
    const bool is_name =
        token.kind == dialect::TokenKind::kWord || token.kind == dialect::TokenKind::kQuotedName;
    if (!is_name) return false;
    Statement view =
        engine.Prepare("SELECT 1 FROM sqlite_schema WHERE type = 'view' AND UPPER(name) = ?1");
    view.Bind(1, std::string_view(UpperCase(dialect::ValueOfName(query, token))));
    return view.Step();
  });
}

/// A select item without its alias.
TokenSpan WithoutAlias(TokenSpan item) {
  if (item.size() < 2) return item;
  const Token& last = item[item.size() - 1];
  const Token& before = item[item.size() - 2];
  if (before.word == Word::kAs) return item.Part(0, item.size() - 2);
  const bool is_name = last.kind == dialect::TokenKind::kQuotedName ||
                       (last.kind == dialect::TokenKind::kWord && last.word != Word::kEnd);
  const bool is_behind_expression =
      before.kind != dialect::TokenKind::kSymbol || IsSymbol(before, ')');
  return is_name && is_behind_expression ? item.Part(0, item.size() - 1) : item;
}

bool IsBareNull(std::string_view query, TokenSpan form) {
  return form.size() == 1 &&
         (form[0].word == Word::kNull || (form[0].kind == dialect::TokenKind::kText &&
                                          dialect::IsEmptyText(dialect::TextOf(query, form[0]))));
}

/// Columns of this type are not checked, and the engine keeps their values as they come.
constexpr const char* kAnyType = "BLOB";

/// The query's result columns: from what is declared and cast, and else from values.
class QueryColumns {
 public:
  QueryColumns(Server& server, std::string_view query)
      : query_(query),
        tokens_(dialect::Tokenize(query)),
        items_(SelectItems(tokens_.All())),
        has_set_operator_(HasSetOperator(tokens_.All())),
        rewritten_(server.Compile(query)),
        rows_(server.Prepare(rewritten_)) {
    RequireBound(rows_, rewritten_);
    const bool has_row = rows_.Step();
    reads_view_ = ReadsView(server.Engine(), query, tokens_.All());
    for (int i = 0; i < rows_.Columns(); ++i) types_.push_back(DeclaredType(i));
    TakeTypesOfValues(has_row);
  }

  [[nodiscard]] std::string List() const {
    std::string columns;
    for (std::size_t i = 0; i < types_.size(); ++i) {
      const std::string name = ResultName(rows_.ColumnName(static_cast<int>(i)), rewritten_);
      if (types_[i].empty()) RequireValue(i, name);
      columns += (i > 0 ? ", " : "(") + QuotedName(name) + " " +
                 (types_[i].empty() ? kAnyType : types_[i]);
    }
    return columns + ")";
  }

 private:
  [[nodiscard]] std::string DeclaredType(int column) const {
    const auto place = static_cast<std::size_t>(column);
    std::string_view type = rows_.DeclaredType(column);
    if (place < items_.size()) {
      const std::string_view cast = TypeOfCast(query_, items_[place]);
      if (!cast.empty()) type = cast;
      const TokenSpan form = WithoutAlias(items_[place]);
      if (form.size() == 1 && form[0].word == Word::kRownum) type = "NUMBER";
    }
    if (type == "LONG TEXT") type = "LONG";
    const std::string_view kind = KindOfType(type);
    // Of several queries, which a view may hold too, the engine tells the types of one: they may be
    // too narrow.
    const bool is_kind_only = has_set_operator_ || reads_view_ || IsEnginesType(type);
    return std::string(is_kind_only || kind.empty() ? kind : type);
  }

  void TakeTypesOfValues(bool has_row) {
    const auto is_known = [](const std::string& type) { return !type.empty(); };
    while (has_row && !std::all_of(types_.begin(), types_.end(), is_known)) {
      for (std::size_t i = 0; i < types_.size(); ++i) {
        if (types_[i].empty()) types_[i] = TypeOfValue(rows_.Column(static_cast<int>(i)));
      }
      has_row = rows_.Step();
    }
  }

  /// Refuses a plain NULL, which no later value is due to follow.
  void RequireValue(std::size_t place, const std::string& name) const {
    if (has_set_operator_ || place >= items_.size()) return;
    if (!IsBareNull(query_, WithoutAlias(items_[place]))) return;
    throw ServerFailure(1723, "zero-length columns are not allowed: no value tells the type of " +
                                  name + "; write CAST(... AS type)");
  }

  std::string_view query_;
  dialect::TokenList tokens_;
  std::vector<TokenSpan> items_;
  bool has_set_operator_;
  dialect::Rewritten rewritten_;
  Statement rows_;
  bool reads_view_ = false;
  std::vector<std::string> types_;
};

}  // namespace

std::string ColumnsFor(Server& server, std::string_view query) {
  return QueryColumns(server, query).List();
}

}  // namespace sabrel::sqlite
