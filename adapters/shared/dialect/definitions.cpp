// Definitions that are parsed into structures: sequences, dropped objects, the columns of a new
// table.
#include <algorithm>

#include "adapters/shared/dialect/cursor.h"

namespace sabrel::dialect {
namespace {

constexpr std::int32_t kInvalidStatement = 900;
// A limit that no sequence reaches is none.
constexpr std::int64_t kOutOfReach = 999'999'999;

void ParseSequenceLimits(Cursor& cursor, const SequenceDefinition& sequence) {
  const bool is_upper = cursor.SkipText("MAXVALUE");
  if (!is_upper && !cursor.SkipText("MINVALUE")) cursor.Fail("not an option of a sequence");
  // Limits beyond 64 bits are out of reach too.
  constexpr std::size_t kDigits = 18;
  if (cursor.Here().kind == TokenKind::kNumber && cursor.HereText().size() > kDigits) {
    return cursor.Skip();
  }
  const std::int64_t limit = cursor.Integer();
  const bool binds = is_upper ? sequence.increment > 0 && limit < kOutOfReach
                              : sequence.increment < 0 && limit > -kOutOfReach;
  if (binds) cursor.Fail("a limit of a sequence is not supported");
}

bool StartsConstraint(const Cursor& cursor) {
  const Word word = cursor.Here().word;
  if (word == Word::kConstraint || word == Word::kCheck || word == Word::kUnique) return true;
  const bool has_key = cursor.Ahead().kind == TokenKind::kWord;
  return has_key && (word == Word::kPrimary || word == Word::kForeign);
}

ColumnDefinition ParseColumn(Cursor& cursor) {
  ColumnDefinition column;
  const Token& name = cursor.Here();
  column.name = cursor.HereText();
  (void)cursor.Name("the name of a column is missing");
  if (name.kind == TokenKind::kQuotedName)
    column.name = column.name.substr(1, column.name.size() - 2);
  if (cursor.Here().kind != TokenKind::kWord) cursor.Fail("the type of a column is missing");
  column.type = cursor.HereText();
  std::transform(column.type.begin(), column.type.end(), column.type.begin(), AsciiUpper);
  cursor.Skip();
  if (!cursor.SkipSymbol('(')) return column;
  if (!cursor.SkipSymbol('*')) column.width = cursor.Integer();
  if (cursor.SkipSymbol(',')) column.scale = cursor.Integer();
  if (!cursor.SkipText("CHAR")) cursor.SkipText("BYTE");
  cursor.ExpectSymbol(')', "\")\" of a type is missing");
  return column;
}

}  // namespace

SequenceDefinition ParseCreateSequence(std::string_view statement) {
  Cursor cursor(statement, kInvalidStatement);
  SequenceDefinition sequence;
  cursor.ExpectWord(Word::kCreate, "CREATE is missing");
  cursor.ExpectWord(Word::kSequence, "SEQUENCE is missing");
  sequence.name = cursor.QualifiedName("the sequence's name is missing");
  while (!cursor.AtEnd()) {
    if (cursor.SkipWord(Word::kStart)) {
      cursor.ExpectWord(Word::kWith, "WITH is missing");
      sequence.start = cursor.Integer();
    } else if (cursor.SkipText("INCREMENT")) {
      cursor.ExpectWord(Word::kBy, "BY is missing");
      sequence.increment = cursor.Integer();
      if (sequence.increment == 0) {
        throw SyntaxFailure{4002, "INCREMENT must be a non-zero integer"};
      }
    } else if (cursor.SkipText("CACHE")) {
      (void)cursor.Integer();
    } else if (!cursor.SkipText("NOCACHE") && !cursor.SkipText("NOCYCLE") &&
               !cursor.SkipText("NOORDER") && !cursor.SkipWord(Word::kOrder) &&
               !cursor.SkipText("NOMAXVALUE") && !cursor.SkipText("NOMINVALUE")) {
      ParseSequenceLimits(cursor, sequence);
    }
  }
  return sequence;
}

std::string DroppedName(std::string_view statement) {
  Cursor cursor(statement, kInvalidStatement);
  if (!cursor.SkipWord(Word::kDrop)) cursor.Fail("DROP is missing");
  if (cursor.SkipText("MATERIALIZED")) {
    cursor.ExpectWord(Word::kView, "VIEW is missing");
  } else {
    const bool is_package = cursor.IsText("PACKAGE");
    cursor.Skip();
    if (is_package && cursor.Ahead().kind != TokenKind::kEnd) cursor.SkipText("BODY");
  }
  return cursor.QualifiedName("the name of what to drop is missing");
}

std::vector<ColumnDefinition> ParseCreateTable(std::string_view statement) {
  Cursor cursor(statement, kInvalidStatement);
  std::vector<ColumnDefinition> columns;
  cursor.ExpectWord(Word::kCreate, "CREATE is missing");
  cursor.ExpectWord(Word::kTable, "TABLE is missing");
  (void)cursor.QualifiedName("the table's name is missing");
  if (!cursor.SkipSymbol('(')) return columns;
  do {
    const bool is_column = !StartsConstraint(cursor);
    if (is_column) columns.push_back(ParseColumn(cursor));
    (void)cursor.Expression();
    if (is_column) columns.back().end = cursor.PreviousEnd();
  } while (cursor.SkipSymbol(','));
  cursor.ExpectSymbol(')', "the list of columns is not closed");
  return columns;
}

}  // namespace sabrel::dialect
