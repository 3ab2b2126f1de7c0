// `probe`, `length` and `reset`: what the schema has.
#include <functional>
#include <memory>

#include "cli/commands/commands.h"
#include "cli/commands/outcome.h"
#include "cli/commands/server_options.h"
#include "sabrel/core/gsabrel.h"

namespace sabrel::cli {
namespace {

void AddName(CLI::App& command, const char* word, std::string& name, const char* help) {
  command.add_option(word, name, help)->required()->check(QuotableName());
}

struct SchemaArguments {
  std::string name;
  std::string part;
  ServerOptions server;
  bool module_name = false;
};

using Arguments = std::shared_ptr<SchemaArguments>;

using Question = std::function<bool(const SchemaArguments&, const std::string& password)>;

// A probe whose query failed answers no; that is no answer here.
CLI::App& AddProbe(CLI::App& probe, Context& context, const std::string& name,
                   const std::string& description, const std::string& examples,
                   const Arguments& arguments, const Question& question) {
  return AddCommand(probe, context, name, description, examples, [arguments, question](Context& c) {
    c.RequireServer();
    const bool exists = question(*arguments, PasswordOf(c, arguments->server));
    return PrintTruthAnswer(c, exists);
  });
}

void AddTableProbe(CLI::App& probe, Context& context) {
  const auto arguments = std::make_shared<SchemaArguments>();
  CLI::App& table =
      AddProbe(probe, context, "table", "Is there a table?", "  sabrel probe table PM_REPORT",
               arguments, [](const SchemaArguments& a, const std::string& password) {
                 return GSabrel::DoesTableExist(a.name, a.server.host, a.server.port, a.server.user,
                                                password, a.server.timeout_s);
               });
  AddName(table, "NAME", arguments->name, "The table, in any case");
  AddServerOptions(table, arguments->server);
  AddTimeOut(table, context, arguments->server.timeout_s);
}

void AddColumnProbe(CLI::App& probe, Context& context) {
  const auto arguments = std::make_shared<SchemaArguments>();
  CLI::App& column =
      AddProbe(probe, context, "column", "Does a table have a column?",
               "  sabrel probe column PM_REPORT Busy_Hour", arguments,
               [](const SchemaArguments& a, const std::string& password) {
                 return GSabrel::DoesFieldExist(a.name, a.part, a.server.host, a.server.port,
                                                a.server.user, password);
               });
  AddName(column, "TABLE", arguments->name, "The table, in any case");
  AddName(column, "COLUMN", arguments->part, "The column, in any case");
  AddServerOptions(column, arguments->server);
}

void AddProcedureProbe(CLI::App& probe, Context& context) {
  const auto arguments = std::make_shared<SchemaArguments>();
  CLI::App& procedure =
      AddProbe(probe, context, "procedure",
               "Does a package have a procedure or function? One without arguments and result "
               "counts as absent",
               "  sabrel probe procedure EA_CLIENT REPARENT_COMMON_ENTITY", arguments,
               [](const SchemaArguments& a, const std::string&) {
                 return GSabrel::DoesThisProcedureExist(a.name, a.part);
               });
  AddName(procedure, "PACKAGE", arguments->name, "The package, in any case");
  AddName(procedure, "NAME", arguments->part, "The procedure, in any case");
}

void AddObjectProbe(CLI::App& probe, Context& context) {
  const auto arguments = std::make_shared<SchemaArguments>();
  CLI::App& object =
      AddProbe(probe, context, "object", "Is there an object, of any type or of one?",
               "  sabrel probe object FS_GetColumnLength\n"
               "  sabrel probe object EA_CLIENT PACKAGE",
               arguments, [](const SchemaArguments& a, const std::string& password) {
                 return GSabrel::DoesDbObjectExist(a.name, a.part, a.server.host, a.server.port,
                                                   a.server.user, password, a.server.timeout_s);
               });
  AddName(object, "NAME", arguments->name, "The object, in any case");
  object.add_option("TYPE", arguments->part, "TABLE, VIEW, PACKAGE, FUNCTION, SEQUENCE, ...")
      ->check(QuotableName());
  AddServerOptions(object, arguments->server);
  AddTimeOut(object, context, arguments->server.timeout_s);
}

void AddArgumentCount(CLI::App& probe, Context& context) {
  const auto arguments = std::make_shared<SchemaArguments>();
  CLI::App& count = AddCommand(
      probe, context, "arguments",
      "Print how many arguments a package's procedure has; 0 when there is no such procedure",
      "  sabrel probe arguments EA_CLIENT REPARENT_COMMON_ENTITY", [arguments](Context& c) {
        c.RequireServer();
        return PrintAnswer(c,
                           Variant(GSabrel::GetProcedureLength(arguments->name, arguments->part)));
      });
  AddName(count, "PACKAGE", arguments->name, "The package, as the dictionary has it: upper case");
  AddName(count, "NAME", arguments->part, "The procedure, likewise");
}

int Length(Context& context, const SchemaArguments& arguments) {
  context.RequireServer();
  if (arguments.module_name) {
    if (!arguments.name.empty()) throw UsageError("--module-name stands without TABLE and COLUMN");
    return PrintAnswer(context, Variant(GSabrel::ModuleNameMaxLength()));
  }
  if (arguments.part.empty()) throw UsageError("length takes TABLE and COLUMN, or --module-name");
  const std::int32_t length = GSabrel::DBColumnLength(arguments.name, arguments.part);
  const int status = PrintAnswer(context, Variant(length));
  if (status == kDone && length <= 0) {
    context.Note("The server knows no length of " + arguments.name + "." + arguments.part);
  }
  return status;
}

}  // namespace

void AddSchemaCommands(CLI::App& parent, Context& context) {
  CLI::App* probe = parent.add_subcommand("probe", "Ask what the schema has");
  probe->require_subcommand(1);
  probe->fallthrough();
  AddTableProbe(*probe, context);
  AddColumnProbe(*probe, context);
  AddProcedureProbe(*probe, context);
  AddObjectProbe(*probe, context);
  AddArgumentCount(*probe, context);

  const auto arguments = std::make_shared<SchemaArguments>();
  CLI::App& length = AddCommand(parent, context, "length", "Print how many characters a column has",
                                "  sabrel length PM_REPORT NAME\n"
                                "  sabrel length --module-name",
                                [arguments](Context& c) { return Length(c, *arguments); });
  length.add_option("TABLE", arguments->name, "The table, in any case");
  length.add_option("COLUMN", arguments->part, "The column, in any case");
  length.add_flag("--module-name", arguments->module_name, "Of the longest module name instead");

  AddCommand(parent, context, "reset",
             "Forget which tables, columns and procedures exist (a shell remembers its probes)", "",
             [](Context&) {
               GSabrel::ResetExistingTables();
               return kDone;
             });
}

}  // namespace sabrel::cli
