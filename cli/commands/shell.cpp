// `shell`: many commands in one session.
#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "adapters/shared/dialect/statement_reader.h"
#include "cli/commands/commands.h"
#include "cli/line_reader.h"
#include "cli/shell_words.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::cli {
namespace {

// Editors of some systems put it at the beginning of a file.
constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";

constexpr std::array<std::string_view, 7> kShellWords = {"exit",   "quit",  "help",   "-h",
                                                         "format", "query", "request"};

constexpr std::string_view kHelpAfterNames =
    "with its words parted by blanks and quoted with ' or \"; one that ends in \\ goes on in the\n"
    "next line. `COMMAND --help` tells its arguments. Also:\n"
    "  SELECT ..., UPDATE ...;     SQL, over as many lines as it takes, up to ; or a line with /\n"
    "                              alone; `query` and `request` take SQL that way, too\n"
    "  BEGIN ..., CREATE FUNCTION  SQL that holds ; ends at a line with / alone\n"
    "  format table|csv|json       changes the form of results\n"
    "  help, exit, quit\n"
    "Ctrl-C drops what is not finished. Comments are as in SQL, or lines that start with #.\n";

std::string Help(Context& context) {
  constexpr std::size_t kWidth = 91;
  CLI::App parser;
  AddSessionCommands(parser, context);
  std::string text;
  std::string line = "A line is a command as on the command line (";
  const auto commands = parser.get_subcommands({});
  for (const CLI::App* command : commands) {
    const std::string word = command->get_name() + (command == commands.back() ? ")," : ",");
    if (line.size() + word.size() > kWidth) {
      line.back() = '\n';
      text += std::exchange(line, {});
    }
    line += word + " ";
  }
  line.back() = '\n';
  return text + line + std::string(kHelpAfterNames);
}

class Shell {
 public:
  Shell(Context& context, bool keep_going)
      : context_(context), keep_going_(keep_going), reader_(MakeLineReader(context.Signals())) {
    CLI::App parser;
    AddSessionCommands(parser, context);
    for (const CLI::App* command : parser.get_subcommands({})) {
      commands_.push_back(command->get_name());
    }
  }

  int Run() {
    while (!left_) {
      auto [end, line] = reader_->Next(Prompt());
      if (end == LineReader::End::kInterrupted) {
        const bool was_unfinished = DropUnfinished();
        if (context_.Signals().Ending()) return kTerminated;
        if (!reader_->IsInteractive()) return was_unfinished ? kWrongUsage : kCancelled;
        context_.Signals().StartCommand();
        continue;
      }
      if (end == LineReader::End::kEnd) break;
      ++lines_read_;
      if (lines_read_ == 1 && line.starts_with(kByteOrderMark)) {
        line.erase(0, kByteOrderMark.size());
      }
      TakeLine(line);
      if (context_.Signals().Ending()) return kTerminated;
    }
    if (DropUnfinished()) {
      Take(kWrongUsage);
      return reader_->IsInteractive() ? kWrongUsage : status_;
    }
    return reader_->IsInteractive() ? kDone : status_;
  }

 private:
  void Take(int status) {
    if (status > kFalse && status_ == kDone) status_ = status;
    const bool goes_on = reader_->IsInteractive() || keep_going_;
    if (status > kFalse && status <= kFailed && !reader_->IsInteractive()) {
      context_.Note("In line " + std::to_string(first_line_) + " of the input.");
    }
    if (status == kCancelled && !reader_->IsInteractive()) left_ = true;
    if (status > kFalse && !goes_on) left_ = true;
  }

  [[nodiscard]] bool IsUnfinished() const {
    return sql_.HasBegun() || sql_.IsInQuote() || !command_.empty();
  }

  [[nodiscard]] std::string Prompt() const {
    if (!IsUnfinished()) return "sabrel> ";
    const std::string number = std::to_string(lines_read_ - first_line_ + 2);
    return std::string(6 - std::min<std::size_t>(number.size(), 6), ' ') + number + "> ";
  }

