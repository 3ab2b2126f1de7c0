#include "cli/shell_words.h"

#include <algorithm>
#include <array>

#include "adapters/shared/dialect/token.h"
#include "cli/exit_status.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::cli {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";
// Sorted.
constexpr std::array<std::string_view, 27> kVerbs = {
    "alter",     "analyze", "audit",   "begin",    "comment",   "commit", "create",
    "declare",   "delete",  "drop",    "explain",  "flashback", "grant",  "insert",
    "lock",      "merge",   "noaudit", "purge",    "rename",    "revoke", "rollback",
    "savepoint", "select",  "set",     "truncate", "update",    "with"};

bool IsBlank(char c) { return kBlanks.find(c) != std::string_view::npos; }

}  // namespace

std::vector<std::string> SplitWords(std::string_view line) {
  std::vector<std::string> words;
  char quote = '\0';
  bool in_word = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    if (quote == '\0' && IsBlank(c)) {
      in_word = false;
      continue;
    }
    if (!in_word) words.emplace_back();
    in_word = true;
    const bool has_next = i + 1 < line.size();
    const bool escapes =
        c == '\\' && has_next &&
        (quote == '\0' || (quote == '"' && (line[i + 1] == '"' || line[i + 1] == '\\')));
    if (escapes) {
      words.back() += line[++i];
    } else if (quote == '\0' && (c == '\'' || c == '"')) {
      quote = c;
    } else if (c == quote && quote != '\0') {
      quote = '\0';
    } else {
      words.back() += c;
    }
  }
  if (quote != '\0') throw UsageError(std::string("The quote ") + quote + " is not closed");
  return words;
}

std::string_view Trimmed(std::string_view line) {
  const std::size_t start = line.find_first_not_of(kBlanks);
  if (start == std::string_view::npos) return {};
  return line.substr(start, line.find_last_not_of(kBlanks) + 1 - start);
}

FirstWord SplitFirstWord(std::string_view line) {
  line = Trimmed(line);
  const std::size_t end = std::min(line.find_first_of(kBlanks), line.size());
  return {line.substr(0, end), Trimmed(line.substr(end))};
}

bool StartsWithVerb(std::string_view sql) {
  const dialect::Token first = dialect::Lexer(sql).Scan();
  return first.kind == dialect::TokenKind::kWord &&
         std::ranges::binary_search(kVerbs, LowerCase(dialect::TextOf(sql, first)));
}

}  // namespace sabrel::cli
