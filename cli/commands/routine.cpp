// `call`, `function` and `proc`: stored routines.
#include <memory>
#include <vector>

#include "cli/argument.h"
#include "cli/commands/commands.h"
#include "cli/commands/outcome.h"
#include "cli/row_printer.h"
#include "sabrel/core/gsabrel.h"

namespace sabrel::cli {
namespace {

struct RoutineArguments {
  std::string name;
  std::vector<std::string> values;
  std::string kind;
};

void AddNameAndValues(CLI::App& command, const std::shared_ptr<RoutineArguments>& arguments) {
  command.add_option("NAME", arguments->name, "The routine, PACKAGE.NAME if it is in one")
      ->required();
  command.add_option("ARG", arguments->values, std::string(kArgumentHelp));
  command.positionals_at_end();
}

int Call(Context& context, const RoutineArguments& arguments) {
  context.RequireServer();
  GSabrel::ExecuteProcedure(arguments.name, ParseArguments(arguments.values));
  return kDone;
}

int Function(Context& context, const RoutineArguments& arguments) {
  context.RequireServer();
  const std::string list = GSabrel::DBArgs(ParseArguments(arguments.values));
  return PrintAnswer(context,
                     arguments.kind == "long"
                         ? Variant(GSabrel::ExecuteFunctionReturningLong(arguments.name, list))
                         : Variant(GSabrel::ExecuteFunctionReturningString(arguments.name, list)));
}

// A parameter travels as text with a type word; null and empty are the empty text.
struct Parameter {
  std::string text;
  std::string_view type_word;
};

Parameter ParameterOf(const Variant& value) {
  switch (value.kind()) {
    case VariantKind::kNull:
    case VariantKind::kEmpty: return {"", "string"};
    case VariantKind::kInt32: return {TableText(value), "integer"};
    case VariantKind::kBoolean: return {value.Get<bool>() ? "Y" : "N", "string"};
    case VariantKind::kDate: return {IsoDate(value.Get<Date>(), ' '), "string"};
    case VariantKind::kString: return {value.Get<std::string>(), "string"};
    default: return {CsvText(value), "string"};
  }
}

int Proc(Context& context, const RoutineArguments& arguments) {
  context.RequireServer();
  const auto call = CurrentPlatform().rowlink->MakeProcedureCall();
  std::vector<Variant> sent;
  const bool has_result = !arguments.kind.empty();
  Deref(call).ProcedureName(arguments.name);
  if (has_result) {
    call->AppendParameter("", arguments.kind, "");
    sent.emplace_back();
  }
  for (const Variant& value : ParseArguments(arguments.values)) {
    const Parameter parameter = ParameterOf(value);
    call->AppendParameter(parameter.text, parameter.type_word, "");
    sent.push_back(parameter.text.empty() ? Variant(Null{}) : Variant(parameter.text));
  }
  const Variant result = call->Execute();

  const auto printer =
      MakeRowPrinter(context.options.format, context.Out(), {"POSITION", "SENT", "RECEIVED"});
  if (!has_result && !result.IsNull() && !result.IsEmpty()) {
    printer->Row({Variant("result"), Variant(Null{}), result});
  }
  for (std::size_t i = 0; i < sent.size(); ++i) {
    const Variant received = call->ParameterValue(static_cast<std::int32_t>(i));
    const bool is_result = has_result && i == 0;
    // An empty text is how an in-argument that was null reads.
    const bool is_nothing = received == Variant(std::string());
    printer->Row({is_result ? Variant("result") : Variant(std::to_string(i + (has_result ? 0 : 1))),
                  is_result ? Variant(Null{}) : sent[i], is_nothing ? Variant(Null{}) : received});
  }
  printer->End();
  return kDone;
}

}  // namespace

void AddRoutineCommands(CLI::App& parent, Context& context) {
  const auto call = std::make_shared<RoutineArguments>();
  AddNameAndValues(
      AddCommand(parent, context, "call", "Run a stored procedure as BEGIN name(...); END;",
                 "  sabrel call EA_Client.Reparent_Common_Entity 17 3",
                 [call](Context& c) { return Call(c, *call); }),
      call);

  const auto function = std::make_shared<RoutineArguments>();
  function->kind = "string";
  CLI::App& function_command =
      AddCommand(parent, context, "function", "Print the result of a stored function",
                 "  sabrel function --as long FS_GetColumnLength PM_REPORT NAME",
                 [function](Context& c) { return Function(c, *function); });
  function_command.add_option("--as", function->kind, "What the result is read as")
      ->check(CLI::IsMember({"long", "string"}))
      ->capture_default_str();
  AddNameAndValues(function_command, function);

  const auto proc = std::make_shared<RoutineArguments>();
  CLI::App& proc_command =
      AddCommand(parent, context, "proc",
                 "Call a routine parameter by parameter; print its result and what came back",
                 "  sabrel proc ZR_Query.CreateFQuery 1 2\n"
                 "  sabrel proc --result integer check_smtp_val null null",
                 [proc](Context& c) { return Proc(c, *proc); });
  proc_command.add_option("--result", proc->kind, "Append a result position of this type first")
      ->check(CLI::IsMember({"integer", "string"}));
  AddNameAndValues(proc_command, proc);
}

}  // namespace sabrel::cli
