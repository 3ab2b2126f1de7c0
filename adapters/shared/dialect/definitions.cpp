// Definitions that are parsed into structures: sequences, dropped objects, the columns of a new
// table.
#include <algorithm>

#include "adapters/shared/dialect/token_reader.h"

namespace sabrel::dialect {
namespace {

constexpr std::int32_t kInvalidStatement = 900;
// A limit that no sequence reaches is none.
constexpr std::int64_t kOutOfReach = 999'999'999;

void ParseSequenceLimits(TokenReader& reader, const SequenceDefinition& sequence) {
  const bool is_upper = reader.SkipText("MAXVALUE");
  if (!is_upper && !reader.SkipText("MINVALUE")) reader.Fail("not an option of a sequence");
  // Limits beyond 64 bits are out of reach too.
  constexpr std::size_t kDigits = 18;
  if (reader.Here().kind == TokenKind::kNumber && reader.HereText().size() > kDigits) {
    return reader.Skip();
  }
  const std::int64_t limit = reader.Integer();
  const bool binds = is_upper ? sequence.increment > 0 && limit < kOutOfReach
                              : sequence.increment < 0 && limit > -kOutOfReach;
  if (binds) reader.Fail("a limit of a sequence is not supported");
}

bool StartsConstraint(const TokenReader& reader) {
  const Word word = reader.Here().word;
  if (word == Word::kConstraint || word == Word::kCheck || word == Word::kUnique) return true;
  const bool has_key = reader.Ahead().kind == TokenKind::kWord;
  return has_key && (word == Word::kPrimary || word == Word::kForeign);
}

ColumnDefinition ParseColumn(TokenReader& reader) {
  ColumnDefinition column;
  const Token& name = reader.Here();
  column.name = reader.HereText();
  (void)reader.Name("the name of a column is missing");
  if (name.kind == TokenKind::kQuotedName)
    column.name = column.name.substr(1, column.name.size() - 2);
  if (reader.Here().kind != TokenKind::kWord) reader.Fail("the type of a column is missing");
  column.type = reader.HereText();
  std::transform(column.type.begin(), column.type.end(), column.type.begin(), AsciiUpper);
  reader.Skip();
  column.type_end = reader.PreviousEnd();
  if (!reader.SkipSymbol('(')) return column;
  if (!reader.SkipSymbol('*')) column.width = reader.Integer();
  if (reader.SkipSymbol(',')) column.scale = reader.Integer();
  if (!reader.SkipText("CHAR")) reader.SkipText("BYTE");
  reader.ExpectSymbol(')', "\")\" of a type is missing");
  column.type_end = reader.PreviousEnd();
  return column;
}

}  // namespace

SequenceDefinition ParseCreateSequence(std::string_view statement) {
  TokenReader reader(statement, kInvalidStatement);
  SequenceDefinition sequence;
  reader.ExpectWord(Word::kCreate, "CREATE is missing");
  reader.ExpectWord(Word::kSequence, "SEQUENCE is missing");
  sequence.name = reader.QualifiedName("the sequence's name is missing");
  while (!reader.AtEnd()) {
    if (reader.SkipWord(Word::kStart)) {
      reader.ExpectWord(Word::kWith, "WITH is missing");
      sequence.start = reader.Integer();
    } else if (reader.SkipText("INCREMENT")) {
      reader.ExpectWord(Word::kBy, "BY is missing");
      sequence.increment = reader.Integer();
      if (sequence.increment == 0) {
        throw SyntaxFailure{4002, "INCREMENT must be a non-zero integer"};
      }
    } else if (reader.SkipText("CACHE")) {
      (void)reader.Integer();
    } else if (!reader.SkipText("NOCACHE") && !reader.SkipText("NOCYCLE") &&
               !reader.SkipText("NOORDER") && !reader.SkipWord(Word::kOrder) &&
               !reader.SkipText("NOMAXVALUE") && !reader.SkipText("NOMINVALUE")) {
      ParseSequenceLimits(reader, sequence);
    }
  }
  return sequence;
}

std::string DroppedName(std::string_view statement) {
  TokenReader reader(statement, kInvalidStatement);
  if (!reader.SkipWord(Word::kDrop)) reader.Fail("DROP is missing");
  if (reader.SkipText("MATERIALIZED")) {
    reader.ExpectWord(Word::kView, "VIEW is missing");
  } else {
    const bool is_package = reader.IsText("PACKAGE");
    reader.Skip();
    if (is_package && reader.Ahead().kind != TokenKind::kEnd) reader.SkipText("BODY");
  }
  std::string name = reader.QualifiedName("the name of what to drop is missing");
  // What follows the name of a table or a view is for the engine to read.
  const StatementKind kind = KindOf(statement);
  if ((kind == StatementKind::kDropRoutine || kind == StatementKind::kDropSequence) &&
      !reader.AtEnd()) {
    throw SyntaxFailure{933, "SQL command not properly ended" + PlaceOf(statement, reader.Here())};
  }
  return name;
}

std::vector<ColumnDefinition> ParseCreateTable(std::string_view statement) {
  TokenReader reader(statement, kInvalidStatement);
  std::vector<ColumnDefinition> columns;
  reader.ExpectWord(Word::kCreate, "CREATE is missing");
  reader.ExpectWord(Word::kTable, "TABLE is missing");
  (void)reader.QualifiedName("the table's name is missing");
  if (!reader.SkipSymbol('(')) return columns;
  do {
    const bool is_column = !StartsConstraint(reader);
    if (is_column) columns.push_back(ParseColumn(reader));
    (void)reader.Expression();
    if (is_column) columns.back().end = reader.PreviousEnd();
  } while (reader.SkipSymbol(','));
  reader.ExpectSymbol(')', "the list of columns is not closed");
  return columns;
}

}  // namespace sabrel::dialect
