#include "sabrel/core/session.h"

#include <memory>

#include "sabrel/core/error_object.h"
#include "sabrel/core/query_execution.h"
#include "sabrel/platform/conversions.h"
#include "sabrel/platform/module_state.h"
#include "sabrel/platform/named_values.h"
#include "sabrel/platform/platform.h"
#include "sabrel/sql/literals.h"

namespace sabrel::MSabrel {
namespace {

struct Session {
  std::string connection_name;
  std::string connection_user;
  std::string connection_password;
  std::int32_t machine_id = 0;
  bool subclassing_on = false;
  bool include_ds_monitor = false;
  bool include_add_in_manager = false;
  std::shared_ptr<const NamedValues> product_info;
};

Session& State() { return ModuleState<Session>(); }

// Names are asked for each time: a machine may be renamed while its session lasts.
std::int32_t LookUpMachine() {
  const auto application = CurrentPlatform().application;
  return ExecuteQueryReturningLong(
      "SELECT Id FROM PM_ClientMachine WHERE Domain = " + DBStr(application->DomainName()).Value() +
      " AND MachineName = " + DBStr(application->MachineName()));
}

void InsertMachine() {
  const auto application = CurrentPlatform().application;
  ExecuteRequest("INSERT INTO PM_ClientMachine (Id, Domain, MachineName) VALUES (" +
                 NextInSequence("SQ_ClientMachine").Value() + "," +
                 DBStr(application->DomainName()) + "," + DBStr(application->MachineName()) + ")");
}

void ReadProductRows(NamedValues& properties) {
  const RecordsetRef rows = ExecuteQuery("SELECT * FROM PM_PRODUCT_INFO");
  const CloseAtEnd closing(rows);
  Recordset& row = Deref(rows);
  for (; !row.EndOfFile(); row.MoveNext()) {
    const FieldList fields = row.Fields();
    properties.Add(ToText(fields.Item("Property").Value()),
                   Variant(ToText(fields.Item("Value").Value())));
  }
}

// A failing action is as good as one that was not asked for.
template <class Action>
void Ignoring(Action action) noexcept {
  try {
    action();
  } catch (...) {
  }
}

[[noreturn]] void RaiseProductInstallation(const ErrorHandler& handler) {
  handler.Raise(sabProductInstallationError, "MSabrel", "LoadMachineInfo",
                {CurrentPlatform().application->ProductName()});
}

void ShowProductInstallation() {
  const Platform platform = CurrentPlatform();
  const std::string product = platform.application->ProductName();
  platform.services->ShowMessage(
      "Product Installation Error!!\r\nIn module MSabrel : LoadMachineInfo Product Name: " +
          product,
      kBoxCritical, product);
}

// The folder; the flags are kept as soon as they are read.
std::string ReadSetup() {
  const auto key =
      CurrentPlatform().registry->OpenKey("\\HKEY_LOCAL_MACHINE\\SOFTWARE\\Torvane\\Norvasta");
  const auto setup = key ? key->OpenSubkey("Setup") : nullptr;
  if (!setup) return {};
  std::string folder = setup->ReadString("AppRootFolder", "");
  State().subclassing_on = setup->ReadBoolean("SubclassingOn", true);
  State().include_ds_monitor = setup->ReadBoolean("IncludeDSMonitor", true);
  State().include_add_in_manager = setup->ReadBoolean("IncludeAddInManager", false);
  return folder;
}

}  // namespace

std::int32_t MachineId() {
  if (const std::int32_t known = State().machine_id; known != 0) return known;
  // A failed look-up shows a box, in which the host may have asked too: what is known by then
  // stands.
  std::int32_t id = LookUpMachine();
  if (id == 0 && State().machine_id == 0) {
    InsertMachine();
    id = LookUpMachine();
  }
  if (State().machine_id == 0) State().machine_id = id;
  return State().machine_id;
}

void LoadMachineId() {
  if (MachineId() == 0) {
    SabrelErrorHandler()->Raise(sabMachineIdError, "MSabrel", "LoadMachineId", {});
  }
  const auto application = CurrentPlatform().application;
  static_cast<void>(application->MachineName());
  static_cast<void>(application->DomainName());
}

void LoadMachineInfo() {
  std::string folder = ReadSetup();
  if (folder.empty()) {
    if (const auto handler = SabrelErrorHandler()) RaiseProductInstallation(*handler);
    return ShowProductInstallation();
  }
  if (folder.back() != '\\') folder.push_back('\\');
  CurrentPlatform().application->RootFolder(folder);
}

bool IsSubclassingOn() { return State().subclassing_on; }
bool IncludeDSMonitor() { return State().include_ds_monitor; }
bool IncludeAddInManager() { return State().include_add_in_manager; }

std::string ProductProperty(std::string_view name) {
  const std::string wanted(name);  // a failed query's box may take the caller's text away
  if (!State().product_info) {
    RequirePlatform();
    // Set before the query: a failing one is not sent again for each property.
    const auto properties = std::make_shared<NamedValues>();
    State().product_info = properties;
    Ignoring([&] { ReadProductRows(*properties); });
    if (!State().product_info) State().product_info = properties;
  }
  const auto info = State().product_info;
  const Variant* value = info->Find(wanted);
  return value == nullptr ? std::string() : value->Get<std::string>();
}

void InitializeProductInfo() {
  const auto platform = CurrentPlatform();
  Application& application = *platform.application;
  State().product_info.reset();
  for (const char* name : {"BusyHourTimeSlices", "TimeSlices", "MainAppIconFile", "ProductFullName",
                           "ProductName", "ProductRelease", "ProductType", "ProductVersion"}) {
    Ignoring([&] { application.ProductProperty(name, ProductProperty(name)); });
  }
  for (const char* name :
       {"ProductFullName", "ProductName", "ProductVersion", "ProductRelease", "ProductType"}) {
    if (application.ProductProperty(name).empty()) {
      SabrelErrorHandler()->Raise(sabProductInfoError, "MSabrel", "InitializeProductInfo", {name});
    }
  }
}

void ShutdownDBConnection() noexcept {
  Ignoring([] {
    const auto rowlink = CurrentPlatform().rowlink;
    rowlink->ShutDown();
  });
}

std::string DBConnectionName() { return State().connection_name; }
void DBConnectionName(std::string_view value) { State().connection_name = value; }
std::string DBConnectionUID() { return State().connection_user; }
void DBConnectionUID(std::string_view value) { State().connection_user = value; }
std::string DBConnectionPWD() { return State().connection_password; }
void DBConnectionPWD(std::string_view value) { State().connection_password = value; }

}  // namespace sabrel::MSabrel
