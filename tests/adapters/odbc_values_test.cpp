// What the driver must carry unharmed, and the ways to it that other drivers than psqlodbc need.
#include <gtest/gtest.h>

#include "adapters/odbc/connection.h"
#include "adapters/odbc/odbc_link.h"
#include "adapters/odbc/odbc_rowlink.h"
#include "sabrel/platform/date.h"
#include "tests/support/postgresql_server.h"

namespace sabrel::testing {
namespace {

class OdbcValues : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!PostgresqlServer()) GTEST_SKIP() << "no PostgreSQL server";
    site = std::make_unique<PostgresqlDatabase>();
    rowlink = MakeOdbcRowlink(ProfileSet(site->Profile()));
  }
  [[nodiscard]] std::shared_ptr<Recordset> Open(const std::string& sql) const {
    const auto rows = rowlink->MakeRecordset();
    rows->Open(sql, "", 0, "", "", 60);
    return rows;
  }
  [[nodiscard]] Variant Ask(const std::string& sql) const {
    return Open(sql)->Fields().Item(0).Value();
  }
  std::unique_ptr<PostgresqlDatabase> site;
  std::shared_ptr<Rowlink> rowlink;
};

TEST_F(OdbcValues, TextsOfEveryLengthComeBack) {
  const std::string smile = "\U0001F600";
  std::vector<std::string> texts;
  // A buffer holds 4,000 units of UTF-16; a character beyond 16 bits takes two of them.
  for (const std::size_t length : {1U, 3998U, 3999U, 4000U, 4001U, 8000U, 8001U, 100000U}) {
    texts.push_back(std::string(length, 'x'));
    texts.push_back(std::string(length, 'x') + smile);
    texts.push_back(smile + std::string(length, 'x') + "\u20AC");
  }
  std::string sql;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    sql += (i > 0 ? " UNION ALL SELECT " : "SELECT ") + std::to_string(i) + " AS N, '" + texts[i] +
           "' AS T FROM DUAL";
  }
  const auto rows = Open(sql + " ORDER BY N");
  for (std::size_t i = 0; i < texts.size(); ++i, rows->MoveNext()) {
    ASSERT_FALSE(rows->EndOfFile());
    EXPECT_TRUE(rows->Fields().Item("T").Value() == Variant(texts[i])) << i;
  }
  EXPECT_TRUE(FailureIn([&] { (void)Ask("SELECT 1E300 * 1E300 FROM DUAL"); })) << "never 0";
}

TEST_F(OdbcValues, TheServersClockIsTheClock) {
  const Variant now = Ask("SELECT SYSDATE FROM DUAL");
  ASSERT_EQ(now.kind(), VariantKind::kDate);
  EXPECT_LE(std::abs(now.Get<Date>().WholeSeconds() - Date::Now().WholeSeconds()), 2);
}

TEST_F(OdbcValues, CallsTellWhatBecameOfThem) {
  odbc::OdbcLink link{ProfileSet(site->Profile())};
  link.ExecuteNative("CREATE TABLE late (n numeric PRIMARY KEY DEFERRABLE INITIALLY DEFERRED)");
  const std::tuple<const char*, const char*, std::size_t, std::string> rows[] = {
      {"a char", "RETURN a;", 1, "abc"},
      {"a char, b text", "RETURN b;", 2, "ORA-00904"},  // the routine was another one
      {"a char, b text", "RETURN b;", 2, "abc"},
      {"a char, b text", "INSERT INTO late VALUES (1), (1); RETURN a;", 2, "ORA-00001"},
      {"a char, b text", "RAISE '%', repeat(left(a, 1), 900);", 2,
       "ORA-20000: " + std::string(900, 'a')}};
  for (const auto& [head, body, given, told] : rows) {
    link.ExecuteNative("DROP ROUTINE IF EXISTS f; CREATE FUNCTION f(" + std::string(head) +
                       ") RETURNS text LANGUAGE plpgsql AS $$BEGIN " + body + " END$$");
    const RoutineCall call{"f", {}, std::vector<RoutineParameter>(given, {"abc", "string", ""})};
    Variant result;
    const auto failure = FailureIn([&] { result = link.Call(call).result; });
    const std::string text = failure ? failure->Description() : result.Get<std::string>();
    EXPECT_EQ(text.substr(0, told.size()), told) << body;
  }
}

