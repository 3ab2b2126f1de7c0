// Values, errors, routines and row sets of a Data Server.
#include <limits>
#include <tuple>

#include "sabrel/platform/row_text.h"
#include "sabrel/sql/literals.h"
#include "tests/contract/contract.h"
#include "tests/support/scripted_platform.h"

namespace sabrel::testing {
namespace {

Date Civil(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  return Date::FromCivil({year, month, day, hour, minute, second});
}

TEST_P(Contract, ValuesKeepTheirKindsBothWays) {
  Run("CREATE TABLE KINDS (N NUMBER(20,4), I NUMBER(10), T VARCHAR2(4000), D DATE)");
  const ScriptedPlatform locale;
  const Variant null{Null{}};
  const auto exact = [](double number) {
    return GetParam().exact_numbers_are_decimal ? Variant(Decimal::FromDouble(number))
                                                : Variant(number);
  };
  const std::vector<std::vector<Variant>> rows = {
      {exact(2.5), Variant(7), Variant("it's \u00E4"), Variant(Civil(2024, 3, 9, 17, 5, 59))},
      {exact(-0.0625), Variant(-2147483647 - 1), Variant(" x "), Variant(Civil(100, 1, 1))},
      {exact(0.125), Variant(2147483647), Variant("\r\n"),
       Variant(Civil(9999, 12, 31, 23, 59, 59))},
      {null, null, null, null},
      {exact(1.5), Variant(0), Variant(std::string(3999, 'x') + "\u20AC"),
       Variant(Civil(1899, 12, 29, 6))},
  };
  for (const auto& row : rows) {
    Run("INSERT INTO KINDS (N, I, T, D) VALUES (" + MSabrel::DBArgs(row) + ")");
  }
  for (const auto& row : rows) {
    const std::string where = row[1].IsNull() ? "IS NULL" : "= " + MSabrel::DBArg(row[1]);
    const Outcome outcome = Query("SELECT N, I, T, D FROM KINDS WHERE I " + where);
    ASSERT_EQ(outcome.rows.size(), 1U) << where;
    EXPECT_EQ(outcome.rows[0], row) << where;
    EXPECT_THAT(outcome.columns, ::testing::ElementsAre("N", "I", "T", "D"));
  }
  EXPECT_EQ(Value("SELECT 5000000000 FROM DUAL"), Variant(Decimal(5'000'000'000)));
  EXPECT_EQ(Value("SELECT COUNT(*) FROM KINDS WHERE D < TO_DATE('1900-01-01','YYYY-MM-DD')"),
            Variant(2));
  EXPECT_EQ(Value("SELECT COUNT(*) FROM DUAL WHERE '' IS NULL"), Variant(1));
  EXPECT_EQ(Value("SELECT MAX(D) FROM KINDS"), Variant(Civil(9999, 12, 31, 23, 59, 59)));
  EXPECT_EQ(Value("SELECT NVL(MIN(D), SYSDATE) FROM KINDS WHERE I = 7"), rows[0][3]);
}

TEST_P(Contract, DatesAreCutFormattedAndComputed) {
  const struct {
    const char* expression;
    Variant value;
  } rows[] = {
      {"TRUNC(TO_DATE('2024-03-09 17:05:59','YYYY-MM-DD HH24:MI:SS'),'MI')",
       Variant(Civil(2024, 3, 9, 17, 5))},
      {"TRUNC(TO_DATE('2024-03-09 17:05:59','YYYY-MM-DD HH24:MI:SS'))", Variant(Civil(2024, 3, 9))},
      {"TO_CHAR(TO_DATE('09.03.2024','DD.MM.YYYY'),'YYYY/MM/DD HH24:MI')",
       Variant("2024/03/09 00:00")},
      {"TO_DATE('2024-02-28','YYYY-MM-DD') + 2", Variant(Civil(2024, 3, 1))},
      {"TO_DATE('2024-03-01','YYYY-MM-DD') - 1/24", Variant(Civil(2024, 2, 29, 23))},
      {"NVL(TO_DATE(NULL,'YYYY'), TO_DATE('2024-03-01','YYYY-MM-DD'))", Variant(Civil(2024, 3, 1))},
      {"DECODE(2, 1, 'a', 2, 'b', 'c')", Variant("b")},
      {"NVL(NULL, 'x')", Variant("x")},
      {"UPPER('\u00E4b') || LOWER('\u00C4B')", Variant("\u00C4B\u00E4b")},
      {"LENGTH('\u00E4\U0001F600b')", Variant(3)},
      {"SUBSTR('\u00E4\U0001F600b', 2, 1)", Variant("\U0001F600")},
      {"MOD(7, 3)", Variant(1)},
      {"EXTRACT(MONTH FROM TO_DATE('2024-03-01','YYYY-MM-DD') - 1/24)", Variant(2)},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Value("SELECT " + std::string(row.expression) + " FROM DUAL"), row.value)
        << row.expression;
  }
  const Variant days = Value(
      "SELECT TO_DATE('2024-03-02','YYYY-MM-DD') - TO_DATE('2024-02-28','YYYY-MM-DD') FROM DUAL");
  EXPECT_TRUE(days == Variant(3) || days == Variant(3.0));
  EXPECT_EQ(Value("SELECT COUNT(*) FROM DUAL WHERE SYSDATE - 1 < SYSDATE AND 'a' LIKE 'A'"),
            Variant(0));
}

TEST_P(Contract, TextsAndDatesBecomeEachOtherByTheSessionsFormat) {
  const auto add = [](const std::string& value) {
    return "INSERT INTO DATED (A, D) SELECT 1, " + value;
  };
  Run("CREATE TABLE DATED (A NUMBER(9), D DATE, T VARCHAR2(30), E DATE DEFAULT '01-FEB-99')");
  // A row 1 is changed; its D, or the refusal.
  const std::tuple<const char*, std::string, const char*> changes[] = {
      {"columns", "INSERT INTO DATED (D, A) VALUES ('15.mar.24', 1)", "2024-03-15"},
      {"all columns", "INSERT INTO DATED VALUES (1, ('15 March 24'), '5', NULL)", "2024-03-15"},
      {"put together", "INSERT INTO DATED (A, D) VALUES (1, '15MAR' || 24)", "2024-03-15"},
      {"date", "INSERT INTO DATED (A, D) VALUES (1, DATE '2024-03-15')", "2024-03-15"},
      {"query", add("'15-MAR-2024' FROM DUAL"), "2024-03-15"},
      {"query of texts", add("T FROM DATED WHERE ROWNUM <= 1"), "1950-03-16"},
      {"branch", add("CASE WHEN 1 = 1 THEN '15-MAR-24' END FROM DUAL"), "2024-03-15"},
      {"union", add("'15-MAR-24' FROM DUAL UNION SELECT 1, NULL FROM DUAL"), "2024-03-15"},
      {"update", "UPDATE DATED SET A = '1', D = '15-MAR-24'", "2024-03-15"},
      {"by a query", "UPDATE DATED SET A = 1, (T, D) = (SELECT '5', T FROM DUAL)", "1950-03-16"},
      {"default", "UPDATE DATED SET A = 1, D = E", "1999-02-01"},
      {"ISO", add("'2024-03-15' FROM DUAL"), "1861"},
      {"digits", "UPDATE DATED SET D = '150324'", "1861"},
      {"one digit and no blank", "UPDATE DATED SET D = '5MAR24'", "1861"},
      {"month in digits", "UPDATE DATED SET D = '15-03-24'", "1843"},
      {"no digits", "INSERT INTO DATED (D) VALUES ('now')", "1858"},
      {"no such day", "UPDATE DATED SET D = '31-APR-24'", "1839"},
      {"no year", "UPDATE DATED SET D = '15-MAR'", "1840"},
      {"time", "UPDATE DATED SET D = '15-MAR-24 10:00'", "1830"},
      {"dates united with a text", add("D FROM DATED UNION SELECT 1, '15-MAR-24' FROM DUAL"), ""},
      {"branches of both", add("CASE WHEN A = 0 THEN D ELSE '15-MAR-24' END FROM DATED"), ""},
  };
  for (const auto& [name, change, outcome] : changes) {
    Run("DELETE FROM DATED");
    Run("INSERT INTO DATED (A, D, T) VALUES ('0', '31-DEC-49', '16-mar-1950')");
    const std::int32_t native = Execute(change).native;
    const Variant stored =
        native != 0 ? Variant(std::to_string(native))
                    : Value("SELECT TO_CHAR(MAX(D),'YYYY-MM-DD') FROM DATED WHERE A = 1");
    EXPECT_TRUE(*outcome == 0 || stored == Variant(outcome)) << name << ": " << native;
    EXPECT_NE(stored, Variant("2015-03-24")) << name;
  }
}

TEST_P(Contract, ASessionsDateFormatIsThatOfAllItsStatements) {
  Run("CREATE TABLE DATED (D DATE, T VARCHAR2(30))");
  Run("INSERT INTO DATED (D) VALUES ('15-MAR-24')");
  const std::pair<const char*, const char*> texts[] = {
      {"TO_CHAR(D)", "15-MAR-24"},
      {"'x' || D", "x15-MAR-24"},
      {"CAST(D AS VARCHAR2(20))", "15-MAR-24"},
      {"LOWER(D) || LENGTH(D) || SUBSTR(D, 4, 3) || LPAD(D, 10, '*')", "15-mar-249MAR*15-MAR-24"},
      {"TO_CHAR(TO_DATE('1-apr-1950'), 'YYYY-MM-DD')", "1950-04-01"},
      {"TO_CHAR(ADD_MONTHS('29-FEB-24', 12), 'FMDD.MM.RR')", "28.2.25"},
      {"TO_CHAR(NVL(D, '1-JAN-00'), 'YYYY')", "2024"},
      {"DECODE(D, '15-MAR-24', 'same', 'other')", "same"},
  };
  for (const auto& [expression, text] : texts) {
    EXPECT_EQ(Value("SELECT " + std::string(expression) + " FROM DATED"), Variant(text))
        << expression;
  }
  const auto write = [&](const char* date) {
    const auto writer = session->MakeRowSetWriter();
    writer->Table("DATED");
    writer->DeclareColumn("D", "STRING");
    writer->AddRow(date);
    return Tried([&](Outcome&) { writer->Submit(); }).native;
  };
  EXPECT_EQ(write("17-MAR-24"), 0);
  EXPECT_EQ(write("2015-03-24"), 1861);
  EXPECT_EQ(Value("SELECT MAX(D) FROM DATED"), Variant(Civil(2024, 3, 17)));

  EXPECT_EQ(Execute("ALTER SESSION SET NLS_DATE_FORMAT = 'YYYY\"y'").native, 1821);
  EXPECT_EQ(Execute("ALTER SESSION SET NLS_TERRITORY = 'GERMANY'").native, 2248);
  Run("ALTER SESSION SET NLS_DATE_FORMAT = 'DD.MM.YYYY \"$$''\"HH24'");
  Run("UPDATE DATED SET D = '16.03.2024 $$''05'");
  EXPECT_EQ(Value("SELECT MAX('x' || D) FROM DATED"), Variant("x16.03.2024 $$'05"));
  EXPECT_EQ(Execute("UPDATE DATED SET D = '2024-03-15'").native, 1843);
}

TEST_P(Contract, RefusalsCarryOraclesNumbers) {
  Run("CREATE TABLE PARENT (ID NUMBER(10) PRIMARY KEY)");
  Run("CREATE TABLE CHILD (ID NUMBER(10) NOT NULL UNIQUE, P NUMBER(10) REFERENCES PARENT (ID), T "
      "VARCHAR2(3) CHECK (T <> 'bad'), D DATE)");
  Run("INSERT INTO PARENT (ID) VALUES (1)");
  Run("INSERT INTO CHILD (ID, P) VALUES (1, 1)");
  const std::pair<std::string, std::int32_t> rows[] = {
      {"INSERT INTO CHILD (ID) VALUES (1)", 1},
      {"INSERT INTO CHILD (ID, P) VALUES (2, 99)", 2291},
      {"UPDATE CHILD SET P = 99", 2291},
      {"DELETE FROM PARENT", 2292},
      {"TRUNCATE TABLE PARENT", 2266},
      {"ROLLBACK", 3001},
      {"UPDATE PARENT SET ID = 5", 2292},
      {"INSERT INTO CHILD (ID) VALUES (NULL)", 1400},
      {"INSERT INTO CHILD (ID, T) VALUES (3, 'bad')", 2290},
      {"INSERT INTO CHILD (ID, T) VALUES (3, 'long')", 12899},
      {"INSERT INTO CHILD (ID) VALUES ('x')", 1722},
      {"INSERT INTO CHILD (ID, D) VALUES (3, TO_DATE('2024-99','YYYY-MM'))", 1843},
      {"DELETE FROM " + GetParam().unknown_table, 942},
      {"UPDATE CHILD SET NOSUCH = 1", 904},
      {"NONSENSE", 900},
      {"BEGIN NO_SUCH_ROUTINE( 1 ); END;", 6550},
      {"INSERT INTO PARENT (ID) VALUES (7); DELETE FROM CHILD", 911},
      {std::string("DELETE FROM CHILD WHERE T = 'a\0b'", 33), 911},
      {"DELETE FROM CHILD WHERE T = '\xFF'", 911},
  };
  for (const auto& [sql, native] : rows) {
    EXPECT_EQ(Execute(sql).native, native) << sql << "\n" << session->LastDatabaseError().message;
  }
  EXPECT_EQ(Query("SELECT * FROM " + GetParam().unknown_table).native, 942);
  EXPECT_EQ(Query("SELECT NOSUCH FROM CHILD").native, 904);
  EXPECT_EQ(Value("SELECT COUNT(*) FROM CHILD"), Variant(1))
      << "a refused statement leaves nothing";
  EXPECT_EQ(Value("SELECT COUNT(*) FROM PARENT"), Variant(1));
}

TEST_P(Contract, RoutinesTakeAndGiveByPosition) {
  const auto call = [&](const char* name,
                        std::vector<std::pair<std::string, std::string>> parameters) {
    const auto made = session->MakeProcedureCall();
    made->ProcedureName(name);
    for (const auto& [value, type] : parameters) made->AppendParameter(value, type, "");
    return made;
  };
  const auto add = call("EA_Client.Add_Common_Entity",
                        {{"", "integer"}, {"N'\u00E4", "string"}, {"", "integer"}});
  static_cast<void>(add->Execute());
  const Variant id = add->ParameterValue(0);
  ASSERT_EQ(id.kind(), VariantKind::kInt32);
  EXPECT_EQ(add->ParameterValue(1), Variant("N'\u00E4")) << "an in-argument reads as appended";
  EXPECT_TRUE(add->ParameterValue(2).IsNull()) << "an empty one as null";
  const auto without_position =
      call("EA_Client.Add_Common_Entity", {{"N2", "string"}, {"", "integer"}});
  EXPECT_EQ(without_position->Execute(), Variant(id.Get<std::int32_t>() + 1));

  const auto scenario = call("ZR_Query.CreateFQuery", {{"1", "integer"}, {"1", "integer"}});
  EXPECT_TRUE(scenario->Execute().IsNull()) << "a procedure yields nothing";
  EXPECT_EQ(scenario->ParameterValue(0), Variant("1"));
  EXPECT_EQ(scenario->ParameterValue(1).kind(), VariantKind::kInt32)
      << "an in/out argument reads as changed";

  const auto mail = call("check_smtp_val", {{"", "integer"}, {"", "string"}});
  EXPECT_EQ(mail->Execute().kind(), VariantKind::kInt32);
  EXPECT_EQ(mail->ParameterValue(0).kind(), VariantKind::kInt32);

  const auto refused = [&](const std::shared_ptr<ProcedureCall>& made) {
    return Tried([&](Outcome&) { static_cast<void>(made->Execute()); }).native;
  };
  EXPECT_EQ(refused(call("NO.SUCH", {})), 6550);
  EXPECT_EQ(refused(call("EA_Client.Remove_Common_Entity", {})), 6550);
  EXPECT_EQ(
      refused(call("EA_Client.Reparent_Common_Entity", {{"1", "integer"}, {"-99", "integer"}})),
      2291);
  EXPECT_EQ(refused(call("EA_FindOrCreateUser",
                         {{"a\xFF", "string"}, {"p", "string"}, {"FALSE", "string"}})),
            911);
}

TEST_P(Contract, ARowSetIsWrittenWholeOrNotAtAll) {
  const auto write = [&](const std::vector<std::string>& rows) {
    const auto writer = session->MakeRowSetWriter();
    writer->Table("PM_StringTable");
    writer->DeclareColumn("Id", "INT");
    writer->DeclareColumn("Ordinal", "INT");
    writer->DeclareColumn("StringData", "STRING");
    for (const std::string& row : rows) writer->AddRow(row);
    return Tried([&](Outcome&) { writer->Submit(); }).native;
  };
  const std::string nasty = "a|b\r\n'\\ \u00E4";
  EXPECT_EQ(write({"9|1|" + EncodePiece(nasty), "9|2|" + std::string(EncodedNull()), "9|3|x"}), 0);
  const Outcome back = Query("SELECT StringData FROM PM_StringTable WHERE Id = 9 ORDER BY Ordinal");
  ASSERT_EQ(back.rows.size(), 3U);
  EXPECT_EQ(back.rows[0][0], Variant(nasty));
  EXPECT_TRUE(back.rows[1][0].IsNull());
  EXPECT_EQ(write({}), 0);
  EXPECT_EQ(write({"10|1|a", "10|x|b"}), 1722);
  EXPECT_EQ(write({"10|1|a", "10|2|" + std::string(4001, 'x')}), 12899);
  EXPECT_EQ(write({"10|1|a", "10|2|\xFF"}), 911);
  EXPECT_EQ(Value("SELECT COUNT(*) FROM PM_StringTable WHERE Id = 10"), Variant(0));
}

TEST_P(Contract, ALargeResultIsReadInBlocksWhileOtherStatementsRun) {
  for (int i = 1; i <= 60; ++i) {
    Run("INSERT INTO PM_StringTable (Id, Ordinal, StringData) VALUES (10," + std::to_string(i) +
        ",'" + std::string(3000, 'x') + "')");
  }
  Run("INSERT INTO PM_StringTable (Id, Ordinal, StringData) SELECT 11, A.Ordinal * 100 + "
      "B.Ordinal, A.StringData FROM PM_StringTable A, PM_StringTable B WHERE A.Id = 10 AND B.Id = "
      "10");
  const auto rows = session->MakeRecordset();
  rows->Open("SELECT Ordinal, StringData FROM PM_StringTable WHERE Id = 11", "", 0, "", "", 60);
  int read = 0;
  for (; !rows->EndOfFile(); rows->MoveNext(), ++read) {
    if (read == 10) {
      Run("INSERT INTO PM_StringTable (Id, Ordinal, StringData) VALUES (12,1,'y')");
      EXPECT_EQ(Execute("INSERT INTO NO_SUCH (X) VALUES (1)").native, 942);
      session->ShutDown();
    }
    ASSERT_EQ(rows->Fields().Item("StringData").Value().Get<std::string>().size(), 3000U);
  }
  EXPECT_EQ(read, 3600);
  EXPECT_EQ(Value("SELECT COUNT(*) FROM PM_StringTable WHERE Id = 12"), Variant(1));
}

TEST_P(Contract, AddressesAreProfilesAndTheirSettings) {
  const auto open = [&](const char* host, std::int32_t port) {
    return Tried([&](Outcome&) {
      session->MakeRecordset()->Open("SELECT 1 FROM DUAL", host, port, "", "", 1);
    });
  };
  EXPECT_EQ(open("", 0).connection, 0);
  EXPECT_EQ(open("no-such-host.invalid", 5001).connection, 31);
}

}  // namespace
}  // namespace sabrel::testing
