#include "adapters/odbc/postgresql/postgresql_dialect.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

#include "adapters/odbc/postgresql/reserved_words.h"
#include "adapters/shared/dialect/dialect.h"
#include "adapters/shared/dialect/token.h"
#include "adapters/shared/verb.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::odbc {
namespace {

using dialect::StatementKind;
using dialect::SyntaxFailure;
using dialect::TextConstant;
using dialect::Token;
using dialect::TokenKind;

using NamePair = std::pair<std::string_view, std::string_view>;

constexpr NamePair kFunctions[] = {
    {"ADD_MONTHS", "sabrel_dictionary.add_months"},
    {"CHR", "sabrel_dictionary.chr"},
    {"GREATEST", "sabrel_dictionary.greatest"},
    {"INSTR", "sabrel_dictionary.instr"},
    {"LAST_DAY", "sabrel_dictionary.last_day"},
    {"LEAST", "sabrel_dictionary.least"},
    {"LENGTH", "sabrel_dictionary.length"},
    {"LPAD", "sabrel_dictionary.lpad"},
    {"LTRIM", "sabrel_dictionary.ltrim"},
    {"MOD", "sabrel_dictionary.mod"},
    {"MONTHS_BETWEEN", "sabrel_dictionary.months_between"},
    {"NVL", "sabrel_dictionary.nvl"},
    {"NVL2", "sabrel_dictionary.nvl2"},
    {"REPLACE", "sabrel_dictionary.replace"},
    {"ROUND", "sabrel_dictionary.round"},
    {"RPAD", "sabrel_dictionary.rpad"},
    {"RTRIM", "sabrel_dictionary.rtrim"},
    {"SUBSTR", "sabrel_dictionary.substr"},
    {"TO_CHAR", "sabrel_dictionary.to_char"},
    {"TO_DATE", "sabrel_dictionary.to_date"},
    {"TO_NUMBER", "sabrel_dictionary.to_number"},
    {"TRIM", "sabrel_dictionary.trim"},
    {"TRUNC", "sabrel_dictionary.trunc"},
};

constexpr NamePair kTypes[] = {
    {"BFILE", "bytea"},
    {"BINARY_DOUBLE", "double precision"},
    {"BINARY_FLOAT", "real"},
    {"BLOB", "bytea"},
    {"CHAR", "char"},
    {"CHAR VARYING", "varchar"},
    {"CHARACTER", "char"},
    {"CHARACTER VARYING", "varchar"},
    {"CLOB", "text"},
    {"DATE", "timestamp(0)"},
    {"DEC", "numeric"},
    {"DECIMAL", "numeric"},
    {"DOUBLE PRECISION", "double precision"},
    {"FLOAT", "double precision"},
    {"INT", "numeric(38)"},
    {"INTEGER", "numeric(38)"},
    {"LONG", "text"},
    {"LONG RAW", "bytea"},
    {"NCHAR", "char"},
    {"NCLOB", "text"},
    {"NUMBER", "numeric"},
    {"NUMERIC", "numeric"},
    {"NVARCHAR2", "varchar"},
    {"RAW", "bytea"},
    {"REAL", "double precision"},
    {"ROWID", "varchar"},
    {"SMALLINT", "numeric(38)"},
    {"TIMESTAMP", "timestamp"},
    {"VARCHAR", "varchar"},
    {"VARCHAR2", "varchar"},
};

template <std::size_t kCount>
std::string_view Found(const NamePair (&pairs)[kCount], std::string_view name) {
  const auto* const found =
      std::find_if(std::begin(pairs), std::end(pairs),
                   [name](const NamePair& pair) { return pair.first == name; });
  return found == std::end(pairs) ? std::string_view() : found->second;
}

std::string Quoted(std::string_view name) { return '"' + std::string(name) + '"'; }

/// Whether the server would take the word for another name, or for none.
bool WantsQuotes(std::string_view word) {
  return IsReservedByPostgresql(UpperCase(word)) ||
         std::any_of(word.begin(), word.end(),
                     [](char c) { return c == '#' || static_cast<unsigned char>(c) >= 0x80; });
}

/// A name in quotes; where Oracle has it without lower-case letters, in those.
std::string SpelledQuoted(std::string_view inner) {
  return Quoted(UpperCase(inner) == inner ? LowerCase(inner) : std::string(inner));
}

std::string Spelled(std::string_view written) {
  if (written.starts_with('"')) return SpelledQuoted(written.substr(1, written.size() - 2));
  return WantsQuotes(written) ? Quoted(LowerCase(written)) : std::string(written);
}

/// The names of `written`, "a . b", each spelled and joined.
std::string SpelledAll(std::string_view written) {
  std::string spelled;
  for (const Token& token : dialect::Tokenize(written)) {
    if (token.kind != TokenKind::kWord && token.kind != TokenKind::kQuotedName) continue;
    spelled += (spelled.empty() ? "" : ".") + Spelled(dialect::TextOf(written, token));
  }
  return spelled;
}

class PostgresqlDialect final : public dialect::Engine {
 public:
  [[nodiscard]] Traits EngineTraits() const override {
    Traits traits;
    traits.lifts_constants = false;
    traits.keeps_comments = false;
    traits.names_columns = false;
    traits.sorts_nulls_first = false;
    traits.keys_take_nulls = false;
    traits.wants_table_aliases = true;
    traits.locks_rows = true;
    traits.takes_fetch_first = true;
    traits.takes_truncate = true;
    traits.takes_query_in_parentheses = true;
    traits.integers_overflow = true;
    traits.pattern_end = " ESCAPE ''";
    traits.drop_end = " CASCADE";
    traits.text_function = "sabrel_dictionary.to_char";
    traits.text_constant_end = kTextConstantEnd;
    return traits;
  }
  // Packages are schemas: the server itself tells which of their routines there are.
  [[nodiscard]] std::optional<RoutineFacts> FindRoutine(std::string_view name) const override {
    if (name.find('.') == std::string_view::npos && !WantsQuotes(name)) return std::nullopt;
    return RoutineFacts{};
  }
  [[nodiscard]] bool IsReservedWord(std::string_view word) const override {
    return IsReservedByPostgresql(word);
  }
  [[nodiscard]] std::string NextValue(std::string_view sequence) const override {
    return "sabrel_dictionary.next_value(" + TextConstant(SpelledAll(sequence)) + ")";
  }
  [[nodiscard]] std::string CurrentValue(std::string_view sequence) const override {
    return "sabrel_dictionary.current_value(" + TextConstant(SpelledAll(sequence)) + ")";
  }
  [[nodiscard]] std::string SystemDate() const override { return "sabrel_dictionary.sysdate()"; }
  [[nodiscard]] CallOpening RoutineCall(std::string_view name) const override {
    return {SpelledAll(name) + "(", false};
  }
  [[nodiscard]] std::string_view AddFunction() const override { return {}; }
  [[nodiscard]] std::string_view SubtractFunction() const override { return {}; }
  [[nodiscard]] std::string_view ConcatenateFunction() const override {
    return "sabrel_dictionary.text_or_null(concat";
  }
  [[nodiscard]] std::string_view NoValue(bool is_text) const override {
    return is_text ? "''" : "'NaN'::numeric";
  }
  [[nodiscard]] std::string_view FunctionName(std::string_view upper_name) const override {
    return Found(kFunctions, upper_name);
  }
  [[nodiscard]] std::string NameSpelling(std::string_view written) const override {
    std::string spelled = Spelled(written);
    return spelled == written ? std::string() : spelled;
  }
  // The server's own cast of a date would not go by the session's format.
  [[nodiscard]] CastParts PartsOfCast(std::string_view upper_name,
                                      const std::vector<std::string>& sizes) const override {
    const std::string type = TypeSpelling(upper_name, sizes);
    const bool is_text = type.starts_with("varchar") || type.starts_with("char") || type == "text";
    if (!is_text) return {};
    return {"sabrel_dictionary.to_char(", ") AS " + type};
  }
  [[nodiscard]] std::string TypeSpelling(std::string_view upper_name,
                                         const std::vector<std::string>& sizes) const override {
    std::string type(Found(kTypes, upper_name));
    if (type == "numeric" || type == "varchar" || type == "char" || type == "timestamp") {
      for (std::size_t i = 0; i < sizes.size(); ++i) type += (i == 0 ? "(" : ",") + sizes[i];
      if (!sizes.empty()) type += ')';
    }
    return type;
  }
};

const PostgresqlDialect& Dialect() {
  static const PostgresqlDialect dialect;
  return dialect;
}

void RefuseParameters(std::string_view statement) {
  for (const Token& token : dialect::Tokenize(statement)) {
    if (token.kind != TokenKind::kParameter) continue;
    throw SyntaxFailure{1008, "not all variables bound" + dialect::PlaceOf(statement, token)};
  }
}

/// An argument's name, always in quotes.
std::string NamedArgument(std::string_view written) {
  const std::string spelled = Spelled(written);
  return spelled.starts_with('"') ? spelled : Quoted(LowerCase(spelled));
}

std::string CompileCall(const dialect::BlockStep& step) {
  std::string arguments;
  for (std::size_t i = 0; i < step.arguments.size(); ++i) {
    std::string argument = dialect::RewriteExpression(step.arguments[i], Dialect()).text;
    if (!step.names[i].empty()) argument.insert(0, NamedArgument(step.names[i]) + " => ");
    arguments += (i > 0 ? ", " : "") + TextConstant(argument);
  }
  return "PERFORM sabrel_dictionary.run(" + TextConstant(SpelledAll(step.name)) + ", ARRAY[" +
         arguments + "]::text[]);";
}

// A block is one transaction, which a COMMIT or ROLLBACK within would part.
std::string CompileStep(const dialect::BlockStep& step) {
  if (step.is_call) return CompileCall(step);
  if (VerbOf(dialect::KindOf(step.statement)) == Verb::kOther) {
    throw SyntaxFailure{6550, "PLS-00103: a block is made of calls, INSERT, UPDATE and DELETE"};
  }
  return "EXECUTE " + TextConstant(CompileForPostgresql(step.statement).text) + ';';
}

// As one statement, so that the block is one round trip.
std::string CompileBlock(std::string_view block) {
  std::string steps;
  for (const dialect::BlockStep& step : dialect::ParseBlock(block)) {
    steps += ' ' + CompileStep(step);
  }
  if (steps.empty()) return {};
  std::string tag = "$sabrel$";
  for (int i = 1; steps.find(tag) != std::string::npos; ++i) {
    tag = "$sabrel" + std::to_string(i) + "$";
  }
  return "DO " + tag + "BEGIN" + steps + " END" + tag;
}

std::string CompileSequence(std::string_view statement) {
  const dialect::SequenceDefinition sequence = dialect::ParseCreateSequence(statement);
  const std::string start = std::to_string(sequence.start);
  std::string text = "CREATE SEQUENCE " + PostgresqlName(sequence.name) + " INCREMENT BY " +
                     std::to_string(sequence.increment);
  // The server's own limits are 1 upwards and -1 downwards.
  if (sequence.increment > 0 && sequence.start < 1) text += " MINVALUE " + start;
  if (sequence.increment < 0 && sequence.start > -1) text += " MAXVALUE " + start;
  return text + " START WITH " + start;
}

/// Counts the unique keys of the table that lie within the columns.
std::string UniqueKeyQuery(const dialect::KeyLookUp& look_up) {
  std::string columns;
  for (const std::string& column : look_up.columns) {
    const std::string spelled = Spelled(column);
    const bool has_quotes = spelled.starts_with('"');
    columns +=
        (columns.empty() ? "" : ",") +
        TextConstant(has_quotes ? spelled.substr(1, spelled.size() - 2) : LowerCase(spelled));
  }
  return std::string(kWithoutCursor) +
         "SELECT count(*)::integer FROM pg_catalog.pg_index i WHERE i.indrelid = to_regclass(" +
         TextConstant(SpelledAll(look_up.table)) +
         ") AND i.indisunique AND i.indisvalid AND i.indpred IS NULL AND NOT EXISTS (SELECT 1 FROM "
         "unnest(i.indkey::smallint[]) k (n) LEFT JOIN pg_catalog.pg_attribute a ON a.attrelid = "
         "i.indrelid AND a.attnum = k.n AND a.attname::text = ANY (ARRAY[" +
         columns + "]::text[]) WHERE a.attname IS NULL)";
}

}  // namespace

