// `shell`: many commands in one session.
#include <memory>
#include <vector>

#include "cli/commands/commands.h"
#include "cli/line_reader.h"
#include "cli/shell_words.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::cli {
namespace {

constexpr std::string_view kHelp =
    "A line is a command as on the command line (login, registry, server, query, request, call,\n"
    "function, proc, literal, convert, sequence, now, range, probe, length, reset, value, week,\n"
    "email, features, connection, compat, network-release, module-version, entity, report,\n"
    "validate, text, slices),\n"
    "with its words parted by blanks and quoted with ' or \";\n"
    "`COMMAND --help` tells its arguments. Also:\n"
    "  SELECT ... or WITH ...      is a query; the rest of the line is SQL, no quoting needed\n"
    "  INSERT, UPDATE, BEGIN ...   is a request; `query` and `request` take SQL that way too\n"
    "  format table|csv|json       changes the form of results\n"
    "  help, exit\n"
    "A line that ends in \\ goes on in the next one; lines that start with -- or # are comments.\n";

class Shell {
 public:
  Shell(Context& context, bool keep_going)
      : context_(context), keep_going_(keep_going), reader_(MakeLineReader(context.Signals())) {}

  int Run() {
    std::string line;
    while (!left_) {
      auto [end, text] = reader_->Next();
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
    const bool has_help = rest == "--help" || rest == "-h";
    if (kind == StatementWord::kQuery) return RunSql(RunQuery, Trimmed(line));
    if (kind == StatementWord::kRequest) return RunSql(RunRequest, Trimmed(line));
    if (command == "query" && !has_help) return RunSql(RunQuery, rest);
    if (command == "request" && !has_help) return RunSql(RunRequest, rest);
    return context_.Run(
        [&, words = std::string(rest)](Context&) { return RunCommand(line, command, words); });
  }

  int RunSql(int (*run)(Context&, const std::string&), std::string_view sql) {
    return context_.Run([&](Context& c) {
      if (sql.empty()) throw UsageError("A statement has to follow");
      return run(c, std::string(sql));
    });
  }

  int RunCommand(const std::string& line, const std::string& command, const std::string& rest) {
    if (command == "help") {
      context_.Out().Write(kHelp);
      return kDone;
    }
    if (command == "format") return SetFormat(rest);
    CLI::App parser("One line of the shell", "");
    parser.require_subcommand(1);
    AddSessionCommands(parser, context_);
    context_.action = nullptr;
    try {
      ParseWords(parser, SplitWords(line));
    } catch (const CLI::CallForHelp&) {
      const auto parsed = parser.get_subcommands();
      context_.Out().Write(parsed.empty() ? std::string(kHelp) : parsed.front()->help());
      return kDone;
    } catch (const CLI::ParseError& wrong) {
      throw UsageError(std::string(wrong.what()) + " (`help` tells what there is)");
    }
    return context_.action(context_);
  }

  int SetFormat(const std::string& name) {
    if (name == "table") {
      context_.options.format = Format::kTable;
    } else if (name == "csv") {
      context_.options.format = Format::kCsv;
    } else if (name == "json") {
      context_.options.format = Format::kJson;
    } else {
      throw UsageError("format is table, csv or json");
    }
    return kDone;
  }

  Context& context_;
  bool keep_going_;
  std::unique_ptr<LineReader> reader_;
  int status_ = kDone;
  bool left_ = false;
};

}  // namespace

void AddShellCommand(CLI::App& parent, Context& context) {
  const auto keep_going = std::make_shared<bool>(false);
  CLI::App& shell = AddCommand(parent, context, "shell",
                               "Run many commands in one session, typed or from standard input",
                               "  sabrel --site plant.site shell\n"
                               "  sabrel --site plant.site shell --keep-going < lines.txt\n\n" +
                                   std::string(kHelp),
                               nullptr);
  shell.callback([&context, keep_going] {
    context.session = [keep_going](Context& c) { return Shell(c, *keep_going).Run(); };
  });
  shell.add_flag("--keep-going", *keep_going,
                 "Go on after a line that failed; the status is still that of the first one");
}

}  // namespace sabrel::cli
