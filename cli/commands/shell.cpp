// `shell`: many commands in one session.
#include <memory>
#include <utility>
#include <vector>

#include "cli/commands/commands.h"
#include "cli/line_reader.h"
#include "cli/shell_words.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::cli {
namespace {

// Editors of some systems put it at the beginning of a file.
constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";

constexpr std::string_view kHelpAfterNames =
    "with its words parted by blanks and quoted with ' or \";\n"
    "`COMMAND --help` tells its arguments. Also:\n"
    "  SELECT ... or WITH ...      is a query; the rest of the line is SQL, no quoting needed\n"
    "  INSERT, UPDATE, BEGIN ...   is a request; `query` and `request` take SQL that way too\n"
    "  format table|csv|json       changes the form of results\n"
    "  help, exit\n"
    "A line that ends in \\ goes on in the next one; lines that start with -- or # are comments.\n";

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
      : context_(context), keep_going_(keep_going), reader_(MakeLineReader(context.Signals())) {}

  int Run() {
    std::string line;
    while (!left_) {
      auto [end, text] = reader_->Next();
      ++lines_read_;
      const bool has_mark = lines_read_ == 1 && text.starts_with(kByteOrderMark);
      if (has_mark) text.erase(0, kByteOrderMark.size());
      if (line.empty()) first_line_ = lines_read_;
      if (end == LineReader::End::kInterrupted) {
        if (context_.Signals().Ending()) return kTerminated;
        if (!reader_->IsInteractive()) return kCancelled;
        context_.Signals().StartCommand();
        line.clear();
        continue;
      }
      line += text;
      if (end == LineReader::End::kLine && line.ends_with('\\')) {
        line.back() = '\n';
        continue;
      }
      if (!line.empty() || end == LineReader::End::kLine) Take(RunLine(line));
      line.clear();
      if (context_.Signals().Ending()) return kTerminated;
      if (end == LineReader::End::kEnd) break;
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

  int RunLine(const std::string& line) {
    const auto [word, rest] = SplitFirstWord(line);
    if (word.empty() || word.starts_with("--") || word.starts_with('#')) return kDone;
    const std::string command = LowerCase(word);
    if (command == "exit" || command == "quit") {
      left_ = true;
      return kDone;
    }
    const StatementWord kind = StatementKindOf(word);
    // No statement starts with a quote: such a line is quoted as on the command line.
    const bool has_words =
        rest == "--help" || rest == "-h" || rest.starts_with('"') || rest.starts_with('\'');
    if (kind == StatementWord::kQuery) return RunSql(RunQuery, Trimmed(line));
    if (kind == StatementWord::kRequest) return RunSql(RunRequest, Trimmed(line));
    if (command == "query" && !has_words) return RunSql(RunQuery, rest);
    if (command == "request" && !has_words) return RunSql(RunRequest, rest);
    return context_.Run([&, words = std::string(rest), typed = std::string(word)](Context&) {
      return RunCommand(line, typed, words);
    });
  }

  int RunSql(int (*run)(Context&, const std::string&), std::string_view sql) {
    return context_.Run([&](Context& c) {
      if (sql.empty()) throw UsageError("A statement has to follow");
      return run(c, std::string(sql));
    });
  }

  int RunCommand(const std::string& line, const std::string& word, const std::string& rest) {
    const std::string command = LowerCase(word);
    if (command == "help" || command == "-h") {
      context_.Out().Write(Help(context_));
      return kDone;
    }
    if (command == "format") return SetFormat(rest);
    CLI::App parser("One line of the shell", "");
    parser.require_subcommand(1);
    AddSessionCommands(parser, context_);
    context_.action = nullptr;
    const auto is_meant = [&word](const CLI::App* known) { return known->get_name() == word; };
    if (parser.get_subcommands(is_meant).empty()) {
      throw UsageError("There is no command '" + word +
                       "' (`help` tells what there is; to send SQL, write `query` or `request` "
                       "before it)");
    }
    try {
      ParseWords(parser, SplitWords(line));
    } catch (const CLI::CallForHelp&) {
      context_.Out().Write(parser.get_subcommands().front()->help());
      return kDone;
    } catch (const CLI::ParseError& wrong) {
      throw UsageError(std::string(wrong.what()) + " (`help` tells what there is)");
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
  std::size_t lines_read_ = 0;
  /// Of the lines that are one command.
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
