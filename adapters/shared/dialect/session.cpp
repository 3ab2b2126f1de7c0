// ALTER SESSION SET.
#include "adapters/shared/dialect/token_reader.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::dialect {

SessionSettings ParseAlterSession(std::string_view statement) {
  constexpr std::int32_t kInvalidOption = 922;
  TokenReader reader(statement, kInvalidOption);
  reader.Skip();  // ALTER
  reader.Skip();  // SESSION
  SessionSettings settings;
  const auto note_other = [&](std::string_view name) {
    if (settings.other.empty()) settings.other = name.empty() ? "SET" : UpperCase(name);
  };
  if (!reader.SkipWord(Word::kSet)) {
    note_other(reader.HereText());
    return settings;
  }
  do {
    const std::string_view name = reader.HereText();
    reader.Skip();
    const bool has_value = reader.SkipSymbol('=');
    const bool is_text = reader.Here().kind == TokenKind::kText;
    const bool is_quoted = reader.Here().kind == TokenKind::kQuotedName;
    if (has_value && EqualIgnoringCase(name, "NLS_DATE_FORMAT") && (is_text || is_quoted)) {
      const std::string_view written = reader.HereText();
      settings.date_format =
          is_text ? ValueOfText(written) : std::string(written.substr(1, written.size() - 2));
    } else {
      note_other(name);
    }
    reader.Skip();
  } while (!reader.AtEnd());
  return settings;
}

std::string RequireDateFormatOnly(std::string_view statement) {
  const SessionSettings settings = ParseAlterSession(statement);
  if (settings.other.empty()) return settings.date_format.value();
  throw SyntaxFailure{2248, "invalid option for ALTER SESSION: " + settings.other +
                                "; NLS_DATE_FORMAT = '...' can be set"};
}

}  // namespace sabrel::dialect
