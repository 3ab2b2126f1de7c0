#include "cli/commands/outcome.h"

#include "cli/row_printer.h"
#include "sabrel/core/gsabrel.h"

namespace sabrel::cli {

bool HasFailed() { return GSabrel::SabrelErrorObject()->Number() != 0; }

int PrintAnswer(Context& context, const Variant& value) {
  if (HasFailed()) return kFailed;
  context.Print(value);
  return kDone;
}

int PrintTruthAnswer(Context& context, bool truth) {
  return HasFailed() ? kFailed : context.PrintTruth(truth);
}

void PrintTable(Context& context, const std::vector<std::string>& columns,
                const std::vector<std::vector<Variant>>& rows) {
  const auto printer = MakeRowPrinter(context.options.format, context.Out(), columns);
  for (const auto& row : rows) printer->Row(row);
  printer->End();
}

Variant TruthCell(const Context& context, bool truth) {
  if (context.options.format == Format::kTable) return Variant(truth ? "yes" : "no");
  return Variant(truth);
}

void RequireNotCancelled(Context& context) {
  if (context.Signals().Cancelled()) throw OutputCancelled();
}

}  // namespace sabrel::cli
