// `sequence`: the next value of a sequence.
#include <memory>

#include "cli/commands/commands.h"
#include "cli/commands/outcome.h"
#include "sabrel/core/gsabrel.h"

namespace sabrel::cli {

void AddSequenceCommand(CLI::App& parent, Context& context) {
  const auto name = std::make_shared<std::string>();
  CLI::App& sequence =
      AddCommand(parent, context, "sequence", "Draw the next value of a sequence",
                 "  sabrel sequence PM_StringTable_SQ", [name](Context& c) {
                   c.RequireServer();
                   return PrintAnswer(c, Variant(GSabrel::GetNextInSequence(*name)));
                 });
  sequence.add_option("NAME", *name, "The sequence")->required()->check(QuotableName());
}

}  // namespace sabrel::cli
