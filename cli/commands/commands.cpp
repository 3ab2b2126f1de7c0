#include "cli/commands/commands.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "adapters/console/terminal.h"
#include "cli/argument.h"

namespace sabrel::cli {
namespace {

// Stands in front of words that the parser must not take for options.
constexpr char kValueMark = '\x01';

// The parser itself takes 0x10 for 16 and 010 for 8.
std::string DecimalNumber(const std::string& word) {
  const std::string sign = word.starts_with('-') ? "-" : "";
  const std::string digits = word.substr(sign.size());
  if (digits.empty() || digits.find_first_not_of("0123456789") != std::string::npos) {
    throw CLI::ValidationError("'" + VisibleText(word, " ") +
                               "' is no whole number; write it in decimal digits");
  }
  return sign + digits.substr(std::min(digits.find_first_not_of('0'), digits.size() - 1));
}

void PrepareWords(CLI::App& parser) {
  for (CLI::Option* option : parser.get_options()) {
    if (option->get_items_expected_max() == 0) continue;
    const bool is_whole_number = option->get_type_name().starts_with("INT");
    option->transform([is_whole_number](std::string word) {
      if (word.starts_with(kValueMark)) word.erase(0, 1);
      return is_whole_number ? DecimalNumber(word) : word;
    });
  }
  for (CLI::App* command : parser.get_subcommands({})) PrepareWords(*command);
}

// The parser's own words for a missing command do not say that one was misspelt.
[[noreturn]] void RethrowNamingTheCommand(const CLI::App& parser) {
  std::string name;
  const CLI::App* group = &parser;
  while (!group->get_subcommands().empty()) {
    group = group->get_subcommands().front();
    name += group->get_name() + " ";
  }
  const std::vector<std::string> words = parser.remaining();
  if (words.empty() || group->get_require_subcommand_min() == 0) throw;
  name += words.front().substr(words.front().starts_with(kValueMark) ? 1 : 0);
  throw CLI::RequiredError("There is no command '" + VisibleText(name, " ") + "'",
                           CLI::ExitCodes::RequiredError);
}

}  // namespace

const CLI::Validator& QuotableName() {
  static const CLI::Validator validator(
      [](const std::string& name) {
        return name.find('\'') == std::string::npos
                   ? std::string()
                   : VisibleText(name, " ") + " holds a single quote, which cannot be asked for";
      },
      "");
  return validator;
}

void ParseWords(CLI::App& parser, std::vector<std::string> words) {
  PrepareWords(parser);
  const auto mark = std::ranges::find(words, "--");
  for (auto word = words.begin(); word != words.end(); ++word) {
    const bool is_value = word > mark || IsNegativeNumber(*word) || word->starts_with(kValueMark);
    if (is_value) word->insert(word->begin(), kValueMark);
  }
  if (mark != words.end()) words.erase(mark);
  std::ranges::reverse(words);  // The parser takes them from the back.
  try {
    parser.parse(std::move(words));
  } catch (const CLI::RequiredError&) {
    RethrowNamingTheCommand(parser);
  }
}

CLI::App& AddCommand(CLI::App& parent, Context& context, const std::string& name,
                     const std::string& description, const std::string& examples, Action action) {
  CLI::App* command = parent.add_subcommand(name, description);
  command->fallthrough();
  if (!examples.empty()) command->footer("Examples:\n" + examples);
  command->callback([&context, action = std::move(action)] { context.action = action; });
  return *command;
}

std::vector<std::string> FilesOf(const CLI::App& parser, std::initializer_list<const char*> names) {
  std::vector<std::string> files;
  for (const CLI::App* command : parser.get_subcommands()) {
    for (const char* name : names) {
      const CLI::Option* option = command->get_option_no_throw(name);
      if (option != nullptr && option->count() > 0) files.push_back(option->as<std::string>());
    }
    std::ranges::move(FilesOf(*command, names), std::back_inserter(files));
  }
  return files;
}

void AddSessionCommands(CLI::App& parent, Context& context) {
  AddStartUpCommands(parent, context);
  AddServerCommands(parent, context);
  AddQueryCommands(parent, context);
  AddRoutineCommands(parent, context);
  AddLiteralCommand(parent, context);
  AddConversionCommand(parent, context);
  AddSequenceCommand(parent, context);
  AddDateCommands(parent, context);
  AddSchemaCommands(parent, context);
  AddValueCommand(parent, context);
  AddSettingCommands(parent, context);
  AddFeatureCommands(parent, context);
  AddCompatibilityCommands(parent, context);
  AddEntityCommands(parent, context);
  AddReportCommands(parent, context);
  AddValidationCommands(parent, context);
  AddTextCommands(parent, context);
  AddSliceCommand(parent, context);
}

}  // namespace sabrel::cli
