#include "sabrel/sql/schema_probes.h"

#include <memory>
#include <optional>
#include <string>

#include "sabrel/core/error_object.h"
#include "sabrel/core/query_execution.h"
#include "sabrel/platform/conversions.h"
#include "sabrel/platform/module_state.h"
#include "sabrel/platform/platform.h"
#include "sabrel/platform/utf8.h"
#include "sabrel/sql/schema_cache.h"

namespace sabrel::MSabrel {
namespace {

struct SchemaFacts {
  std::optional<CTablesExist> existing;
  std::shared_ptr<CColumnLengthCache> lengths = std::make_shared<CColumnLengthCache>();
  std::string key;  // kept between calls, so that a hit allocates nothing
};

// A question to the dictionary, and how the trace speaks of it.
struct Probe {
  const char* succeeded;
  const char* failed;
  std::string subject;
  std::string sql;
};

void TraceSuccess(const Probe& probe) {
  const auto services = CurrentPlatform().services;
  if (!services->TraceSwitch()) return;
  services->WriteTrace(probe.succeeded + probe.subject + "\r\nQuery: " + probe.sql);
}

// A probe raises nothing, so a failure of the telling is dropped.
void CaptureAndTraceFailure(const Probe& probe, const RuntimeError& failure) noexcept try {
  const auto error = SabrelErrorObject();
  error->Reset(failure);
  const auto services = CurrentPlatform().services;
  if (!services->TraceSwitch()) return;
  services->WriteTrace(probe.failed + probe.subject + "\r\n" + error->Text() +
                       "\r\nQuery: " + probe.sql);
} catch (...) {
}

// Runs `ask` and traces its success; false when a failure in either was captured and traced.
template <class Ask>
bool Probing(const Probe& probe, Ask ask) {
  static_cast<void>(CurrentPlatform());  // without a platform there is nothing to ask and to tell
  std::optional<RuntimeError> failure;
  try {
    ask();
    TraceSuccess(probe);
    return true;
  } catch (...) {
    failure = CurrentFailure();
  }
  CaptureAndTraceFailure(probe, *failure);
  return false;
}

bool FirstCountIsNotZero(const RecordsetRef& rows) {
  const CloseAtEnd closing(rows);
  const Variant count = Deref(rows).Fields().Item(0).Value();
  return !count.IsNull() && ToDouble(count) != 0.0;
}

struct Server {
  std::string_view host;
  std::int32_t port = 0;
  std::string_view user;
  std::string_view password;
};

bool CountingProbe(const Probe& probe, const Server& server, std::int32_t timeout_s) {
  bool exists = false;
  const bool told = Probing(probe, [&] {
    exists = FirstCountIsNotZero(ExecuteQuery(probe.sql, true, server.host, server.port,
                                              server.user, server.password, timeout_s));
  });
  return told && exists;
}

const CTableExists* Remembered(std::string_view table, std::string_view field,
                               const Server& server) {
  auto& facts = ModuleState<SchemaFacts>();
  if (!facts.existing) facts.existing.emplace();
  CTablesExist::MakeKey(facts.key, table, field, server.host, server.port);
  return facts.existing->Item(facts.key).get();
}

// A question with strings of its own: a box that is shown for it may take the caller's away.
struct Question {
  std::string table;
  std::string field;
  std::string host;
  std::int32_t port;
  std::int32_t timeout_s;
};

bool Remember(bool exists, const Question& question) {
  auto& facts = ModuleState<SchemaFacts>();
  if (!facts.existing) facts.existing.emplace();
  CTablesExist::MakeKey(facts.key, question.table, question.field, question.host, question.port);
  // The host may have asked the same from within the query's box or trace line.
  if (const auto known = facts.existing->Item(facts.key)) return known->Exists();
  facts.existing->Add(question.table, exists, question.field, question.host, question.port,
                      question.timeout_s);
  return exists;
}

}  // namespace

bool DoesTableExist(std::string_view sTable, std::string_view sHostName, std::int32_t nPortNumber,
                    std::string_view sUserName, std::string_view sPassword, std::int32_t nTimeOut) {
  const Server server{sHostName, nPortNumber, sUserName, sPassword};
  if (const auto* known = Remembered(sTable, {}, server)) return known->Exists();
  const Probe probe{"DoesTableExists succeeded for ", "DoesTableExists failed for ",
                    std::string(sTable) + ".",
                    "SELECT COUNT(table_name) FROM user_tables\r\n    WHERE table_name = '" +
                        UpperCase(sTable) + "'"};
  const Question question{std::string(sTable), {}, std::string(sHostName), nPortNumber, nTimeOut};
  return Remember(CountingProbe(probe, server, nTimeOut), question);
}

bool DoesFieldExist(std::string_view sTable, std::string_view sFieldName,
                    std::string_view sHostName, std::int32_t nPortNumber,
                    std::string_view sUserName, std::string_view sPassword) {
  const Server server{sHostName, nPortNumber, sUserName, sPassword};
  if (const auto* known = Remembered(sTable, sFieldName, server)) return known->Exists();
  const Probe probe{"DoesFieldExists succeeded for ", "DoesFieldExists failed for ",
                    std::string(sTable) + "." + std::string(sFieldName),
                    "SELECT COUNT(table_name)  FROM user_tab_columns WHERE table_name = '" +
                        UpperCase(sTable) + "' AND column_name = '" + UpperCase(sFieldName) + "'"};
  const Question question{std::string(sTable), std::string(sFieldName), std::string(sHostName),
                          nPortNumber, 0};
  return Remember(CountingProbe(probe, server, kQueryTimeOut_s), question);
}

bool DoesThisProcedureExist(std::string_view sPackageName, std::string_view sProcedureName) {
  if (const auto* known = Remembered(sPackageName, sProcedureName, {})) return known->Exists();
  const Probe probe{"DoesProcedureExist succeeded for ", "DoesProcedureExist failed for ",
                    std::string(sPackageName) + "." + std::string(sProcedureName),
                    "SELECT COUNT(object_name)  FROM user_arguments WHERE package_name = '" +
                        UpperCase(sPackageName) + "' AND object_name = '" +
                        UpperCase(sProcedureName) + "'"};
  const Question question{std::string(sPackageName), std::string(sProcedureName), {}, 0, 0};
  return Remember(CountingProbe(probe, {}, kQueryTimeOut_s), question);
}

bool DoesDbObjectExist(std::string_view sObjectNameA, std::string_view sObjectTypeA,
                       std::string_view sHostNameA, std::int32_t nPortNumberA,
                       std::string_view sUserNameA, std::string_view sPasswordA,
                       std::int32_t nTimeOutA) {
  Probe probe{"DoesDbObjectExist succeeded for ", "DoesDbObjectExist failed for ",
              std::string(sObjectNameA) + ".",
              "Select object_name, object_type From user_objects Where object_name='" +
                  UpperCase(sObjectNameA) + "'"};
  if (!sObjectTypeA.empty()) probe.sql += " And object_type='" + UpperCase(sObjectTypeA) + "'";
  bool exists = false;
  RecordsetRef rows;
  static_cast<void>(Probing(probe, [&] {
    rows =
        ExecuteQuery(probe.sql, false, sHostNameA, nPortNumberA, sUserNameA, sPasswordA, nTimeOutA);
    exists = !Deref(rows).EndOfFile();
  }));
  if (rows) rows->Close();
  return exists;
}

std::int16_t GetProcedureLength(std::string_view sPackage, std::string_view sProcedure) {
  std::int16_t length = 0;
  try {
    const RecordsetRef rows = ExecuteQuery(
        "select MAX(position) AS ProcLen From user_arguments where package_name = '" +
            std::string(sPackage) + "' and object_name = '" + std::string(sProcedure) + "'",
        true);
    const CloseAtEnd closing(rows);
    if (!Deref(rows).EndOfFile()) length = ToInt16(rows->Fields().Item("ProcLen").Value());
  } catch (...) {
    // An unknown procedure has no length: its maximum is null.
  }
  return length;
}

std::int32_t DBColumnLength(std::string_view sTable, std::string_view sColumn) {
  const auto lengths = ModuleState<SchemaFacts>().lengths;
  return lengths->ColumnLength(sTable, sColumn);
}

std::int32_t ModuleNameMaxLength() {
  constexpr std::int32_t kDefaultLength = 15;
  const RecordsetRef rows =
      ExecuteQuery("Select max(length(Module_Name)) as ModuleNameLength from EA_module");
  const CloseAtEnd closing(rows);
  return rows ? ToInt32(rows->Fields().Item("ModuleNameLength").Value()) : kDefaultLength;
}

void ResetExistingTables() { ModuleState<SchemaFacts>().existing.reset(); }

}  // namespace sabrel::MSabrel
