// Oracle's SQL, taken apart and written anew for another engine.
//
// Statements come in as Oracle takes them. What the other engine takes too stays byte for byte;
// only tokens that it cannot take are replaced: `seq.NEXTVAL`, bare `SYSDATE`, calls of stored
// routines, date arithmetic, reserved words where a column stands. Constants of WHERE, VALUES, SET
// and of argument lists are lifted into bound parameters, so that statements that differ in their
// constants only share one prepared form; a LIKE pattern stays where an index may serve it. What
// cannot be rewritten truly is refused with a clear error (native 900), never changed in meaning.
//
// Statements that no engine but Oracle has (blocks, CREATE FUNCTION, CREATE SEQUENCE) are parsed
// into structures.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sabrel::dialect {

/// A statement that cannot be sent: Oracle's native number and a message that names the place.
struct SyntaxFailure {
  std::int32_t native_number;
  std::string message;
};

enum class StatementKind {
  kSelect,
  kInsert,
  kUpdate,
  kDelete,
  kBlock,          // BEGIN ... END;
  kCreateRoutine,  // CREATE [OR REPLACE] FUNCTION | PROCEDURE
  kDropRoutine,    // DROP FUNCTION | PROCEDURE
  kCreateSequence,
  kDropSequence,
  kCreateTable,
  kOtherDefinition,  // other CREATE, ALTER, DROP, TRUNCATE
  kAlterSession,
  kTransaction,  // COMMIT, ROLLBACK, SAVEPOINT
  kOther,
};

/// Checks that `sql` is valid UTF-8 without NUL and one statement, every quote closed.
/// Returns the statement without surrounding space and, outside blocks and routines, without its
/// closing ";". Throws SyntaxFailure: 911 for NUL, invalid UTF-8 or a second statement, 1756 for an
/// open quote, 900 for an empty text
[[nodiscard]] std::string_view RequireOneStatement(std::string_view sql);

[[nodiscard]] StatementKind KindOf(std::string_view statement);
/// INSERT, UPDATE, DELETE and MERGE: a server says how many rows they changed.
[[nodiscard]] bool CountsRows(std::string_view statement);

/// Of a kTransaction where each statement is one: COMMIT has nothing to do, what was done cannot be
/// taken back. Throws SyntaxFailure: 3001 for ROLLBACK and SAVEPOINT
void RequireCommit(std::string_view statement);

/// What an ALTER SESSION sets.
struct SessionSettings {
  std::optional<std::string> date_format;
  /// The first setting or word besides, upper case; empty without one.
  std::string other;
};
[[nodiscard]] SessionSettings ParseAlterSession(std::string_view statement);
/// The date format that it sets, for servers that know no other setting.
/// Throws SyntaxFailure: 2248 naming the first setting besides
[[nodiscard]] std::string RequireDateFormatOnly(std::string_view statement);

/// A constant that was lifted out of a statement: parameter n+1 of the rewritten text for element
/// n.
struct Constant {
  enum class Kind { kNull, kInteger, kReal, kText };
  Kind kind = Kind::kNull;
  std::int64_t integer = 0;
  double real = 0.0;
  std::string text;
  friend bool operator==(const Constant&, const Constant&) = default;
};

/// A query of one table whose rows all have these columns equal to constants; names as written.
struct KeyLookUp {
  std::string table;
  std::vector<std::string> columns;
};

struct Rewritten {
  StatementKind kind = StatementKind::kOther;
  /// The engine's statement, with `?1`, `?2`, ... for lifted constants; named parameters `:name`
  /// stay. A statement with named parameters keeps its constants: engines number both kinds
  /// together.
  std::string text;
  std::vector<Constant> constants;
  /// Changes data, draws a sequence or calls a routine that may: wants a write transaction.
  bool writes = false;
  /// A query that by its form gives few rows, at most kFewRows; others may, too.
  bool has_few_rows = false;
  static constexpr std::int64_t kFewRows = 100;
  /// Where the form leaves it open, but a unique key of the table would tell: one row at most.
  std::optional<KeyLookUp> look_up;
};

/// What the rewriting must know of the stored routines and of the engine.
class Engine {
 public:
  virtual ~Engine() = default;

