// `validate`: may a document, a server, a user, mail be used?
#include <unistd.h>

#include <functional>
#include <memory>

#include "adapters/console/password_prompt.h"
#include "cli/argument.h"
#include "cli/commands/commands.h"
#include "cli/commands/outcome.h"
#include "cli/commands/server_options.h"
#include "sabrel/core/gsabrel.h"

namespace sabrel::cli {
namespace {

struct DocumentArguments {
  std::string type;
  std::string id;
  std::int32_t group = 0;
  std::string mode = "SaveOn";
};

constexpr const char* kTypes =
    "Type of the document; those bound to servers are \"Export Definition\",\n"
    "  \"Export Schedule\", \"Report Group\" and \"Report Definition\", any other is valid";
constexpr const char* kModes =
    "SaveOn and RunSaveOn ask about a document that is not valid (see --answer), SaveOff does not";

int Document(Context& context, const DocumentArguments& arguments) {
  const Variant id = ParseArgument(arguments.id);
  context.RequireServer();
  const bool valid = GSabrel::IsServerGroupDocumentValid(arguments.type, id, arguments.mode);
  RequireNotCancelled(context);
  return PrintTruthAnswer(context, valid);
}

int Group(Context& context, const DocumentArguments& arguments) {
  context.RequireServer();
  const bool valid = GSabrel::IsReportGroupServerDocumentValid(arguments.type, arguments.group,
                                                               arguments.mode, "");
  RequireNotCancelled(context);
  return PrintTruthAnswer(context, valid);
}

struct RemoteUser {
  std::string host;
  std::int32_t port = 0;
  std::string name;
  std::string password_file;
  std::int32_t timeout_s = 60;
  bool create = false;
  bool quiet = false;
};

constexpr const char* kOtherServerHelp =
    "The other server is asked as the user `system`, whose profile (--profile) it needs. --trace "
    "shows\n"
    "  the password of the user who is looked up, nothing else does.";

// It travels as an argument, so nobody else knows that it is a secret.
std::string PasswordOf(Context& context, const RemoteUser& user) {
  std::string password;
  if (!user.password_file.empty()) {
    password = ReadPasswordFile(context, user.password_file);
  } else if (::isatty(STDIN_FILENO) == 1) {
    context.StopProgress();
    password = PromptWithoutEcho("Password of " + user.name + ": ");
  } else {
    throw UsageError("The password of " + user.name +
                     " cannot be asked for, the input is no terminal; name a file that holds it "
                     "with --password-file FILE");
  }
  context.Hide(password);
  context.Hide(CurrentPlatform().application->TransformPassword(password));
  return password;
}

// What the server refused was shown in a box already, or the server turned the user away, which is
// an answer. True for the former.
bool ForgetRefusal() {
  constexpr std::int32_t kNotRemote = 20011;
  constexpr std::int32_t kNotDataAdmin = 20012;
  const auto failure = GSabrel::SabrelErrorObject();
  if (!failure->IsDBError()) return false;
  const std::int32_t number = failure->DBNumber();
  GSabrel::ClearConnectionError();
  return number != kNotRemote && number != kNotDataAdmin;
}

// Asks the other server and tells why that was not possible. Returns kDone, kNoConnection or
// kFailed.
int AskOtherServer(Context& context, const std::function<void()>& ask) {
  bool was_refused = false;
  const int status = context.Step("Asking the other server", [&] {
    ask();
    was_refused = ForgetRefusal();
  });
  if (status == kNoConnection) {
    context.Note(
        "Remedy: name a file with --profile that has a profile with the server's Host and Port and "
        "with UserName = system.");
  }
  return was_refused ? kFailed : status;
}

int Server(Context& context, const RemoteUser& user) {
  context.RequireServer();
  const std::string password = PasswordOf(context, user);
  bool usable = false;
  const int status = AskOtherServer(context, [&] {
    usable = GSabrel::TestServerConnection(user.host, user.port, user.name, password,
                                           user.timeout_s, "", !user.quiet);
  });
  return status == kDone ? context.PrintTruth(usable) : status;
}

int User(Context& context, const RemoteUser& user) {
  context.RequireServer();
  const std::string password = PasswordOf(context, user);
  std::string answer;
  const int status = AskOtherServer(context, [&] {
    answer = GSabrel::FindOrCreateUser(user.host, user.port, user.name, password, user.timeout_s,
                                       user.create ? "TRUE" : "FALSE");
  });
  if (status != kDone) return status;
  context.Print(Variant(answer));
  return answer == "TRUE" ? kDone : kFalse;
}

int Mail(Context& context) {
  context.RequireServer();
  std::int32_t code = 0;
  std::string message;
  const bool ready = GSabrel::Is_SMTP_Ready(code, message);
  PrintTable(context, {"CODE", "MESSAGE"}, {{Variant(code), Variant(message)}});
  return ready ? kDone : kFalse;
}

void AddMode(CLI::App& command, DocumentArguments& arguments) {
  command.add_option("--mode", arguments.mode, kModes)
      ->check(CLI::IsMember({"SaveOn", "RunSaveOn", "SaveOff"}))
      ->capture_default_str();
}

void AddDocuments(CLI::App& validate, Context& context) {
  const auto document = std::make_shared<DocumentArguments>();
  CLI::App& document_command = AddCommand(
      validate, context, "document", "May a document with a server group be saved or run?",
      "  sabrel validate document \"Report Definition\" 3 --mode SaveOff",
      [document](Context& c) { return Document(c, *document); });
  document_command.add_option("TYPE", document->type, kTypes)->required();
  document_command.add_option("ID", document->id, "Id of the server group, or null")->required();
  AddMode(document_command, *document);

  const auto group = std::make_shared<DocumentArguments>();
  CLI::App& group_command = AddCommand(
      validate, context, "group", "The same for all reports of a job group, up to the first no",
      "  sabrel --answer yes validate group \"Report Group\" 1",
      [group](Context& c) { return Group(c, *group); });
  group_command.add_option("TYPE", group->type, kTypes)->required();
  group_command.add_option("GROUP", group->group, "Id of the job group")->required();
  AddMode(group_command, *group);
}

void AddUserOptions(CLI::App& command, Context& context, RemoteUser& user) {
  command.add_option("HOST", user.host, "The other server, which a profile has to name")
      ->required();
  command.add_option("PORT", user.port, "Its port")->required()->check(CLI::Range(0, 65535));
  command.add_option("USER", user.name, "The user who is looked up there")->required();
  command.add_option("--password-file", user.password_file,
                     "File whose first line is that user's password (default: asked for)");
  AddTimeOut(command, context, user.timeout_s);
}

}  // namespace

void AddValidationCommands(CLI::App& parent, Context& context) {
  CLI::App* validate =
      parent.add_subcommand("validate", "May a document, a server, a user, mail be used?");
  validate->require_subcommand(1);
  validate->fallthrough();
  AddDocuments(*validate, context);

  const auto server = std::make_shared<RemoteUser>();
  CLI::App& server_command = AddCommand(
      *validate, context, "server", "Can a user work on another server?",
      "  sabrel --profile plants validate server north 1521 ana --password-file ana.password\n\n" +
          std::string(kOtherServerHelp),
      [server](Context& c) { return Server(c, *server); });
  AddUserOptions(server_command, context, *server);
  server_command.add_flag("--quiet", server->quiet, "No message when the user can");

  AddCommand(*validate, context, "mail",
             "Can the server send mail? Print what it found: 0 or the number of what is wrong, and "
             "a message",
             "", Mail);

  const auto user = std::make_shared<RemoteUser>();
  CLI::App& user_command = AddCommand(
      *validate, context, "user",
      "Look a user up on another server, or create it there; print the server's answer",
      "  sabrel --profile plants validate user north 1521 ana --create\n\n" +
          std::string(kOtherServerHelp) + "\nThe answer TRUE is exit status 0, any other 1.",
      [user](Context& c) { return User(c, *user); });
  AddUserOptions(user_command, context, *user);
  user_command.add_flag("--create", user->create, "Create a user who does not exist");
}

}  // namespace sabrel::cli