TEST_F(OdbcValues, ATextForADateGoesByTheFormatOfTheSession) {
  odbc::OdbcLink link{ProfileSet(site->Profile(), {"", "", "YYYY/MM/DD"})};
  link.ExecuteNative(
      "CREATE PROCEDURE p(INOUT d timestamp, t text DEFAULT '') LANGUAGE plpgsql AS "
      "$$BEGIN IF t <> to_char(d, 'YYYYMMDD') THEN RAISE '%', d; END IF; END$$");
  const auto call = [&](const char* date) {
    return link.Call({"p", {}, {{date, "string", ""}, {"", "string", ""}}}).outputs[0];
  };
  const auto refused = [&](const auto& action) {
    return FailureIn(action) ? link.LastError().native_number : 0;
  };
  const Variant day(Date::FromCivil({2024, 3, 5, 0, 0, 0}));
  EXPECT_EQ(call("2024/3/5"), day);
  EXPECT_EQ(call("2024-03-05 00:00:00"), day);
  EXPECT_EQ(refused([&] { call("5-MAR-24"); }), 1841);
  const auto run = [&](const std::string& arguments) {
    return refused([&] { link.Execute("BEGIN p(" + arguments + "); END;", {}); });
  };
  EXPECT_EQ(run("'2024/03/05', '20240305'"), 0);
  EXPECT_EQ(run("t => '20240305', D => '2024-03-05'"), 0);
  EXPECT_EQ(run("DATE '2024-03-05', '20240305'"), 0);
  EXPECT_EQ(run("'05-MAR-24', '20240305'"), 1841);

  // A connection that was read from while the format changed serves no later request.
  auto rows = link.Query("SELECT x.* FROM USER_TAB_COLUMNS x, USER_TAB_COLUMNS y", {});
  link.Execute("ALTER SESSION SET NLS_DATE_FORMAT = 'DD.MM.YYYY'", {});
  rows.reset();
  EXPECT_EQ(call("5.3.2024"), day);
}

TEST_F(OdbcValues, BoundCallsAndArraysOfRowsDoWhatTextDoes) {
  odbc::Connection connection(odbc::PostgresqlEngine(), site->Profile(), {}, odbc::Opening::kSite,
                              std::make_shared<odbc::CancelPoint>());
  const auto add = connection.Find("EA_Client.Add_Common_Entity", 2, 10);
  ASSERT_TRUE(add && add->is_function);
  RowBlock row(1);
  connection.CallBound(*add, {"N'\u00E4", std::nullopt}, 10, row);
  ASSERT_EQ(row.Rows(), 1U);
  const std::string id = std::to_string(row.Cell(0, 0).Get<std::int32_t>());
  EXPECT_EQ(Ask("SELECT Name FROM EA_COMMON_ENTITY WHERE Id = " + id), Variant("N'\u00E4"));

  RowSet rows{"PM_StringTable", {{"Id", "INT"}, {"Ordinal", "INT"}, {"StringData", "STRING"}}, {}};
  for (int i = 1; i <= 1200; ++i) {  // several arrays
    rows.rows.Add("9|" + std::to_string(i) + "|" +
                  (i == 700 ? std::string(EncodedNull()) : EncodePiece("'\u20AC|" + id)));
  }
  const std::string head = "INSERT INTO PM_StringTable (Id, Ordinal, StringData) VALUES ";
  connection.WriteArrays(head, rows, 30);
  EXPECT_EQ(Ask("SELECT COUNT(StringData) FROM PM_StringTable WHERE Id = 9"), Variant(1199));
  EXPECT_EQ(Ask("SELECT StringData FROM PM_StringTable WHERE Id = 9 AND Ordinal = 1200"),
            Variant("'\u20AC|" + id));
}

}  // namespace
}  // namespace sabrel::testing
