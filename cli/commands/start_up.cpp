// `login` and `registry`: how a client starts, and where a start fails.
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "cli/argument.h"
#include "cli/commands/commands.h"
#include "cli/row_printer.h"
#include "sabrel/core/gsabrel.h"

namespace sabrel::cli {
namespace {

// As the component opens them, which keeps their paths to itself.
constexpr const char* kSetupKey = "\\HKEY_LOCAL_MACHINE\\SOFTWARE\\Torvane\\Norvasta\\Setup";
constexpr const char* kMailKey = "\\HKEY_LOCAL_MACHINE\\SOFTWARE\\Clients\\Mail";

Variant TextOrNull(std::string text) {
  return text.empty() ? Variant(Null{}) : Variant(std::move(text));
}

std::string FolderRemedy(const Options& options) {
  const std::string where = " the value AppRootFolder of the key " + std::string(kSetupKey + 1);
  if (options.registry.empty()) {
    return "the installation's folder is" + where +
           "; name an exported registry file that holds it with --registry FILE";
  }
  return options.registry + " has to hold" + where +
         ", the folder where the client is installed; export that key from a machine with an "
         "installation, or add it";
}

// Two programs that start at once on a new machine both enter it; where a unique key refuses the
// second, the row of the first is there now.
void LoadMachineIdOnceMore(Context& context) {
  try {
    GSabrel::LoadMachineId();
    return;
  } catch (const RuntimeError& failure) {
    if (CErrorObject(failure).DBErrorType() != dbeUniqueConstraintViolated) throw;
  }
  GSabrel::ClearConnectionError();
  GSabrel::LoadMachineId();
  context.Note("Another program entered this machine at the same time; its row serves both.");
}

struct LoginStep {
  const char* name;
  std::string remedy;
  bool needs_server;
  std::function<void(Context&)> work;
  /// What was learned, also by a step that failed half-way: name and value.
  std::function<std::vector<std::pair<std::string, Variant>>()> learned;
};

LoginStep MachineInfoStep(const Options& options) {
  return {"LoadMachineInfo", FolderRemedy(options), false,
          [](Context&) { GSabrel::LoadMachineInfo(); },
          [] {
            return std::vector<std::pair<std::string, Variant>>{
                {"Root folder", TextOrNull(CurrentPlatform().application->RootFolder())},
                {"SubclassingOn", Variant(GSabrel::IsSubclassingOn())},
                {"IncludeDSMonitor", Variant(GSabrel::IncludeDSMonitor())},
                {"IncludeAddInManager", Variant(GSabrel::IncludeAddInManager())}};
          }};
}

LoginStep ProductInfoStep() {
  return {"InitializeProductInfo",
          "PM_PRODUCT_INFO has to hold ProductFullName, ProductName, ProductVersion, "
          "ProductRelease and ProductType, a row (Property, Value) each",
          true, [](Context&) { GSabrel::InitializeProductInfo(); },
          [] {
            std::vector<std::pair<std::string, Variant>> learned;
            for (const char* name :
                 {"ProductFullName", "ProductName", "ProductVersion", "ProductRelease",
                  "ProductType", "MainAppIconFile", "TimeSlices", "BusyHourTimeSlices"}) {
              learned.emplace_back(
                  name, TextOrNull(CurrentPlatform().application->ProductProperty(name)));
            }
            return learned;
          }};
}

std::vector<LoginStep> LoginSteps(const Options& options) {
  // What the last steps ask for is kept for printing; a step that failed has nothing.
  const auto week = std::make_shared<Variant>(Null{});
  const auto mail = std::make_shared<Variant>(Null{});
  const auto machine_id = std::make_shared<Variant>(Null{});
  std::vector<LoginStep> steps;
  steps.push_back(MachineInfoStep(options));
  steps.push_back({"LoadMachineId",
                   "this user has to be able to read PM_ClientMachine (Id, Domain, MachineName), "
                   "to insert into it and to draw from SQ_ClientMachine",
                   true,
                   [machine_id](Context& c) {
                     LoadMachineIdOnceMore(c);
                     *machine_id = Variant(GSabrel::MachineId());
                   },
                   [machine_id] {
                     const Application& application = *CurrentPlatform().application;
                     return std::vector<std::pair<std::string, Variant>>{
                         {"Machine", Variant(application.MachineName())},
                         {"Domain", Variant(application.DomainName())},
                         {"Machine id", *machine_id}};
                   }});
  steps.push_back(ProductInfoStep());
  steps.push_back({"LoadOtherInfo",
                   "the view ZR_SYSTEM_VALUES_V (NAME, VALUE) has to be there and readable", true,
                   [](Context&) { GSabrel::LoadOtherInfo(); },
                   [] {
                     return std::vector<std::pair<std::string, Variant>>{
                         {"N high attempts", TextOrNull(GSabrel::NHighAttemptsEnabled())}};
                   }});
  steps.push_back(
      {"SystemFirstDayOfWeek",
       "the system variable StartOfWeek has to have one value, 0 (Sunday) to 6, in "
       "ZR_SYSTEM_VARIABLE and ZR_SYSTEM_VALUE",
       true, [week](Context&) { *week = ParseArgument(GSabrel::SystemFirstDayOfWeek()); },
       [week] {
         return std::vector<std::pair<std::string, Variant>>{{"First day of week", *week}};
       }});
  steps.push_back({"EmailEnabled", "the dictionary view user_tables has to be readable", true,
                   [mail](Context&) { *mail = Variant(GSabrel::EmailEnabled()); },
                   [mail] {
                     return std::vector<std::pair<std::string, Variant>>{{"E-mail enabled", *mail}};
                   }});
  return steps;
}

int Login(Context& context) {
  context.RequireServer();
  const auto printer =
      MakeRowPrinter(context.options.format, context.Out(), {"STEP", "WHAT", "VALUE"});
  int status = kDone;
  bool connected = true;
  for (const LoginStep& step : LoginSteps(context.options)) {
    if (step.needs_server && !connected) {
      context.Note(std::string(step.name) + " was left out: there is no connection.");
    } else {
      const int ended = context.Step(step.name, [&] { step.work(context); });
      connected = connected && ended != kNoConnection;
      if (ended == kFailed) context.Note("Remedy: " + step.remedy + ".");
      // No connection is the graver news.
      if (ended != kDone && status != kNoConnection) status = ended;
    }
    for (const auto& [what, value] : step.learned()) {
      printer->Row({Variant(std::string(step.name)), Variant(what), value});
    }
  }
  printer->End();
  return status;
}

// A flag that the key does not hold, or not as a truth value, reads as whatever default is given.
Variant StoredFlag(const RegistryKey* key, const char* name) {
  if (key == nullptr) return Variant(Null{});
  const bool flag = key->ReadBoolean(name, true);
  if (flag == key->ReadBoolean(name, false)) return Variant(flag);
  return TextOrNull(key->ReadString(name, ""));
}

Variant StoredText(const RegistryKey* key, const char* name) {
  return key == nullptr ? Variant(Null{}) : TextOrNull(key->ReadString(name, ""));
}

int ShowRegistry(Context& context) {
  const Options& options = context.options;
  context.Note(options.registry.empty() ? "No registry file is named: the registry is empty"
                                        : "Read from " + options.registry);
  const int status = context.Step("LoadMachineInfo", [] { GSabrel::LoadMachineInfo(); });
  if (status != kDone) context.Note("Remedy: " + FolderRemedy(options) + ".");
  const Platform& platform = CurrentPlatform();
  const auto setup = platform.registry->OpenKey(kSetupKey);
  const auto mail = platform.registry->OpenKey(kMailKey);
  const auto printer =
      MakeRowPrinter(options.format, context.Out(), {"NAME", "STORED", "TAKEN", "KEY"});
  const auto row = [&](const char* name, Variant stored, Variant taken, const char* key) {
    printer->Row({Variant(name), std::move(stored), std::move(taken), Variant(key + 1)});
  };
  row("AppRootFolder", StoredText(setup.get(), "AppRootFolder"),
      TextOrNull(platform.application->RootFolder()), kSetupKey);
  row("SubclassingOn", StoredFlag(setup.get(), "SubclassingOn"),
      Variant(GSabrel::IsSubclassingOn()), kSetupKey);
  row("IncludeDSMonitor", StoredFlag(setup.get(), "IncludeDSMonitor"),
      Variant(GSabrel::IncludeDSMonitor()), kSetupKey);
  row("IncludeAddInManager", StoredFlag(setup.get(), "IncludeAddInManager"),
      Variant(GSabrel::IncludeAddInManager()), kSetupKey);
  const Variant client = StoredText(mail.get(), "");
  row("(mail client)", client, Variant(!client.IsNull()), kMailKey);
  printer->End();
  return status;
}

}  // namespace

void AddStartUpCommands(CLI::App& parent, Context& context) {
  AddCommand(parent, context, "login",
             "Start as a client does, step by step; print what each step learned and why one "
             "failed",
             "  sabrel --site plant.site --registry settings.reg login", Login);
  AddCommand(parent, context, "registry",
             "Print the settings that the installation left in the registry, and what is taken of "
             "them",
             "  sabrel --registry settings.reg registry", ShowRegistry);
}

}  // namespace sabrel::cli
