#include "sabrel/sql/schema_probes.h"

#include <memory>
#include <optional>
#include <string>

#include "sabrel/core/error_object.h"
#include "sabrel/core/query_execution.h"
#include "sabrel/core/trace.h"
#include "sabrel/platform/conversions.h"
#include "sabrel/platform/module_state.h"
#include "sabrel/platform/platform.h"
#include "sabrel/platform/utf8.h"
#include "sabrel/sql/schema_cache.h"

namespace sabrel::MSabrel {
namespace {

struct SchemaFacts {
  CTablesExist existing;
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

// A probe raises nothing, so a failure of the telling is dropped.
void CaptureAndTraceFailure(const Probe& probe, const RuntimeError& failure) noexcept try {
  const auto error = SabrelErrorObject();
  error->Reset(failure);
  TraceWhenOn([&] {
    return probe.failed + probe.subject + "\r\n" + error->Text() + "\r\n" + QueryLine(probe.sql);
  });
} catch (...) {
}

// Runs `ask` and traces its success; false when its failure was captured and traced.
template <class Ask>
bool Probing(const Probe& probe, Ask ask) {
  RequirePlatform();
  if (const auto failure = FailureIn(ask)) {
    CaptureAndTraceFailure(probe, *failure);
    return false;
  }
  // Neither the query nor its reading failed: an answer that cannot be traced is an answer.
  static_cast<void>(FailureIn([&] {
    TraceWhenOn([&] { return probe.succeeded + probe.subject + "\r\n" + QueryLine(probe.sql); });
  }));
  return true;
}

bool FirstCountIsNotZero(const RecordsetRef& rows) {
  const CloseAtEnd closing(rows);
  const Variant count = Deref(rows).Fields().Item(0).Value();
  return !count.IsNull() && ToDouble(count) != 0.0;
}

const CTableExists* Remembered(std::string_view table, std::string_view field,
                               std::string_view host, std::int32_t port) {
  auto& facts = ModuleState<SchemaFacts>();
  internal::MakeKey(facts.key, table, field, host, port);
  return facts.existing.Item(facts.key).get();
}

// What is looked for: how the trace speaks of it, its statement up to each name, its time-out if
// fixed.
struct Kind {
  const char* succeeded;
  const char* failed;
  const char* before_table;
  const char* before_field;
  std::optional<std::int32_t> timeout_s;
};
constexpr Kind kTable{"DoesTableExists succeeded for ", "DoesTableExists failed for ",
                      "SELECT COUNT(table_name) FROM user_tables\r\n    WHERE table_name = '", "",
                      std::nullopt};
constexpr Kind kColumn{"DoesFieldExists succeeded for ", "DoesFieldExists failed for ",
                       "SELECT COUNT(table_name)  FROM user_tab_columns WHERE table_name = '",
                       "' AND column_name = '", kQueryTimeOut_s};
constexpr Kind kProcedure{"DoesProcedureExist succeeded for ", "DoesProcedureExist failed for ",
                          "SELECT COUNT(object_name)  FROM user_arguments WHERE package_name = '",
                          "' AND object_name = '", kQueryTimeOut_s};

bool AskOnce(const Kind& kind, std::string_view sTable, std::string_view sField,
             std::string_view sHost = {}, std::int32_t port = 0, std::string_view sUser = {},
             std::string_view sPassword = {}, std::int32_t timeout_s = 0) {
  if (const auto* known = Remembered(sTable, sField, sHost, port)) return known->Exists();
  // Strings of its own: a box that is shown for the query may take the caller's away.
  const std::string table(sTable);
  const std::string field(sField);
  const std::string host(sHost);
  const std::string user(sUser);
  const std::string password(sPassword);
  const Probe probe{
      kind.succeeded, kind.failed, table + "." + field,
      kind.before_table + UpperCase(table) + kind.before_field + UpperCase(field) + "'"};
  bool exists = false;
  const auto ask = [&] {
    exists = FirstCountIsNotZero(ExecuteQuery(probe.sql, true, host, port, user, password,
                                              kind.timeout_s.value_or(timeout_s)));
  };
  if (!Probing(probe, ask)) exists = false;
  // The host may have asked the same from within the query's box or trace line.
  if (const auto* known = Remembered(table, field, host, port)) return known->Exists();
  ModuleState<SchemaFacts>().existing.Add(table, exists, field, host, port, timeout_s);
  return exists;
}

}  // namespace

bool DoesTableExist(std::string_view sTable, std::string_view sHostName, std::int32_t nPortNumber,
                    std::string_view sUserName, std::string_view sPassword, std::int32_t nTimeOut) {
  return AskOnce(kTable, sTable, {}, sHostName, nPortNumber, sUserName, sPassword, nTimeOut);
}

bool DoesFieldExist(std::string_view sTable, std::string_view sFieldName,
                    std::string_view sHostName, std::int32_t nPortNumber,
                    std::string_view sUserName, std::string_view sPassword) {
  return AskOnce(kColumn, sTable, sFieldName, sHostName, nPortNumber, sUserName, sPassword);
}

bool DoesThisProcedureExist(std::string_view sPackageName, std::string_view sProcedureName) {
  return AskOnce(kProcedure, sPackageName, sProcedureName);
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
  RequirePlatform();
  try {
    const RecordsetRef rows = ExecuteQuery(
        "select MAX(position) AS ProcLen From user_arguments where package_name = '" +
            std::string(sPackage) + "' and object_name = '" + std::string(sProcedure) + "'",
        true);
    const CloseAtEnd closing(rows);
    return Deref(rows).EndOfFile() ? std::int16_t{0}
                                   : ToInt16(rows->Fields().Item("ProcLen").Value());
  } catch (...) {
    return 0;  // An unknown procedure has no length: its maximum is null.
  }
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

void ResetExistingTables() { ModuleState<SchemaFacts>().existing = {}; }

}  // namespace sabrel::MSabrel
