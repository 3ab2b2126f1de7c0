// `text`: texts of stored queries.
#include <memory>

#include "cli/commands/commands.h"
#include "cli/commands/outcome.h"
#include "sabrel/core/gsabrel.h"

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
  CLI::App* text = parent.add_subcommand("text", "Texts of stored queries");
  text->require_subcommand(1);
  text->fallthrough();
  AddCopy(*text, context);
}

}  // namespace sabrel::cli