  /// What the engine takes as Oracle writes it, and what it wants besides. The defaults are those
  /// of an engine that prepares statements anew for each constant and takes little.
  struct Traits {
    bool lifts_constants = true;
    bool keeps_comments = true;
    /// Names the columns of a query as Oracle does: by their expressions.
    bool names_columns = true;
    /// Sorts nulls before all values; Oracle sorts them behind.
    bool sorts_nulls_first = true;
    bool keys_take_nulls = true;
    bool wants_table_aliases = false;  // behind a query in FROM
    bool locks_rows = false;           // FOR UPDATE
    bool takes_fetch_first = false;
    bool takes_truncate = false;
    /// Functions in a table's checks go by FunctionName, too; not where tools that do not know
    /// those names read tables.
    bool renames_in_tables = true;
    /// A whole query, or one that a set operator joins, may stand in parentheses.
    bool takes_query_in_parentheses = false;
    bool integers_overflow = false;  // where Oracle's numbers go on
    /// What a LIKE without ESCAPE wants behind its pattern.
    std::string_view pattern_end = {};
    /// What DROP TABLE ... CASCADE CONSTRAINTS has instead of those words.
    std::string_view drop_end = {};
    /// Type that a number is cast to beside a column, for engines that would compare texts where
    /// the column holds them.
    std::string_view number_type = {};
    /// Function that makes text of an operand of ||.
    std::string_view text_function = {};
    /// What is put behind a text constant where the engine would otherwise read it, by its own
    /// rules, as a value of the type that its place wants.
    std::string_view text_constant_end = {};
  };
  [[nodiscard]] virtual Traits EngineTraits() const { return {}; }

  struct RoutineFacts {
    bool writes = false;
  };
  /// Facts of a stored routine; `name` is upper case and may be qualified ("PKG.F"). Nothing when
  /// there is none.
  [[nodiscard]] virtual std::optional<RoutineFacts> FindRoutine(std::string_view name) const = 0;
  /// Whether a statement may call a function that is no stored routine; `name` is upper case, or as
  /// written between quotes. Where the engine itself refuses what Oracle has not, all may be
  /// called.
  [[nodiscard]] virtual bool KnowsFunction(std::string_view /*name*/) const { return true; }
  /// Whether the engine cannot take `word` (upper case) as a bare column name although Oracle can.
  [[nodiscard]] virtual bool IsReservedWord(std::string_view word) const = 0;

  /// For each of `columns` of a table, or for all of its columns where none is named, the function
  /// that makes a stored value of what is assigned; empty where that is stored as it is. No element
  /// at all where none has one. Names come as the catalogue holds them.
  [[nodiscard]] virtual std::vector<std::string_view> ConversionsOf(
      std::string_view /*table*/, const std::vector<std::string>& /*columns*/) const {
    return {};
  }

  // How things are spelled. Names arrive as the statement writes them.

  /// A name, in the quotes that it was written in; empty to keep it.
  [[nodiscard]] virtual std::string NameSpelling(std::string_view written) const;
  /// A type of a column or of CAST, as "VARCHAR2" with the sizes "20"; empty to keep it.
  [[nodiscard]] virtual std::string TypeSpelling(std::string_view /*upper_name*/,
                                                 const std::vector<std::string>& /*sizes*/) const {
    return {};
  }
  /// What stands in a CAST before its value, and behind it in place of the type. Both empty where
  /// the engine's own CAST does. Throws SyntaxFailure for a type that no value can have.
  struct CastParts {
    std::string before;
    std::string behind;
  };
  [[nodiscard]] virtual CastParts PartsOfCast(std::string_view /*upper_name*/,
                                              const std::vector<std::string>& /*sizes*/) const {
    return {};
  }
  [[nodiscard]] virtual std::string NextValue(std::string_view sequence) const = 0;
  [[nodiscard]] virtual std::string CurrentValue(std::string_view sequence) const = 0;
  [[nodiscard]] virtual std::string SystemDate() const = 0;
  /// Opening of a call of a stored function up to the place of its first argument, and whether a
  /// "," is due before that argument: "sabrel_call('PKG.F'" with true, "pkg.f(" with false.
  struct CallOpening {
    std::string text;
    bool comma_before_arguments = false;
  };
  [[nodiscard]] virtual CallOpening RoutineCall(std::string_view name) const = 0;
  /// Functions that add and subtract, from the left, up to 100 operands of which one may be a date;
  /// empty where the engine's own operators do.
  [[nodiscard]] virtual std::string_view AddFunction() const = 0;
  [[nodiscard]] virtual std::string_view SubtractFunction() const = 0;
  /// Function for a quotient; where it is empty, `a / b` becomes `a *1.0/ b`, which keeps the
  /// fraction of whole numbers.
  [[nodiscard]] virtual std::string_view DivideFunction() const { return {}; }
  /// Function for `a || b || ...`, of up to 100 operands, that takes null for the empty text, as
  /// Oracle does; empty where the engine's own does. May open further calls: "f(concat".
  [[nodiscard]] virtual std::string_view ConcatenateFunction() const { return {}; }
  /// Aggregate that gives the only value of its rows and fails (1427) at a second one; empty where
  /// the engine itself refuses a scalar sub-select of several rows.
  [[nodiscard]] virtual std::string_view SingleFunction() const { return {}; }
  /// Function that is negative, 0 or positive as its first argument sorts before, with or behind
  /// its second one, numbers, texts and dates converted as Oracle does; empty where the engine's
  /// own comparisons do.
  [[nodiscard]] virtual std::string_view CompareFunction() const { return {}; }
  /// Function of a text, a pattern and an escape character that matches as LIKE does, for engines
  /// whose own LIKE cannot be stopped; they keep it for a column beside a parameter, or beside a
  /// constant whose beginning an index may serve. Empty where the engine's LIKE does for all.
  [[nodiscard]] virtual std::string_view PatternFunction() const { return {}; }
  /// A constant that equals itself and nothing that a column of texts or of numbers may hold.
  [[nodiscard]] virtual std::string_view NoValue(bool /*is_text*/) const { return "x''"; }
  /// Oracle's name of a function where the engine calls it otherwise; empty to keep the name.
  [[nodiscard]] virtual std::string_view FunctionName(std::string_view upper_name) const = 0;
};

