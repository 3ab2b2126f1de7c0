// Walks one statement along Oracle's grammar and marks what the engine wants otherwise.
//
// Recursive descent: a nested query, a parenthesis and a call go one level deeper, everything else
// is a loop, so that the depth limit bounds the stack whatever the text. Where the grammar here
// ends, the statement is refused.
#pragma once

#include <cstdint>
#include <list>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/shared/dialect/dialect.h"
#include "adapters/shared/dialect/edits.h"
#include "adapters/shared/dialect/token.h"

namespace sabrel::dialect {

/// Whether the function makes one row of many.
[[nodiscard]] bool IsAggregate(std::string_view upper_name);

class Rewriter {
 public:
  Rewriter(std::string_view sql, const Engine& engine);
  [[nodiscard]] Rewritten Run(StatementKind kind);
  [[nodiscard]] Rewritten RunExpression();

 private:
  /// Which constants become parameters.
  enum class Lift : std::uint8_t { kNever, kInCalls, kAlways };
  /// How the engine's own operators would bind to the operand that was read.
  enum class Shape : std::uint8_t { kAtom, kProduct, kSum, kChain };
  struct Operand {
    std::size_t first = 0;
    std::size_t last = 0;
    Shape shape = Shape::kAtom;
    bool is_number = false;          // numeric constants only
    bool is_date = false;            // known to be one
    std::string_view function = {};  // that the operands so far are arguments of
    int arguments = 0;
  };
  /// What is known of an operand's type.
  enum class Type : std::uint8_t {
    kUnknown,
    kColumn,
    kNumber,
    kText,
    kNumberConstant,
    kTextConstant
  };
  struct DecodeArgument {
    std::size_t first;
    std::size_t last;
    Type type;  // of a constant
    bool is_null;
  };
  /// What the value of a query in an expression may be.
  struct QueryShape {
    bool has_one_column = false;
    bool has_one_row = false;
    bool is_ordered = false;
  };
  struct SequenceUse {
    std::string name;
    bool draws = false;
  };
  /// How a SELECT counts and groups its rows, and what speaks against that.
  struct SelectFacts {
    std::optional<std::int64_t> row_limit;  // of its ROWNUM condition
    bool numbers_rows = false;              // by a ROWNUM in its select list
    bool has_aggregate = false;             // also over a window
    bool makes_one_row = false;             // by an aggregate of its select list
    bool is_grouped = false;
    bool is_distinct = false;
    std::size_t rownum_token = 0;
    std::vector<std::size_t> columns;  // the names of those that the select list has as they are
    std::size_t group_by = 0;          // the list's first token, and the one behind its last
    std::size_t group_end = 0;
    std::size_t sources = 0;                   // tables and queries in FROM
    std::vector<std::size_t> ordered_queries;  // of them, their ")"
  };
  /// A column of CREATE TABLE, up to its type's last token.
  struct Column {
    std::string name;
    std::size_t last_token = 0;
  };
  /// A type as it is written, its sizes apart.
  struct WrittenType {
    std::string name;  // upper case
    std::vector<std::string> sizes;
  };
  using Conversions = std::vector<std::string_view>;
  class Level;  // one nesting level while it lives

  [[nodiscard]] Rewritten Finish(StatementKind kind);

  // Cursor.
  [[nodiscard]] const Token& Here() const { return tokens_[at_]; }
  [[nodiscard]] const Token& Ahead(std::size_t distance) const { return tokens_[at_ + distance]; }
  [[nodiscard]] bool IsWord(Word word) const { return Here().word == word; }
  [[nodiscard]] bool IsText(const Token& token, std::string_view upper) const;
  [[nodiscard]] static bool IsSymbol(const Token& token, char symbol) {
    return token.kind == TokenKind::kSymbol && token.symbol == symbol;
  }
  [[nodiscard]] bool IsSymbol(char symbol) const { return IsSymbol(Here(), symbol); }
  [[nodiscard]] bool IsQueryStart() const { return IsWord(Word::kSelect) || IsWord(Word::kWith); }
  bool SkipWord(Word word) {
    const bool is_here = IsWord(word);
    if (is_here) ++at_;
    return is_here;
  }
  bool SkipText(std::string_view upper);
  bool SkipSymbol(char symbol) {
    const bool is_here = IsSymbol(symbol);
    if (is_here) ++at_;
    return is_here;
  }
  void ExpectSymbol(char symbol, std::int32_t native_number, std::string_view what);
  void ExpectWord(Word word, std::int32_t native_number, std::string_view what);
  [[noreturn]] void Fail(std::int32_t native_number, std::string_view what) const;
  [[nodiscard]] std::string Upper(const Token& token) const { return ValueOfName(sql_, token); }

  // Conditions (condition.cpp).
  void Condition();
  void Predicate();
  void Comparison();
  bool OrderComparison(const Operand& left);
  void Pattern(const Operand& left, std::size_t operation, bool is_negated);
  void Quantified(std::size_t operation);
  [[nodiscard]] Type TypeOf(Operand operand) const;
  void Between(const Operand& left);
  void In(const Operand& left);
  void MakeNumber(const Operand& operand);
  void MakeNumberForNumbers(const Operand& operand);
  void CastBesideColumn(const Operand& number);
  [[nodiscard]] static bool IsNumber(Type type) {
    return type == Type::kNumber || type == Type::kNumberConstant;
  }
  [[nodiscard]] static bool IsText(Type type) {
    return type == Type::kText || type == Type::kTextConstant;
  }
  [[nodiscard]] static bool NeedConversion(Type left, Type right);

