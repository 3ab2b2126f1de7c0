// Stored routines, procedure calls, blocks, the dictionary and row sets.
#include "tests/adapters/sqlite_site.h"

namespace sabrel::testing {
namespace {

class SqliteRoutines : public SiteTest {
 protected:
  void SetUp() override {
    Make({
        "CREATE TABLE T (ID NUMBER(10) PRIMARY KEY, NAME VARCHAR2(20), D DATE)",
        "CREATE SEQUENCE T_SQ START WITH 10",
        "CREATE FUNCTION PKG.ADD_T(sName VARCHAR2, nParent NUMBER) RETURN NUMBER IS BEGIN"
        " SELECT T_SQ.NEXTVAL AS new_id FROM DUAL;"
        " INSERT INTO T (ID, NAME) VALUES (:new_id, :sName);"
        " SELECT :new_id AS return_value FROM DUAL WHERE :nParent IS NOT NULL; END;",
        "CREATE PROCEDURE SWAP(a IN OUT VARCHAR2, b OUT NUMBER, c NUMBER) IS BEGIN"
        " SELECT 'was ' || :a AS A, :c * 2 AS b FROM DUAL; END;",
        "CREATE FUNCTION DAY_OF(d DATE) RETURN VARCHAR2 IS BEGIN"
        " SELECT 1 + TRUNC(:d) AS return_value FROM DUAL; END;",
        "CREATE FUNCTION LAST_D RETURN DATE IS BEGIN"
        " SELECT MAX(D) AS return_value FROM T; END;",
    });
  }

  /// Calls with "type:value" parameters; result and every parameter afterwards.
  std::string Call(const char* name, const std::vector<std::string>& parameters) {
    return Tried([&] {
      const auto call = link->MakeProcedureCall();
      call->ProcedureName(name);
      for (const std::string& one : parameters) {
        call->AppendParameter(one.substr(2), one[0] == 'i' ? "integer" : "string", "");
      }
      std::string text = Shown(call->Execute());
      for (std::size_t i = 0; i < parameters.size(); ++i) {
        text += "|" + Shown(call->ParameterValue(static_cast<std::int32_t>(i)));
      }
      return text;
    });
  }
};

TEST_F(SqliteRoutines, CallsTakeAndGiveValues) {
  const std::tuple<const char*, const char*, std::vector<std::string>, const char*> rows[] = {
      {"result position", "pkg.Add_T", {"i:", "s:x", "i:1"}, "10|10|'x'|'1'"},
      {"no row assigns nothing", "PKG.ADD_T", {"i:", "s:z", "i:"}, "null|null|'z'|null"},
      {"in and out", "SWAP", {"s:a", "i:", "i:21"}, "null|'was a'|42|'21'"},
      {"text for a number", "SWAP", {"s:a", "i:", "i:x"}, "ORA-6502"},
      {"date", "DAY_OF", {"s:15-MAR-24"}, "'16-MAR-24'|'15-MAR-24'"},
      {"date of another form",
       "DAY_OF",
       {"s:2024-03-15 23:00:00"},
       "'16-MAR-24'|'2024-03-15 23:00:00'"},
      {"text for a date", "DAY_OF", {"s:15.03.24"}, "ORA-1843"},
      {"two too many for a function", "PKG.ADD_T", {"i:", "i:", "s:a", "i:1"}, "ORA-6550"},
  };
  for (const auto& [name, routine, parameters, outcome] : rows) {
    EXPECT_EQ(Call(routine, parameters), outcome) << name;
  }
  EXPECT_EQ(Ask("SELECT ID, NAME FROM T ORDER BY ID"), "10|'x';11|'z'");
}

TEST_F(SqliteRoutines, EveryTypeOfNumbersTakesNumbersOnly) {
  for (const std::string type : {"NUMBER", "DECIMAL", "DEC", "INT", "SMALLINT", "REAL", "FLOAT",
                                 "BINARY_DOUBLE", "BINARY_FLOAT", "DOUBLE PRECISION"}) {
    ASSERT_EQ(Do("CREATE TABLE N (A " + type + ")"), "") << type;
    EXPECT_EQ(Do("INSERT INTO N VALUES ('x')"), "ORA-1722") << type;
    EXPECT_EQ(Do("INSERT INTO N VALUES (SYSDATE)"), "ORA-932") << type;
    EXPECT_EQ(Do("DROP TABLE N"), "") << type;
  }
  for (const std::string type : {"number", "DECIMAL", "REAL", "BINARY_DOUBLE", "PLS_INTEGER"}) {
    ASSERT_EQ(Do("CREATE OR REPLACE PROCEDURE SAME(a IN OUT " + type +
                 ") IS BEGIN SELECT :a AS a FROM DUAL; END;"),
              "");
    EXPECT_EQ(Call("SAME", {"s: 7 "}), "null|7") << type;
    EXPECT_EQ(Call("SAME", {"s:x"}), "ORA-6502") << type;
  }
}

TEST_F(SqliteRoutines, ANewBodyHoldsAtOnceForEveryConnection) {
  EXPECT_EQ(Ask("SELECT LAST_D() FROM DUAL"), "null");
  Asking other(File());
  EXPECT_EQ(other.Ask("SELECT LAST_D() FROM DUAL"), "null");
  EXPECT_EQ(Do("CREATE OR REPLACE FUNCTION LAST_D RETURN NUMBER IS BEGIN"
               " SELECT 7 AS return_value FROM DUAL; END;"),
            "");
  EXPECT_EQ(Ask("SELECT LAST_D() FROM DUAL"), "7");
  EXPECT_EQ(other.Ask("SELECT LAST_D() FROM DUAL"), "7");
  EXPECT_EQ(other.Do("DROP FUNCTION LAST_D"), "");
  EXPECT_EQ(Ask("SELECT LAST_D() FROM DUAL"), "ORA-904");
}

TEST_F(SqliteRoutines, ARoutineKnowsTheColumnsOfATableThatIsMadeLater) {
  ASSERT_EQ(Do("CREATE PROCEDURE KEEP(t VARCHAR2) IS BEGIN INSERT INTO DAYS VALUES (:t); END;"),
            "");
  ASSERT_EQ(Do("CREATE TABLE DAYS (D DATE)"), "");
  EXPECT_EQ(Do("BEGIN KEEP('15-MAR-24'); END;"), "");
  EXPECT_EQ(Ask("SELECT D FROM DAYS"), "date 2024-03-15 00:00:00");
}

TEST_F(SqliteRoutines, AParameterWithoutItsColonIsNamed) {
  const std::string body = "PROCEDURE BARE(x NUMBER) IS BEGIN INSERT INTO LATER VALUES (x); END;";
  const std::string hint = "ORA-00904: invalid identifier: X; in a body a parameter is written :X";
  ASSERT_EQ(Do("CREATE " + body), "") << "its table may be made later";
  ASSERT_EQ(Do("CREATE TABLE LATER (N NUMBER)"), "");
  EXPECT_EQ(Call("BARE", {"i:1"}), "ORA-904");
  EXPECT_EQ(link->LastDatabaseError().message, hint);
  EXPECT_EQ(Do("CREATE OR REPLACE " + body), "ORA-904");
  EXPECT_EQ(link->LastDatabaseError().message, hint);
}

}  // namespace
}  // namespace sabrel::testing
