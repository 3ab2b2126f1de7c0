// Statements rewritten for other engines: refused with one of Oracle's numbers, or one statement
// of the other server whose quotes are closed as that server reads them, with a constant for each
// of its numbered parameters.
#include <algorithm>

#include "adapters/odbc/postgresql/postgresql_dialect.h"
#include "adapters/shared/dialect/dialect.h"
#include "adapters/shared/dialect/token.h"
#include "fuzz/target.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::fuzz {
namespace {

/// Reads text as a server does, as far as quotes and comments go.
class Scanner {
 public:
  enum class Server { kPostgresql, kSqlite };
  Scanner(std::string_view text, Server server)
      : text_(text), is_postgresql_(server == Server::kPostgresql) {}

  /// Requires that `text` is one statement.
  void Read() {
    while (at_ < text_.size()) ReadToken();
  }
  /// Parentheses that are opened and not closed.
  [[nodiscard]] int Open() const { return open_; }
  /// The numbers of its parameters.
  [[nodiscard]] const std::vector<std::size_t>& Parameters() const { return parameters_; }

 private:
  [[nodiscard]] std::string_view Rest() const { return text_.substr(at_); }
  static bool IsDigit(char c) { return c >= '0' && c <= '9'; }
  static bool StartsWord(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || (c & 0x80) != 0;
  }
  static bool IsInWord(char c) { return StartsWord(c) || IsDigit(c) || c == '$'; }

  void ReadToken() {
    const std::string_view rest = Rest();
    const char c = rest.front();
    if (rest.starts_with("--")) return SkipPast("\n", 2, true);
    if (rest.starts_with("/*")) return SkipComment();
    if (c == '\'') return SkipQuoted('\'', false);
    if (c == '"' || (c == '`' && !is_postgresql_)) return SkipQuoted(c, false);
    if (c == '[' && !is_postgresql_) return SkipPast("]", 1, false);
    if (c == '$' && is_postgresql_) return SkipDollarQuoted();
    if (c == '?' && !is_postgresql_) return TakeParameter();
    if (StartsWord(c)) return SkipWord();
    Require(c != ';', "is one statement", text_);
    Require(static_cast<unsigned char>(c) >= ' ' || c == '\n' || c == '\r' || c == '\t' ||
                c == '\f' || c == '\v',
            "has no control characters", text_);
    if (c == '(') ++open_;
    if (c == ')') --open_;
    ++at_;
  }

  void SkipPast(std::string_view end, std::size_t begin, bool may_end_with_text) {
    const std::size_t found = text_.find(end, at_ + begin);
    Require(found != std::string_view::npos || may_end_with_text, "quotes are closed", text_);
    at_ = found == std::string_view::npos ? text_.size() : found + end.size();
  }

  /// Comments nest on PostgreSQL only.
  void SkipComment() {
    int depth = 0;
    do {
      Require(at_ < text_.size(), "comments are closed", text_);
      if (Rest().starts_with("/*") && (depth == 0 || is_postgresql_)) {
        ++depth;
        at_ += 2;
      } else if (Rest().starts_with("*/")) {
        --depth;
        at_ += 2;
      } else {
        ++at_;
      }
    } while (depth > 0);
  }

  void SkipQuoted(char quote, bool has_escapes) {
    for (++at_; at_ < text_.size(); ++at_) {
      if (has_escapes && text_[at_] == '\\') {
        ++at_;
      } else if (text_[at_] == quote) {
        if (text_.substr(at_ + 1, 1) != std::string_view(&quote, 1)) break;
        ++at_;
      }
    }
    Require(at_ < text_.size(), "quotes are closed", text_);
    ++at_;
  }

  void SkipDollarQuoted() {
    std::size_t end = at_ + 1;
    while (end < text_.size() && IsInWord(text_[end]) && text_[end] != '$') ++end;
    if (end == text_.size() || text_[end] != '$' || (end > at_ + 1 && IsDigit(text_[at_ + 1]))) {
      ++at_;
      return;
    }
    SkipPast(text_.substr(at_, end + 1 - at_), end + 1 - at_, false);
  }

  void SkipWord() {
    const std::size_t begin = at_;
    while (at_ < text_.size() && IsInWord(text_[at_])) ++at_;
    const std::string_view word = text_.substr(begin, at_ - begin);
    // E'...' has escapes on PostgreSQL, and only there.
    if (is_postgresql_ && Rest().starts_with('\'')) SkipQuoted('\'', word == "e" || word == "E");
  }