std::string PostgresqlName(std::string_view catalogue_name) {
  std::string name;
  while (true) {
    const std::string_view part = catalogue_name.substr(0, catalogue_name.find('.'));
    const bool is_plain = UpperCase(part) == part;
    name += is_plain ? Spelled(LowerCase(part)) : Quoted(part);
    if (part.size() == catalogue_name.size()) return name;
    name += '.';
    catalogue_name.remove_prefix(part.size() + 1);
  }
}

Compiled CompileForPostgresql(std::string_view statement) {
  RefuseParameters(statement);
  const auto only = [](std::string text) { return Compiled{std::move(text), {}, {}}; };
  switch (dialect::KindOf(statement)) {
    case StatementKind::kBlock: return only(CompileBlock(statement));
    case StatementKind::kAlterSession:
      return only("CALL sabrel_dictionary.set_date_format(" +
                  TextConstant(dialect::RequireDateFormatOnly(statement)) + ")");
    case StatementKind::kTransaction: dialect::RequireCommit(statement); return {};
    case StatementKind::kCreateRoutine:
      throw SyntaxFailure{900,
                          "stored routines of this server are made in PL/pgSQL, with the server's "
                          "own tools"};
    case StatementKind::kDropRoutine:
      return only("DROP ROUTINE " + PostgresqlName(dialect::DroppedName(statement)));
    case StatementKind::kCreateSequence: return only(CompileSequence(statement));
    case StatementKind::kDropSequence:
      return only("CALL sabrel_dictionary.drop_sequence(" +
                  TextConstant(PostgresqlName(dialect::DroppedName(statement))) + ")");
    default: {
      dialect::Rewritten rewritten = dialect::Rewrite(statement, Dialect());
      if (rewritten.has_few_rows) return only(std::string(kWithoutCursor) + rewritten.text);
      if (!rewritten.look_up) return only(std::move(rewritten.text));
      return {std::move(rewritten.text), UniqueKeyQuery(*rewritten.look_up), kWithoutCursor};
    }
  }
}

}  // namespace sabrel::odbc