  // Names what was begun and forgets it; false when there is nothing.
  bool DropUnfinished() {
    if (!IsUnfinished()) return false;
    constexpr std::size_t kMostShown = 60;
    const bool is_comment = command_.empty() && !sql_.HasBegun();
    const std::string_view text = Trimmed(command_.empty() ? sql_.Text() : command_);
    const std::string_view line = text.substr(0, text.find('\n'));
    const std::string_view shown = line.substr(0, ByteLengthOf(line, kMostShown));
    const std::string what = is_comment      ? "The comment"
                             : shown.empty() ? "The statement"
                                             : "'" + std::string(shown) + "' ...";
    std::string remedy = "end it with ; or a line with / alone";
    if (sql_.HoldsStatements()) remedy = "end it with a line with / alone";
    if (sql_.IsInQuote()) remedy = "close the quote or comment that is open";
    if (is_comment) remedy = "close it with */";
    if (!command_.empty()) remedy = "after a line that ends in \\ another has to follow";
    context_.Note("sabrel: " + what + " is not finished and was not sent: " + remedy);
    sql_.Forget();
    command_.clear();
    return true;
  }

  // A line may hold several statements, the end of one and the beginning of the next.
  void TakeLine(const std::string& line) {
    if (!command_.empty()) {
      command_ += line;
      return RunCommandLine(std::exchange(command_, {}));
    }
    left_ = MeansToLeave(line);
    std::string_view rest = line;
    bool follows_comment = false;
    while (!left_ && !context_.Signals().Ending()) {
      if (!sql_.HasBegun() && !sql_.IsInQuote()) {
        const Beginning beginning = Start(rest, std::exchange(follows_comment, false));
        if (beginning == Beginning::kNone) return;
        if (beginning == Beginning::kAgain) continue;
      }
      rest.remove_prefix(sql_.Take(rest));
      follows_comment = !sql_.IsComplete();
      if (sql_.IsComplete() && RunSql(sql_.Finish()) == kCancelled) return;
      if (rest.empty()) return;
    }
  }

  // In a statement: leaving is understood where the word can be no part of it. EXIT ends a loop.
  [[nodiscard]] bool MeansToLeave(std::string_view line) const {
    if (!sql_.HasBegun() || sql_.IsInQuote()) return false;
    const auto is = [word = Trimmed(line)](std::string_view known) {
      return EqualIgnoringCase(word, known);
    };
    return is("quit") || (!sql_.HoldsStatements() && (is("exit") || is("quit;") || is("exit;")));
  }

  enum class Beginning : std::uint8_t {
    kNone,   // The line is done with.
    kAgain,  // After what a ";" ended.
    kSql,    // From the first byte of the rest on.
  };

  // At the beginning of a command, which it runs, or of a statement.
  Beginning Start(std::string_view& rest, bool follows_comment) {
    const dialect::Token first = dialect::Lexer(rest).Scan();
    if (first.kind == dialect::TokenKind::kEnd || Trimmed(rest).front() == '#') {
      return Beginning::kNone;
    }
    first_line_ = lines_read_;
    follows_comment = follows_comment || !Trimmed(rest.substr(0, first.begin)).empty();
    rest.remove_prefix(first.begin);
    if (rest.front() == ';') {
      rest.remove_prefix(1);
      return Beginning::kAgain;
    }
    if (first.kind == dialect::TokenKind::kOpen && rest.front() == '/') return Beginning::kSql;
    run_ = RunQuery;
    const std::string word(WordOf(rest));
    if (IsCommand(word)) return StartCommand(word, rest);
    if (Trimmed(rest) == "/") return Beginning::kNone;  // What it ends was sent.
    if (follows_comment || rest.front() == '(' || StartsWithVerb(rest)) return Beginning::kSql;
    RunCommandLine(std::string(rest));
    return Beginning::kNone;
  }

  // The first word; `quit;` is understood, as after SQL.
  static std::string_view WordOf(std::string_view line) {
    return line.substr(0, line.find_first_of(" \t;"));
  }

  [[nodiscard]] bool IsCommand(const std::string& word) const {
    const std::string command = LowerCase(word);
    return std::ranges::find(commands_, command) != commands_.end() ||
           std::ranges::find(kShellWords, command) != kShellWords.end();
  }

  static bool IsLeaving(std::string_view command) { return command == "exit" || command == "quit"; }

  // Nothing but ; and comments.
  static bool EndsAfter(std::string_view rest) {
    while (true) {
      const dialect::Token next = dialect::Lexer(rest).Scan();
      if (next.kind == dialect::TokenKind::kEnd) return true;
      rest.remove_prefix(next.begin);
      if (rest.front() != ';') return false;
      rest.remove_prefix(1);
    }
  }

