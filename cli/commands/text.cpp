// `text`: stored texts, and the copies of query texts.
#include <limits>
#include <memory>
#include <utility>

#include "adapters/odbc/engine.h"
#include "cli/commands/commands.h"
#include "cli/commands/outcome.h"
#include "cli/line_mode.h"
#include "cli/row_printer.h"
#include "cli/text_file.h"
#include "sabrel/core/gsabrel.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::cli {
namespace {

struct CopyArguments {
  std::int32_t query = 0;
  std::int32_t filter = 0;
  bool original = false;
};

int Copy(Context& context, const CopyArguments& arguments) {
  context.RequireServer();
  if (arguments.original) {
    GSabrel::CopyOriginalQueryText(arguments.query, arguments.filter);
    return kDone;
  }
  return PrintAnswer(context,
                     Variant(GSabrel::CopyScenarioQueryText(arguments.query, arguments.filter)));
}

struct TextArguments {
  std::int32_t id = 0;
  std::string file;
  /// Of the file that a text is loaded into.
  bool replace = false;
  LineMode mode;
};

// No text holds it, so that the rows of one that was read with it can be told apart.
constexpr std::string_view kRowEnd("\0", 1);

constexpr std::string_view kNoTextHelp = "Exit status 1: there is no such text.";

int NoText(Context& context, std::int32_t id) {
  context.Note("There is no text " + std::to_string(id));
  return kFalse;
}

int Load(Context& context, const TextArguments& arguments) {
  context.RequireServer();
  const std::string delimiter = arguments.mode.Delimiter();
  context.Advance("loading", 0, 0);
  const TextStringRef text = GDBString::LoadDBString(arguments.id, arguments.mode.lines, delimiter);
  RequireNotCancelled(context);
  // An empty text has a row; only that tells it from none.
  if (text->Text().empty() &&
      GDBString::LoadDBString(arguments.id, true, kRowEnd)->Text().empty()) {
    return NoText(context, arguments.id);
  }
  WriteText(context, text->Text(), arguments.file, arguments.replace);
  return kDone;
}

int Lines(Context& context, std::int32_t id) {
  context.RequireServer();
  const TextStringRef text = GDBString::LoadDBString(id, true, kRowEnd);
  RequireNotCancelled(context);
  const auto lines = LinesOf(text->Text(), kRowEnd);
  if (lines.empty()) return NoText(context, id);
  if (context.Out().IsTerminal()) context.StopProgress();
  const auto printer = MakeRowPrinter(context.options.format, context.Out(), {"LINE", "TEXT"});
  for (std::size_t i = 0; i < lines.size(); ++i) {
    RequireNotCancelled(context);
    printer->Row({Variant(static_cast<std::int32_t>(i + 1)), Variant(lines[i])});
  }
  printer->End();
  return kDone;
}

void WarnOfLosses(Context& context, const TextArguments& arguments, std::string_view text) {
  if (arguments.mode.lines) {
    const std::int32_t length = GSabrel::DBColumnLength("PM_StringTable", "StringData");
    for (const std::string& loss : LineLosses(text, arguments.mode.Delimiter(), length)) {
      context.Note(loss);
    }
  }
  // A piece fills a row's characters; of the servers only Oracle may count bytes.
  const bool may_count_bytes =
      odbc::EngineForDriver(context.SessionProfile().Driver) == &odbc::OracleEngine();
  if (may_count_bytes && CharacterCount(text) != text.size()) {
    context.Note(
        "The text has letters beyond ASCII: a server whose limit is in bytes refuses a full row of "
        "them, and a save has then lost the old text.");
  }
}

std::string TextToStore(Context& context, const TextArguments& arguments) {
  context.RequireServer();
  static_cast<void>(arguments.mode.Delimiter());
  std::string text = ReadText(context, arguments.file);
  WarnOfLosses(context, arguments, text);
  context.Advance("saving", text.size(), 0);
  return text;
}

int Create(Context& context, const TextArguments& arguments) {
  std::string text = TextToStore(context, arguments);
  const std::int32_t id =
      GDBString::CreateDBString(std::move(text), arguments.mode.lines, arguments.mode.Delimiter());
  if (id >= 1) return PrintAnswer(context, Variant(id));
  context.Note(
      "No id was drawn, so the text was written with the id 0, which nothing reads; "
      "DELETE FROM PM_StringTable WHERE Id = 0 removes it.");
  return kFailed;
}

int Save(Context& context, const TextArguments& arguments) {
  std::string text = TextToStore(context, arguments);
  try {
    GDBString::UpdateDBString(arguments.id, std::move(text), arguments.mode.lines,
                              arguments.mode.Delimiter());
  } catch (const RuntimeError&) {
    context.StopProgress();
    context.Note("Text " + std::to_string(arguments.id) +
                 " may now be missing, in part or whole; save it again.");
    throw;
  }
  return kDone;
}

int Delete(Context& context, std::int32_t id) {
  context.RequireServer();
  const std::int32_t rows = GSabrel::ExecuteQueryReturningLong(
      "SELECT COUNT(*) FROM PM_StringTable WHERE Id = " + std::to_string(id));
  if (HasFailed()) return kFailed;
  RequireNotCancelled(context);
  if (rows == 0) return NoText(context, id);
  CDBString text;
  text.Id(id);
  text.Delete();
  return kDone;
}

void AddId(CLI::App& command, TextArguments& arguments) {
  command.add_option("ID", arguments.id, "Id of the text, 1 or more")
      ->required()
      ->check(CLI::Range(1, std::numeric_limits<std::int32_t>::max()));
}

void AddLineMode(CLI::App& command, LineMode& mode) {
  CLI::Option* lines = command.add_flag("--lines", mode.lines, "One line a row");
  command
      .add_option("--delimiter", mode.delimiter,
                  "What stands behind each line, with \\r, \\n, \\t, \\\\ (default: \\r\\n)")
      ->needs(lines);
}

void AddReading(CLI::App& text, Context& context) {
  const auto load_arguments = std::make_shared<TextArguments>();
  CLI::App& load = AddCommand(text, context, "load", "Print a stored text, byte for byte",
                              "  sabrel text load 5 > query.sql\n"
                              "  sabrel text load 5 --file query.sql\n"
                              "  sabrel text load 6 --lines --delimiter '\\n'\n\n"
                              "Nothing is added at the end. A terminal shows control characters "
                              "instead of obeying them.\n" +
                                  std::string(kNoTextHelp),
                              [load_arguments](Context& c) { return Load(c, *load_arguments); });
  AddId(load, *load_arguments);
  CLI::Option* file = load.add_option("--file", load_arguments->file,
                                      "Write to this file, which has to be new or empty");
  load.add_flag("--replace", load_arguments->replace, "Write in the place of what the file holds")
      ->needs(file);
  AddLineMode(load, load_arguments->mode);

  const auto lines_arguments = std::make_shared<TextArguments>();
  CLI::App& lines = AddCommand(
      text, context, "lines", "Print the rows of a text that is kept line by line, numbered",
      "  sabrel --format csv text lines 6\n\n" + std::string(kNoTextHelp),
      [lines_arguments](Context& c) { return Lines(c, lines_arguments->id); });
  AddId(lines, *lines_arguments);
}

void AddFile(CLI::App& command, TextArguments& arguments) {
  arguments.file = "-";
  command.add_option("FILE", arguments.file, "UTF-8 text; - is standard input (default)");
}

void AddWriting(CLI::App& text, Context& context) {
  const std::string help = "\n\n" + std::string(kLineModeHelp);
  const auto create_arguments = std::make_shared<TextArguments>();
  CLI::App& create =
      AddCommand(text, context, "create", "Store a new text and print its id",
                 "  sabrel text create query.sql\n"
                 "  sabrel text create --lines --delimiter '\\n' < list.txt" +
                     help,
                 [create_arguments](Context& c) { return Create(c, *create_arguments); });
  AddFile(create, *create_arguments);
  AddLineMode(create, create_arguments->mode);

  const auto save_arguments = std::make_shared<TextArguments>();
  CLI::App& save = AddCommand(
      text, context, "save", "Store a text in the place of what the id has",
      "  sabrel text save 5 query.sql\n"
      "  sabrel text load 5 | sed s/DAY/HOUR/ > new.sql && sabrel text save 5 new.sql\n\n"
      "The old rows are deleted first; a save that fails leaves what was written by then." +
          help,
      [save_arguments](Context& c) { return Save(c, *save_arguments); });
  AddId(save, *save_arguments);
  AddFile(save, *save_arguments);
  AddLineMode(save, save_arguments->mode);

  const auto delete_arguments = std::make_shared<TextArguments>();
  CLI::App& remove =
      AddCommand(text, context, "delete", "Delete a stored text",
                 "  sabrel text delete 5\n\n" + std::string(kNoTextHelp),
                 [delete_arguments](Context& c) { return Delete(c, delete_arguments->id); });
  AddId(remove, *delete_arguments);
}

void AddCopy(CLI::App& text, Context& context) {
  const auto arguments = std::make_shared<CopyArguments>();
  CLI::App& copy = AddCommand(text, context, "copy",
                              "Make or renew the copy of a query for a filter; print the copy's id",
                              "  sabrel text copy 1 2\n"
                              "  sabrel text copy 1 2 --original",
                              [arguments](Context& c) { return Copy(c, *arguments); });
  copy.add_option("QUERY", arguments->query, "Id of the query")->required();
  copy.add_option("FILTER", arguments->filter, "Id of the filter")->required();
  copy.add_flag("--original", arguments->original,
                "Give the copy that there is the query's own text again; prints nothing");
}

}  // namespace

void AddTextCommands(CLI::App& parent, Context& context) {
  CLI::App* text = parent.add_subcommand("text", "Stored texts, and the copies of query texts");
  text->require_subcommand(1);
  text->fallthrough();
  AddReading(*text, context);
  AddWriting(*text, context);
  AddCopy(*text, context);
}

}  // namespace sabrel::cli
