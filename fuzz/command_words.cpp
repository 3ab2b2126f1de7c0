// What is typed: arguments as values, lines of the shell as words, delimiters of lines.
#include "adapters/console/terminal.h"
#include "cli/argument.h"
#include "cli/display_width.h"
#include "cli/exit_status.h"
#include "cli/line_mode.h"
#include "cli/shell_words.h"
#include "fuzz/target.h"
#include "sabrel/platform/conversions.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::fuzz {
namespace {

using namespace cli;

/// Whether `work` was done; only a UsageError may say that it was not.
template <class Work>
bool Understood(Work&& work) {
  try {
    work();
    return true;
  } catch (const UsageError&) {
    return false;
  }
}

void CheckArgument(std::string_view text) {
  Variant value;
  static_cast<void>(IsNegativeNumber(text));
  Require(ParseArgument("text:" + std::string(text)) == Variant(text), "text: takes any text",
          text);
  if (!Understood([&] { value = ParseArgument(text); })) return;
  if (const auto* string = value.GetIf<std::string>()) {
    const std::string_view expected = text.starts_with("text:") ? text.substr(5) : text;
    Require(*string == expected, "a text is itself", text);
  } else if (value.kind() == VariantKind::kInt32 || value.kind() == VariantKind::kDecimal) {
    Require(ToText(value, LocaleFacts{}) == (text == "-0" ? "0" : text), "digits are the number",
            text);
  } else if (value.kind() == VariantKind::kDate) {
    std::string written = FormatDateTime(value.Get<Date>(), LocaleFacts{});
    written[10] = 'T';
    Require(ParseArgument("date:" + written) == value, "a date's ISO form reads back", text);
  }
}

std::string InQuotes(std::string_view word, char quote) {
  std::string quoted(1, quote);
  for (const char c : word) {
    if (quote == '\'' && c == '\'') {
      quoted += "'\\''";
      continue;
    }
    if (quote == '"' && (c == '"' || c == '\\')) quoted += '\\';
    quoted += c;
  }
  return quoted + quote;
}

void CheckWords(std::string_view line) {
  std::vector<std::string> words;
  if (Understood([&] { words = SplitWords(line); })) {
    for (const char quote : {'\'', '"'}) {
      std::string again;
      for (const std::string& word : words) again += InQuotes(word, quote) + " \t";
      Require(SplitWords(again) == words, "words in quotes read back", again);
    }
  }
  const std::string_view trimmed = Trimmed(line);
  Require(Trimmed(trimmed) == trimmed, "what is trimmed stays", line);
  const auto [word, rest] = SplitFirstWord(line);
  Require(trimmed.starts_with(word) && trimmed.ends_with(rest) && Trimmed(rest) == rest,
          "the first word and the rest are the line", line);
  Require(word.find_first_of(" \t\r\n") == std::string_view::npos, "a word has no blank", line);
}

void CheckLines(std::string_view text) {
  const LineMode mode{true, std::string(text.substr(0, text.find(' ')))};
  std::string delimiter;
  if (!Understood([&] { delimiter = mode.Delimiter(); })) return;
  std::string joined;
  const auto lines = LinesOf(text, delimiter);
  for (const std::string_view line : lines) joined.append(line).append(delimiter);
  Require(std::string_view(joined).substr(0, text.size()) == text, "lines are the text", text);
  static_cast<void>(LineLosses(text, delimiter, 5));
}

void CheckWidth(std::string_view text) {
  const std::string visible = VisibleText(text, " ");
  Require(IsValidUtf8(visible), "visible text is UTF-8", visible);
  Require(VisibleText(visible, " ") == visible, "visible text stays", visible);
  for (const std::size_t columns : {std::size_t{1}, std::size_t{2}, std::size_t{7}}) {
    const std::string fit = FitToWidth(visible, columns);
    Require(DisplayWidth(fit) <= columns && IsValidUtf8(fit), "a text fits its width", fit);
  }
}

}  // namespace

void Check(std::string_view input) {
  CheckArgument(input);
  CheckWords(input);
  CheckLines(input);
  CheckWidth(input);
}

}  // namespace sabrel::fuzz