  Beginning StartCommand(const std::string& word, std::string_view& line) {
    const std::string_view rest = Trimmed(line.substr(word.size()));
    const std::string command = LowerCase(word);
    if (rest.starts_with(';') && line[word.size()] == ';' && !IsLeaving(command)) {
      line.remove_prefix(word.size() + 1);
      RunCommandLine(word);
      return Beginning::kAgain;
    }
    // No statement starts with a quote or an option.
    const bool has_words = rest.starts_with('"') || rest.starts_with('\'') || rest == "-h" ||
                           (rest.size() > 2 && rest.starts_with("--") && rest[2] != ' ');
    if ((command != "query" && command != "request") || has_words) {
      RunCommandLine(std::string(line));
      return Beginning::kNone;
    }
    if (command == "request") run_ = RunRequest;
    sql_.Begin();
    line = rest;
    return Beginning::kSql;
  }

  void RunCommandLine(std::string line) {
    if (line.ends_with('\\')) {
      line.back() = '\n';
      command_ = std::move(line);
      return;
    }
    const std::string word(WordOf(line));
    const std::string command = LowerCase(word);
    if (IsLeaving(command) && EndsAfter(std::string_view(line).substr(word.size()))) {
      left_ = true;
      return;
    }
    Take(context_.Run(
        [&](Context&) { return RunCommand(line, word, std::string(SplitFirstWord(line).rest)); }));
  }

  int RunSql(const std::string& sql) {
    const int status = context_.Run([&](Context& c) {
      if (sql.empty()) throw UsageError("A statement has to follow");
      return run_(c, sql);
    });
    Take(status);
    return status;
  }

  int RunCommand(const std::string& line, const std::string& word, const std::string& rest) {
    const std::string command = LowerCase(word);
    if (command == "help" || command == "-h") {
      context_.Out().Write(Help(context_));
      return kDone;
    }
    if (IsLeaving(command)) {
      throw UsageError("Nothing may follow '" + word + "': it ends the session");
    }
    if (command == "format") return SetFormat(rest);
    CLI::App parser("One line of the shell", "");
    parser.require_subcommand(1);
    AddSessionCommands(parser, context_);
    context_.action = nullptr;
    context_.command_timeout_s.reset();
    const auto is_meant = [&](const CLI::App* known) { return known->get_name() == command; };
    if (parser.get_subcommands(is_meant).empty()) {
      throw UsageError("There is no command '" + word +
                       "' (`help` tells what there is; to send SQL, write `query` or `request` "
                       "before it)");
    }
    try {
      std::vector<std::string> words = SplitWords(line);
      words.front() = LowerCase(words.front());
      ParseWords(parser, std::move(words));
    } catch (const CLI::CallForHelp&) {
      context_.Out().Write(parser.get_subcommands().front()->help());
      return kDone;
    } catch (const CLI::ParseError& wrong) {
      throw UsageError(std::string(wrong.what()) + " (`help` tells what there is)");
    }
    // Later lines may write files: a text that was read they may replace, a password they may not.
    for (const std::string& file : FilesOf(parser, {"--password-file"})) {
      context_.Reserve(file, "a password file of this session");
    }
    return context_.action(context_);
  }

  int SetFormat(const std::string& name) {
    const auto word = FormatWords().find(name);
    if (word == FormatWords().end()) throw UsageError("format is table, csv or json");
    context_.options.format = word->second;
    return kDone;
  }

  Context& context_;
  bool keep_going_;
  std::unique_ptr<LineReader> reader_;
  std::vector<std::string> commands_;
  dialect::StatementReader sql_;
  /// What sends the statement that `sql_` reads.
  int (*run_)(Context&, const std::string&) = RunQuery;
  /// A command whose last line ended in a backslash.
  std::string command_;
  std::size_t lines_read_ = 0;
  /// Where the command or statement begins.
  std::size_t first_line_ = 0;
  int status_ = kDone;
  bool left_ = false;
};

}  // namespace

void AddShellCommand(CLI::App& parent, Context& context) {
  const auto keep_going = std::make_shared<bool>(false);
  CLI::App& shell =
      AddCommand(parent, context, "shell",
                 "Run many commands in one session, typed or from standard input", "", nullptr);
  shell.footer([&context] {
    const std::string help = Help(context);
    // The parser ends what it gets from here with a line break of its own.
    return "Examples:\n  sabrel --site plant.site shell\n"
           "  sabrel --site plant.site shell --keep-going < lines.txt\n\n" +
           help.substr(0, help.size() - 1);
  });
  shell.callback([&context, keep_going] {
    context.session = [keep_going](Context& c) { return Shell(c, *keep_going).Run(); };
  });
  shell.add_flag("--keep-going", *keep_going,
                 "Go on after a line that failed; the status is still that of the first one");
}

}  // namespace sabrel::cli