/// The name that a rewritten statement gives a query whose rows are converted and assigned.
inline constexpr std::string_view kAssignedRows = "sabrel_assigned";

/// Whether `text` is "2024-03-09" for a pattern of "0000-00-00".
[[nodiscard]] bool HasForm(std::string_view text, std::string_view pattern);

/// Rewrites one statement as RequireOneStatement returned it. Throws SyntaxFailure with the number
/// that Oracle has for the fault: 900 for what is not supported, 904 for an unknown routine, 905 to
/// 936 for bad syntax.
[[nodiscard]] Rewritten Rewrite(std::string_view statement, const Engine& engine);

/// As Rewrite, for an expression alone, as an argument of a block's call is one.
[[nodiscard]] Rewritten RewriteExpression(std::string_view expression, const Engine& engine);

/// One step of a block: a call of a routine with its argument expressions, or a statement.
struct BlockStep {
  bool is_call = false;
  std::string name;                    // of the routine, as written
  std::vector<std::string> arguments;  // Oracle expressions, as written
  std::vector<std::string> names;      // names of named arguments, empty where positional
  std::string statement;
};
/// The steps of `BEGIN ... END;`. Throws SyntaxFailure 6550 with what could not be understood.
[[nodiscard]] std::vector<BlockStep> ParseBlock(std::string_view block);

enum class Direction { kIn, kOut, kInOut };

struct RoutineArgument {
  std::string name;  // as written
  Direction direction = Direction::kIn;
  std::string type;  // upper case: NUMBER, VARCHAR2, DATE
};

struct RoutineDefinition {
  std::string package;  // empty for a routine of its own; upper case
  std::string name;     // upper case
  bool is_function = false;
  bool or_replace = false;
  std::string result_type;
  std::vector<RoutineArgument> arguments;
  /// The statements between BEGIN and END, each without its ";", with named parameters `:argument`.
  std::vector<std::string> body;
};
/// Throws SyntaxFailure 6550 with what could not be understood.
[[nodiscard]] RoutineDefinition ParseCreateRoutine(std::string_view statement);

struct SequenceDefinition {
  std::string name;  // upper case
  std::int64_t start = 1;
  std::int64_t increment = 1;
};
[[nodiscard]] SequenceDefinition ParseCreateSequence(std::string_view statement);

/// The object's name, upper case, of a DROP statement. Throws SyntaxFailure 933 for text after the
/// name of a routine or a sequence.
[[nodiscard]] std::string DroppedName(std::string_view statement);

/// One column of CREATE TABLE, for engines that do not check widths and types themselves.
struct ColumnDefinition {
  std::string name;                   // as written, quotes removed
  std::string type;                   // upper case, without sizes: VARCHAR2, NUMBER, DATE, CLOB
  std::optional<std::int64_t> width;  // the first size
  std::optional<std::int64_t> scale;
  // Offsets in the statement's text: just after the type, and after the column's definition.
  std::size_t type_end = 0;
  std::size_t end = 0;
};
/// Columns of a CREATE TABLE statement that lists them; empty for CREATE TABLE ... AS SELECT.
[[nodiscard]] std::vector<ColumnDefinition> ParseCreateTable(std::string_view statement);

}  // namespace sabrel::dialect
