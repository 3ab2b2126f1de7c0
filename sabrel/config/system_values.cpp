#include "sabrel/config/system_values.h"

#include <charconv>

#include "sabrel/core/query_execution.h"
#include "sabrel/platform/conversions.h"
#include "sabrel/platform/module_state.h"
#include "sabrel/platform/platform.h"
#include "sabrel/sql/schema_probes.h"

namespace sabrel {

void CSystemValues::MakeKey(std::string& key, std::string_view name, std::string_view value,
                            std::string_view host, std::int32_t port) {
  key.assign(name);
  key += '.';
  key += value;
  if (host.empty()) return;
  char digits[12];
  const auto end = std::to_chars(std::begin(digits), std::end(digits), port).ptr;
  key += ':';
  key += host;
  key += ':';
  key.append(digits, end);
}

std::shared_ptr<CSystemValues> CSystemValues::Values(const Variant& sName, std::int32_t nPortId,
                                                     std::string_view sServerName) const {
  auto found = std::make_shared<CSystemValues>();
  if (sName.IsNull()) return found;
  const std::string name = ToText(sName);
  for (const Entry& entry : entries_) {
    const bool same_server =
        sServerName.empty() || (entry->ServerName() == sServerName && entry->PortId() == nPortId);
    if (entry->Name() == name && same_server) found->AddValue(entry->Clone());
  }
  return found;
}

void CSystemValues::AddValue(const Entry& sv) {
  const std::string& key = Deref(sv).Key();
  if (!Exists(key)) entries_.Add(sv, key);
}

CSystemValues::Entry CSystemValues::AddNew(std::string_view sName, std::string_view sValue,
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
  const auto rows =
      MSabrel::ExecuteQuery("SELECT COUNT(name) FROM ZR_SYSTEM_VALUES_V WHERE name = '" +
                                std::string(sName) + "' AND value = '" + std::string(sValue) + "'",
                            false, sHostName, nPortNumber, sUserName, sPassword, nTimeOut);
  const CloseAtEnd closing(rows);
  bool exists = false;
  if (rows && !rows->EndOfFile()) {
    const Variant count = rows->Fields().Item(0).Value();
    exists = !count.IsNull() && ToDouble(count) > 0.0;
  }
  entry->Exists(exists);
  std::string key;
  MakeKey(key, entry->Name(), entry->Value(), entry->ServerName(), nPortNumber);
  entry->Key(key);
  entries_.Add(entry, key);
  return entry;
}

CSystemValues::Entry CSystemValues::Item(std::string_view vntIndexKey) const noexcept {
  const Entry* entry = entries_.Find(vntIndexKey);
  return entry == nullptr ? nullptr : *entry;
}

CSystemValues::Entry CSystemValues::Item(std::int32_t vntIndexKey) const noexcept {
  if (vntIndexKey < 1 || vntIndexKey > Count()) return nullptr;
  return entries_.Item(vntIndexKey);
}

namespace MSabrel {
namespace {

struct SystemSettings {
  std::shared_ptr<CSystemValues> values;
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
  const auto services = CurrentPlatform().services;
  if (services->TraceSwitch()) {
    services->WriteTrace("GetNHighAttemptsValue succeeded\r\nQuery: " + sql);
  }
}

void CheckMailClient() {
  if (State().mail_client_checked) return;
  const auto registry = CurrentPlatform().registry;
  State().mail_client_checked = true;  // also when the registry fails: it is read at most once
  const auto key = registry->OpenKey("\\HKEY_LOCAL_MACHINE\\SOFTWARE\\Clients\\Mail");
  if (key) State().mail_client_configured = !key->ReadString("", "").empty();
}

}  // namespace

bool SystemValueExists(std::string_view sName, std::string_view sValue, std::string_view sHostName,
                       std::int32_t nPortNumber, std::string_view sUserName,
                       std::string_view sPassword, std::int32_t nTimeOut) {
  if (!State().values) State().values = std::make_shared<CSystemValues>();
  const auto values = State().values;
  CSystemValues::MakeKey(State().key, sName, sValue, sHostName, nPortNumber);
  if (const auto known = values->Item(State().key)) return known->Exists();
  const std::string key = State().key;
  try {
    return values->AddNew(sName, sValue, sHostName, nPortNumber, sUserName, sPassword, nTimeOut)
        ->Exists();
  } catch (const RuntimeError&) {
    // The host may have asked the same from within the query's box: then its answer stands.
    if (const auto known = values->Item(key)) return known->Exists();
    throw;
  }
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

void GetNHighAttemptsValue() noexcept {
  try {
    State().high_attempts = "False";
    ReadHighAttempts();
  } catch (...) {
    // The setting stays as far as it got.
  }
}

void LoadOtherInfo() noexcept { GetNHighAttemptsValue(); }

std::string NHighAttemptsEnabled() { return State().high_attempts; }

bool EmailEnabled() noexcept {
  bool failed = false;
  bool table_present = false;
  try {
    CheckMailClient();
  } catch (...) {
    failed = true;
  }
  try {
    table_present = DoesTableExist("PM_EMAIL");
    return !failed && table_present && State().mail_client_configured;
  } catch (...) {
    return false;
  }
}

}  // namespace MSabrel
}  // namespace sabrel
