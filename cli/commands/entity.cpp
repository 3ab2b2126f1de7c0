// `entity`: common entities and what is equivalent to them.
#include <array>
#include <memory>

#include "cli/argument.h"
#include "cli/commands/commands.h"
#include "cli/commands/outcome.h"
#include "sabrel/core/gsabrel.h"

namespace sabrel::cli {
namespace {

struct EntityArguments {
  std::int32_t id = 0;
  std::int32_t other = 0;
  std::string name;
  std::string label;
  std::string time;
  bool fields = false;
  bool refresh = false;
};

int Add(Context& context, const EntityArguments& arguments) {
  context.RequireServer();
  return PrintAnswer(context,
                     Variant(GSabrel::EA_Add_Common_Entity(arguments.name, arguments.other)));
}

int Reparent(Context& context, const EntityArguments& arguments) {
  context.RequireServer();
  GSabrel::EA_Reparent_Common_Entity(arguments.id, arguments.other);
  return kDone;
}

int Remove(Context& context, const EntityArguments& arguments) {
  context.RequireServer();
  if (GSabrel::EA_Remove_Common_Entity(arguments.id)) return kDone;
  RequireNotCancelled(context);
  // What the operation does not show is what the server said.
  if (!context.HasShownBox()) {
    const DatabaseError refusal = CurrentPlatform().rowlink->LastDatabaseError();
    context.Note("Entity " + std::to_string(arguments.id) + " was not removed: " + refusal.message);
  }
  return kFalse;
}

int Equivalent(Context& context, const EntityArguments& arguments) {
  context.RequireServer();
  GSabrel::EA_Add_EntityEQV(arguments.id, arguments.name, Variant(arguments.label));
  return kDone;
}

int HasEquivalent(Context& context, const EntityArguments& arguments) {
  context.RequireServer();
  return PrintTruthAnswer(context, GSabrel::EntityHasEQV(arguments.id));
}

int Current(Context& context, const EntityArguments& arguments) {
  context.RequireServer();
  if (arguments.refresh) {
    arguments.fields ? GSabrel::LastFieldUpdate() : GSabrel::LastEntityUpdate();
    if (HasFailed()) return kFailed;
  }
  return PrintTruthAnswer(context,
                          arguments.fields ? GSabrel::FieldsCurrent() : GSabrel::EntitiesCurrent());
}

int DocumentReady(Context& context, const EntityArguments& arguments, std::int32_t user) {
  const Date time = arguments.time.empty() ? Date::Now() : ParseIsoDate(arguments.time);
  context.RequireServer();
  const std::int32_t count =
      GSabrel::IsEADocumentReady(arguments.id, user, Variant(time), arguments.other);
  const int status = PrintAnswer(context, Variant(count));
  if (count > 0) {
    context.Out().Flush();
    context.Note("The server noted them; `entity clear-temp " + std::to_string(user) + " " +
                 IsoDate(time, 'T') + "` forgets them");
  }
  return status;
}

// The operation hands out the text of its failure and nothing else.
bool IsTextOfConnectionFailure(const std::string& text) {
  constexpr std::array kCodes = {
      ConnectionFailure::kConnectTimeOut, ConnectionFailure::kReceiveTimeOut,
      ConnectionFailure::kRefusedOrSevered, ConnectionFailure::kHostUnknown};
  for (const ConnectionFailure code : kCodes) {
    if (CErrorObject(ConnectionFailed(code, "")).Text() == text) return true;
  }
  return false;
}

int ClearTemporary(Context& context, const EntityArguments& arguments) {
  const Date time = ParseIsoDate(arguments.time);
  context.RequireServer();
  const std::string text = GSabrel::ClearEATempRecords(arguments.id, time).Get<std::string>();
  if (text.empty()) return kDone;
  context.Note(text);
  return IsTextOfConnectionFailure(text) ? kNoConnection : kFailed;
}

void AddChanges(CLI::App& entity, Context& context) {
  const auto add = std::make_shared<EntityArguments>();
  CLI::App& add_command = AddCommand(entity, context, "add", "Add a common entity; print its id",
                                     "  sabrel entity add \"Ring North\" --parent 3",
                                     [add](Context& c) { return Add(c, *add); });
  add_command.add_option("NAME", add->name, "What it is called")->required();
  add_command.add_option("--parent", add->other, "Id of the entity above it; 0 is none")
      ->capture_default_str();

  const auto reparent = std::make_shared<EntityArguments>();
  CLI::App& reparent_command = AddCommand(
      entity, context, "reparent", "Put a common entity below another one",
      "  sabrel entity reparent 10 3", [reparent](Context& c) { return Reparent(c, *reparent); });
  reparent_command.add_option("ID", reparent->id, "The entity")->required();
  reparent_command.add_option("PARENT", reparent->other, "Id of the other one; 0 is none")
      ->required();

  const auto remove = std::make_shared<EntityArguments>();
  CLI::App& remove_command =
      AddCommand(entity, context, "remove",
                 "Remove a common entity. Exit status 1 when it could not be removed", "",
                 [remove](Context& c) { return Remove(c, *remove); });
  remove_command.add_option("ID", remove->id, "The entity")->required();
}

void AddEquivalents(CLI::App& entity, Context& context) {
  const auto equivalent = std::make_shared<EntityArguments>();
  CLI::App& equivalent_command = AddCommand(
      entity, context, "equivalent", "Make an entity of a version equivalent to a common entity",
      "  sabrel entity equivalent 1 \"Site 10\" BSC-10",
      [equivalent](Context& c) { return Equivalent(c, *equivalent); });
  equivalent_command.add_option("VERSION", equivalent->id, "Id of the version")->required();
  equivalent_command.add_option("COMMON", equivalent->name, "Name of the common entity")
      ->required();
  equivalent_command.add_option("LABEL", equivalent->label, "Label of the version's entity")
      ->required();

  const auto has = std::make_shared<EntityArguments>();
  CLI::App& has_command =
      AddCommand(entity, context, "has-equivalent",
                 "Does a common entity have equivalents? Yes as well where the site cannot tell",
                 "", [has](Context& c) { return HasEquivalent(c, *has); });
  has_command.add_option("ID", has->id, "The entity")->required();

  const auto current = std::make_shared<EntityArguments>();
  CLI::App& current_command = AddCommand(
      entity, context, "current",
      "Is a list of entities that was loaded when the time was noted still current?",
      "  entity current --refresh\n"
      "  entity add North\n"
      "  entity current\n\n"
      "A shell notes the time with --refresh and asks again later. A command line of its own has "
      "noted\n"
      "  nothing before: without --refresh its answer is no as soon as anything ever changed.",
      [current](Context& c) { return Current(c, *current); });
  current_command.add_flag("--fields", current->fields, "The list of field definitions instead");
  current_command.add_flag("--refresh", current->refresh, "Note the database's time first");
}

void AddExports(CLI::App& entity, Context& context) {
  const auto ready = std::make_shared<EntityArguments>();
  const auto user = std::make_shared<std::int32_t>(0);
  CLI::App& ready_command = AddCommand(
      entity, context, "document-ready", "Print how many documents of a group wait for an export",
      "  sabrel entity document-ready 1 1 --time 2024-03-09T17:05:00 --server 2",
      [ready, user](Context& c) { return DocumentReady(c, *ready, *user); });
  ready_command.add_option("GROUP", ready->id, "Id of the job group")->required();
  ready_command.add_option("USER", *user, "Id of the user who asks")->required();
  ready_command.add_option("--time", ready->time,
                           "What is found is noted under this time (default: now)");
  ready_command.add_option("--server", ready->other, "Id of the server; 0 is any")
      ->capture_default_str();

  const auto clear = std::make_shared<EntityArguments>();
  CLI::App& clear_command = AddCommand(entity, context, "clear-temp",
                                       "Forget what document-ready noted for a user under a time",
                                       "  sabrel entity clear-temp 1 2024-03-09T17:05:00",
                                       [clear](Context& c) { return ClearTemporary(c, *clear); });
  clear_command.add_option("USER", clear->id, "Id of the user")->required();
  clear_command.add_option("TIME", clear->time, "As document-ready told it")->required();
}

}  // namespace

void AddEntityCommands(CLI::App& parent, Context& context) {
  CLI::App* entity =
      parent.add_subcommand("entity", "Common entities of several servers, and their equivalents");
  entity->require_subcommand(1);
  entity->fallthrough();
  AddChanges(*entity, context);
  AddEquivalents(*entity, context);
  AddExports(*entity, context);
}

}  // namespace sabrel::cli
