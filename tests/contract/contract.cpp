#include "tests/contract/contract.h"

#include "sabrel/platform/runtime_error.h"

namespace sabrel::testing {

void Contract::SetUp() {
  open_session = GetParam().make_site();
  if (!open_session) GTEST_SKIP() << "there is no server of " << GetParam().name;
  session = open_session();
}

Outcome Contract::Tried(const std::function<void(Outcome&)>& action) {
  Outcome outcome;
  try {
    action(outcome);
  } catch (const RuntimeError& failure) {
    outcome.rows.clear();
    outcome.connection = session->ConnectionErrorCode(failure.Number());
    if (CarriedCode(failure.Number()) == kDatabaseErrorCode) {
      outcome.native = session->LastDatabaseError().native_number;
    } else if (outcome.connection == 0) {
      ADD_FAILURE() << failure.Number() << " " << failure.Description();
    }
  }
  return outcome;
}

Outcome Contract::Query(std::string_view sql, std::int32_t timeout_s) {
  return Tried([&](Outcome& outcome) {
    const auto rows = session->MakeRecordset();
    rows->Open(sql, "", 0, "", "", timeout_s);
    const FieldList fields = rows->Fields();
    for (std::int32_t i = 0; i < fields.Count(); ++i)
      outcome.columns.push_back(fields.Item(i).Name());
    for (; !rows->EndOfFile(); rows->MoveNext()) {
      auto& row = outcome.rows.emplace_back();
      for (std::int32_t i = 0; i < fields.Count(); ++i) row.push_back(fields.Item(i).Value());
    }
    rows->Close();
  });
}

Outcome Contract::Execute(std::string_view sql, std::int32_t timeout_s) {
  return Tried([&](Outcome& outcome) {
    outcome.rows_changed = session->MakeRecordset()->Execute(sql, "", 0, "", "", timeout_s);
  });
}

void Contract::Run(std::string_view sql) {
  const Outcome outcome = Execute(sql);
  EXPECT_EQ(outcome.native + outcome.connection, 0)
      << sql << ": " << session->LastDatabaseError().message;
}

Variant Contract::Value(std::string_view sql) {
  const Outcome outcome = Query(sql);
  EXPECT_EQ(outcome.native + outcome.connection, 0)
      << sql << ": " << session->LastDatabaseError().message;
  return outcome.rows.empty() || outcome.rows[0].empty() ? Variant() : outcome.rows[0][0];
}

}  // namespace sabrel::testing
