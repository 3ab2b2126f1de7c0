#include "sabrel/config/system_values.h"

#include "sabrel/core/query_execution.h"
#include "sabrel/core/trace.h"
#include "sabrel/platform/conversions.h"
#include "sabrel/platform/module_state.h"
#include "sabrel/platform/platform.h"
#include "sabrel/sql/schema_probes.h"

namespace sabrel {

namespace {

void MakeKey(std::string& key, std::string_view name, std::string_view value, std::string_view host,
             std::int32_t port) {
  key.assign(name).append(1, '.').append(value);
  internal::AppendServer(key, host, port);
}

CSystemValues::Entry AskFor(std::string_view sName, std::string_view sValue,
                            std::string_view sHostName, std::int32_t nPortNumber,
                            std::string_view sUserName, std::string_view sPassword,
                            std::int32_t nTimeOut) {
  // Made before the query: a box that is shown for it may take the caller's strings away.
  auto entry = std::make_shared<CSystemValue>();
  entry->PortId(nPortNumber);
  entry->ServerName(sHostName);
  entry->TimeOut(nTimeOut);
  entry->Value(sValue);
  entry->Name(sName);
  std::string key;
  MakeKey(key, sName, sValue, sHostName, nPortNumber);
  entry->Key(key);
  const auto rows =
      MSabrel::ExecuteQuery("SELECT COUNT(name) FROM ZR_SYSTEM_VALUES_V WHERE name = '" +
                                std::string(sName) + "' AND value = '" + std::string(sValue) + "'",
                            false, sHostName, nPortNumber, sUserName, sPassword, nTimeOut);
  const CloseAtEnd closing(rows);
  if (rows && !rows->EndOfFile()) {
    const Variant count = rows->Fields().Item(0).Value();
    entry->Exists(!count.IsNull() && ToDouble(count) > 0.0);
  }
  return entry;
}

}  // namespace

std::shared_ptr<CSystemValues> CSystemValues::Values(const Variant& sName, std::int32_t nPortId,
                                                     std::string_view sServerName) const {
  return RaisingRuntimeErrors([&] {
    auto found = std::make_shared<CSystemValues>();
    if (sName.IsNull()) return found;
    const std::string name = ToText(sName);
    for (const Entry& entry : entries_) {
      const bool same_server =
          sServerName.empty() || (entry->ServerName() == sServerName && entry->PortId() == nPortId);
      if (entry->Name() == name && same_server) found->AddValue(entry->Clone());
    }
    return found;
  });
}

void CSystemValues::AddValue(const Entry& sv) {
  const std::string& key = Deref(sv).Key();
  if (!Exists(key)) entries_.Add(sv, key);
}

CSystemValues::Entry CSystemValues::AddNew(std::string_view sName, std::string_view sValue,
                                           std::string_view sHostName, std::int32_t nPortNumber,
                                           std::string_view sUserName, std::string_view sPassword,
                                           std::int32_t nTimeOut) {
  return RaisingRuntimeErrors([&] {
    auto entry = AskFor(sName, sValue, sHostName, nPortNumber, sUserName, sPassword, nTimeOut);
    entries_.Add(entry, entry->Key());
    return entry;
  });
}

namespace MSabrel {
namespace {

struct SystemSettings {
  std::shared_ptr<CSystemValues> values = std::make_shared<CSystemValues>();
  std::string key;  // kept between calls, so that a hit allocates nothing
  std::string high_attempts;
  bool mail_client_configured = false;
  bool mail_client_checked = false;
  std::int32_t start_of_week = 0;
};

SystemSettings& State() { return ModuleState<SystemSettings>(); }

// The stored day counts from 0, the answer from 1; whatever lies behind the week is its first day.
std::int16_t WeekdayOf(const Variant& stored) {
  constexpr std::int16_t kDaysAWeek = 7;
  const std::int16_t day = ToInt16(Variant(ToDouble(stored) + 1.0));
  return day > kDaysAWeek ? std::int16_t{1} : day;
}

void ReadHighAttempts() {
  const std::string sql =
      "SELECT Name, Value FROM ZR_System_Values_V  WHERE Name = 'EnableNHighAttempts'";
  const RecordsetRef rows = ExecuteQuery(sql);
  {
    const CloseAtEnd closing(rows);
    if (rows && rows->RecordCount() > 0) {
      State().high_attempts = ToText(rows->Fields().Item("Value").Value());
    }
  }
  TraceWhenOn([&] { return "GetNHighAttemptsValue succeeded\r\n" + QueryLine(sql); });
}

bool IsMailClientConfigured() {
  if (State().mail_client_checked) return State().mail_client_configured;
  const auto registry = CurrentPlatform().registry;
  State().mail_client_checked = true;  // also when the registry fails: it is read at most once
  const auto key = registry->OpenKey("\\HKEY_LOCAL_MACHINE\\SOFTWARE\\Clients\\Mail");
  const bool configured = key && !key->ReadString("", "").empty();
  State().mail_client_configured = configured;
  return configured;
}

}  // namespace

bool SystemValueExists(std::string_view sName, std::string_view sValue, std::string_view sHostName,
                       std::int32_t nPortNumber, std::string_view sUserName,
                       std::string_view sPassword, std::int32_t nTimeOut) {
  const auto values = State().values;
  MakeKey(State().key, sName, sValue, sHostName, nPortNumber);
  if (const auto known = values->Item(State().key)) return known->Exists();
  const auto asked = AskFor(sName, sValue, sHostName, nPortNumber, sUserName, sPassword, nTimeOut);
  // The host may have asked the same from within the query's box: then its answer stands.
  values->AddValue(asked);
  return values->Item(asked->Key())->Exists();
}

std::string SystemFirstDayOfWeek() {
  if (State().start_of_week < 1) {
    const RecordsetRef rows = ExecuteQuery(
        "select VALUE  from ZR_SYSTEM_VARIABLE a, ZR_SYSTEM_VALUE b  "
        "Where a.Id = b.VARIABLE_ID and a.NAME = 'StartOfWeek'");
    const CloseAtEnd closing(rows);
    if (rows) State().start_of_week = WeekdayOf(rows->Fields().Item("Value").Value());
  }
  return std::to_string(State().start_of_week);
}

void GetNHighAttemptsValue() {
  RequirePlatform();
  State().high_attempts = "False";
  try {
    ReadHighAttempts();
  } catch (...) {
    // The setting stays as far as it got.
  }
}

void LoadOtherInfo() { GetNHighAttemptsValue(); }

std::string NHighAttemptsEnabled() { return State().high_attempts; }

bool EmailEnabled() {
  RequirePlatform();
  // What fails leaves its answer false, and the probe is made in any case.
  bool client_configured = false;
  static_cast<void>(FailureIn([&] { client_configured = IsMailClientConfigured(); }));
  bool table_present = false;
  static_cast<void>(FailureIn([&] { table_present = DoesTableExist("PM_EMAIL"); }));
  return client_configured && table_present;
}

}  // namespace MSabrel
}  // namespace sabrel