  void TakeParameter() {
    std::size_t number = 0;
    for (++at_; at_ < text_.size() && IsDigit(text_[at_]); ++at_) {
      number =
          std::min(number * 10 + static_cast<std::size_t>(text_[at_] - '0'), std::size_t{1} << 40U);
    }
    parameters_.push_back(number);
  }

  std::string_view text_;
  std::size_t at_ = 0;
  int open_ = 0;
  bool is_postgresql_;
  std::vector<std::size_t> parameters_;
};

/// Takes everything that the rewriting can do for an engine.
class LiftingEngine final : public dialect::Engine {
 public:
  [[nodiscard]] std::optional<RoutineFacts> FindRoutine(std::string_view name) const override {
    if (name.size() % 2 == 0) return std::nullopt;
    return RoutineFacts{name.size() % 3 == 0};
  }
  [[nodiscard]] bool IsReservedWord(std::string_view word) const override {
    return word == "LIMIT";
  }
  [[nodiscard]] std::string NextValue(std::string_view) const override { return "next_value()"; }
  [[nodiscard]] std::string CurrentValue(std::string_view) const override { return "value()"; }
  [[nodiscard]] std::string SystemDate() const override { return "now()"; }
  [[nodiscard]] CallOpening RoutineCall(std::string_view) const override {
    return {"call(1", true};
  }
  [[nodiscard]] std::string_view AddFunction() const override { return "add"; }
  [[nodiscard]] std::string_view SubtractFunction() const override { return "subtract"; }
  [[nodiscard]] std::string_view DivideFunction() const override { return "divide"; }
  [[nodiscard]] std::string_view ConcatenateFunction() const override { return "concatenate"; }
  [[nodiscard]] std::string_view SingleFunction() const override { return "single"; }
  [[nodiscard]] std::string_view CompareFunction() const override { return "compare"; }
  [[nodiscard]] std::string_view PatternFunction() const override { return "pattern"; }
  [[nodiscard]] std::string_view FunctionName(std::string_view) const override { return {}; }
};

template <class Work>
void Refusable(Work&& work) {
  try {
    work();
  } catch (const dialect::SyntaxFailure& failure) {
    Require(failure.native_number > 0 && IsValidUtf8(failure.message),
            "a refusal has Oracle's number and a text", failure.message);
  }
}

int OpenIn(std::string_view statement) {
  int open = 0;
  for (const dialect::Token& token : dialect::Tokenize(statement)) {
    if (token.kind != dialect::TokenKind::kSymbol) continue;
    if (token.symbol == '(') ++open;
    if (token.symbol == ')') --open;
  }
  return open;
}

Scanner Scanned(std::string_view text, Scanner::Server server) {
  Require(IsSendableText(text), "can be sent", text);
  Scanner scanner(text, server);
  scanner.Read();
  return scanner;
}

void CheckPostgresql(std::string_view statement) {
  const odbc::Compiled compiled = odbc::CompileForPostgresql(statement);
  const Scanner text = Scanned(compiled.text, Scanner::Server::kPostgresql);
  const Scanner question = Scanned(compiled.question, Scanner::Server::kPostgresql);
  Require(question.Open() == 0, "a question's parentheses are closed", compiled.question);
  if (dialect::KindOf(statement) == dialect::StatementKind::kBlock) {
    Require(text.Open() == 0, "a block's parentheses are closed", compiled.text);
  } else if (!compiled.text.empty()) {
    Require(text.Open() == OpenIn(statement), "parentheses are kept", compiled.text);
  }
}

void CheckLifted(std::string_view statement, const dialect::Rewritten& rewritten) {
  const Scanner scanner = Scanned(rewritten.text, Scanner::Server::kSqlite);
  Require(scanner.Open() == OpenIn(statement), "parentheses are kept", rewritten.text);
  std::vector<bool> used(rewritten.constants.size());
  for (const std::size_t number : scanner.Parameters()) {
    Require(number >= 1 && number <= used.size(), "a parameter has a constant", rewritten.text);
    used[number - 1] = true;
  }
  Require(std::ranges::find(used, false) == used.end(), "a constant has a parameter",
          rewritten.text);
}

}  // namespace

void Check(std::string_view text) {
  std::string_view statement;
  Refusable([&] { statement = dialect::RequireOneStatement(text); });
  if (statement.empty()) return;
  Refusable([&] { CheckPostgresql(statement); });
  const LiftingEngine engine;
  Refusable([&] { CheckLifted(statement, dialect::Rewrite(statement, engine)); });
  Refusable([&] { CheckLifted(statement, dialect::RewriteExpression(statement, engine)); });
}

}  // namespace sabrel::fuzz
