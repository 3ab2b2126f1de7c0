// The program's commands, a registration function for each topic.
//
// A registration function adds subcommands to `parent`; a parsed subcommand leaves its action in
// the context and does nothing itself, so that a line is understood whole before anything runs. The
// shell registers them anew for each line.
#pragma once

#include <CLI/CLI.hpp>
#include <initializer_list>
#include <string>
#include <vector>

#include "cli/context.h"

namespace sabrel::cli {

/// Adds a subcommand. What `action` captures holds the arguments.
/// Shape: `examples` is shown at the end of its help, a line each
CLI::App& AddCommand(CLI::App& parent, Context& context, const std::string& name,
                     const std::string& description, const std::string& examples, Action action);

/// For a name or value that stands between single quotes in the statement, as it was typed: it must
/// not hold one, or it would be SQL of its own and the answer that of another question.
[[nodiscard]] const CLI::Validator& QuotableName();

/// Parses `words`. A negative number, and whatever stands behind `--`, is a value and never an
/// option; whole numbers are decimal. Errors: CLI::ParseError
void ParseWords(CLI::App& parser, std::vector<std::string> words);

/// The files that the parsed commands have under these names of arguments.
[[nodiscard]] std::vector<std::string> FilesOf(const CLI::App& parser,
                                               std::initializer_list<const char*> names);

void AddCompatibilityCommands(CLI::App& parent, Context& context);
void AddConversionCommand(CLI::App& parent, Context& context);
void AddDateCommands(CLI::App& parent, Context& context);
void AddEntityCommands(CLI::App& parent, Context& context);
void AddFeatureCommands(CLI::App& parent, Context& context);
void AddLiteralCommand(CLI::App& parent, Context& context);
void AddQueryCommands(CLI::App& parent, Context& context);
void AddReportCommands(CLI::App& parent, Context& context);
void AddRoutineCommands(CLI::App& parent, Context& context);
void AddSchemaCommands(CLI::App& parent, Context& context);
void AddSequenceCommand(CLI::App& parent, Context& context);
void AddServerCommands(CLI::App& parent, Context& context);
void AddSettingCommands(CLI::App& parent, Context& context);
void AddSliceCommand(CLI::App& parent, Context& context);
void AddStartUpCommands(CLI::App& parent, Context& context);
void AddTextCommands(CLI::App& parent, Context& context);
void AddValidationCommands(CLI::App& parent, Context& context);
void AddValueCommand(CLI::App& parent, Context& context);

/// Those that make no sense inside a session: `site`, `shell`.
void AddSiteCommands(CLI::App& parent, Context& context);
void AddShellCommand(CLI::App& parent, Context& context);

/// All that a shell's line may be.
void AddSessionCommands(CLI::App& parent, Context& context);

// What the shell does with a rest of a line that is SQL.
int RunQuery(Context& context, const std::string& sql);
int RunRequest(Context& context, const std::string& sql);

}  // namespace sabrel::cli
