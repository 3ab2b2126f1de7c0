// `sequence` and `now`: single values that the server gives.
#include <memory>

#include "cli/commands/commands.h"
#include "sabrel/core/gsabrel.h"

namespace sabrel::cli {
namespace {

bool HasFailed() { return GSabrel::SabrelErrorObject()->Number() != 0; }

}  // namespace

void AddValueCommands(CLI::App& parent, Context& context) {
  const auto name = std::make_shared<std::string>();
  CLI::App& sequence = AddCommand(parent, context, "sequence", "Draw the next value of a sequence",
                                  "  sabrel sequence PM_StringTable_SQ", [name](Context& c) {
                                    c.RequireServer();
                                    const Variant value(GSabrel::GetNextInSequence(*name));
                                    if (HasFailed()) return kFailed;
                                    c.Print(value);
                                    return kDone;
                                  });
  sequence.add_option("NAME", *name, "The sequence")->required();

  AddCommand(parent, context, "now", "Print the server's date and time, to the minute", "",
             [](Context& c) {
               c.RequireServer();
               const Variant value(GSabrel::GetCurrentDateTime());
               if (HasFailed()) return kFailed;
               c.Print(value);
               return kDone;
             });
}

}  // namespace sabrel::cli