  // Expressions (expression.cpp).
  [[nodiscard]] Operand Sum();
  [[nodiscard]] Operand Product();
  [[nodiscard]] Operand Unary();
  [[nodiscard]] Operand Primary();
  /// Reads what starts with a word; whether it is known to be a date.
  bool WordOperand();
  Operand Combine(const Operand& left, std::size_t operation, const Operand& right);
  void CombineByFunction(const Operand& left, std::size_t operation, std::string_view function,
                         Operand& result);
  void CombineByOperator(const Operand& left, std::size_t operation, const Operand& right,
                         Operand& result);
  void MakeText(const Operand& operand);
  [[nodiscard]] std::size_t TextConstantIn(std::size_t first, std::size_t last) const;
  void KeepText(std::size_t first, std::size_t last, bool keeps_numbers = false);
  void KeepTexts(std::size_t first);
  [[noreturn]] void RefuseDate() const;
  void Parenthesis(bool is_scalar = false);
  void Case();
  void Cast();
  void Extract();
  void NumberRows();
  void DateConstant();
  std::size_t ExpressionList();
  void OrderList(bool places_nulls = true);

  // Names and calls (call.cpp).
  void Name();
  void QualifiedName();
  void NameList();
  void NameOrCall();
  void SpellName(std::size_t token);
  void SpellNames(std::size_t first, std::size_t last);
  void Call(std::size_t first, std::size_t last);
  void CallName(std::size_t first, std::size_t last);
  std::size_t Arguments(bool keeps_texts);
  [[nodiscard]] bool KeepsTexts(std::string_view upper_name) const;
  void Decode(std::size_t name);
  std::vector<DecodeArgument> DecodeArguments();
  void Window();
  [[nodiscard]] bool IsAggregateCall(std::size_t first, std::size_t end) const;
  [[nodiscard]] bool IsPlainColumn(std::size_t first) const;
  void KeepColumnName(std::size_t first);
  void UseSequence(std::size_t first, std::size_t last);

  // Queries (query.cpp).
  QueryShape Query();
  QueryShape QueryInParentheses(bool is_first);
  void With();
  void SelectCore(SelectFacts& facts, QueryShape& shape);
  [[nodiscard]] std::size_t SelectList();
  void FromList(SelectFacts& facts);
  void TableReference(SelectFacts& facts);
  void KeepOrder(const SelectFacts& facts);
  bool JoinWords();
  void TableAlias();
  void Where(SelectFacts* facts);
  bool RowLimit(SelectFacts& facts);
  [[nodiscard]] std::string OnlyTable(std::size_t first) const;
  [[nodiscard]] std::string EqualColumn(std::size_t first) const;
  void RequireCountableRows(const SelectFacts& facts, bool has_order_or_set_operator);
  void GroupBy(SelectFacts& facts);
  void RequireGroupedColumns(const SelectFacts& facts);
  void FetchFirst();
  void ForUpdate();
  void LockedTables();

  // Changes of data (change.cpp).
  void Insert();
  void Values(const Conversions& conversions);
  void Update();
  void Assignment(std::string_view table);
  void Delete();
  void AliasOfChangedTable();
  void Assign(std::size_t first, std::size_t last, std::string_view conversion);
  void AssignRows(std::size_t first, std::size_t last, const Conversions& conversions);
  [[nodiscard]] std::vector<std::string> NamesIn(std::size_t first) const;

  // Definitions (definition_rewriter.cpp).
  void Definition();
  void CreateTable();
  void AlterTable();
  void DropTable();
  void TableItem();
  [[nodiscard]] WrittenType ReadType();
  [[nodiscard]] bool ColumnType();
  void SpellType(std::size_t first, const WrittenType& type);
  void TypeSizes(std::vector<std::string>& sizes);
  void ColumnRules(bool is_date = false);
  void Default(bool is_date);
  void PrimaryKey();
  void RefuseNull(const Column& column);
  void Copy();

  std::string_view sql_;
  const Engine& engine_;
  const Engine::Traits traits_;
  TokenList tokens_;
  Edits edits_;
  TokenCursor at_;
  int depth_ = 0;
  Lift lift_ = Lift::kAlways;
  bool may_lift_;
  bool writes_ = false;
  bool has_few_rows_ = false;
  std::optional<KeyLookUp> look_up_;
  bool is_table_ = false;    // that is defined
  bool compares_ = true;     // values of different types by a function
  bool is_renamed_ = false;  // the engine would name the column that is read otherwise
  std::vector<Column> columns_;
  std::vector<SequenceUse> sequences_;
  int table_aliases_ = 0;
  std::list<std::string> composed_;  // texts that edits refer to
  std::vector<std::size_t> texts_;   // items of the select lists so far that are text constants
  SelectFacts* facts_ = nullptr;     // of the SELECT whose list is read
};

class Rewriter::Level {
 public:
  explicit Level(Rewriter& rewriter) : rewriter_(rewriter), lift_(rewriter.lift_) {
    constexpr int kMaximumDepth = 500;
    if (++rewriter_.depth_ > kMaximumDepth) rewriter_.Fail(900, "nested too deeply");
  }
  ~Level() {
    --rewriter_.depth_;
    rewriter_.lift_ = lift_;
  }
  Level(const Level&) = delete;
  Level& operator=(const Level&) = delete;

 private:
  Rewriter& rewriter_;
  Lift lift_;
};

}  // namespace sabrel::dialect
