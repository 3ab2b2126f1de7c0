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
        "CREATE FUNCTION LAST_D RETURN DATE IS BEGIN"
        " SELECT MAX(D) AS return_value FROM T; END;",
        "CREATE PROCEDURE NOTHING IS BEGIN DELETE FROM T WHERE ID < 0; END;",
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
  const struct {
    const char* name;
    const char* routine;
    std::vector<std::string> parameters;
    const char* outcome;
  } rows[] = {
      {"result position", "pkg.Add_T", {"i:", "s:x", "i:1"}, "10|10|'x'|'1'"},
      {"no result position", "PKG.ADD_T", {"s:y", "i:1"}, "11|'y'|'1'"},
      {"no row assigns nothing", "PKG.ADD_T", {"i:", "s:z", "i:"}, "null|null|'z'|''"},
      {"in and out", "SWAP", {"s:a", "i:", "i:21"}, "null|'was a'|42|'21'"},
      {"text that is a number", "SWAP", {"s:a", "i:", "s: 4 "}, "null|'was a'|8|' 4 '"},
      {"no arguments", "NOTHING", {}, "null"},
      {"text for a number", "SWAP", {"s:a", "i:", "i:x"}, "ORA-6502"},
      {"one too few", "SWAP", {"s:a", "i:"}, "ORA-6550"},
      {"one too many for a procedure", "SWAP", {"i:", "s:a", "i:", "i:1"}, "ORA-6550"},
      {"two too many for a function", "PKG.ADD_T", {"i:", "i:", "s:a", "i:1"}, "ORA-6550"},
      {"invalid text", "SWAP", {"s:\xFF", "i:", "i:1"}, "ORA-911"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Call(row.routine, row.parameters), row.outcome) << row.name;
  }
  EXPECT_EQ(Ask("SELECT ID, NAME FROM T ORDER BY ID"), "10|'x';11|'y';12|'z'");
}

TEST_F(SqliteRoutines, QueriesCallFunctionsAndKeepWhatTheyWrote) {
  EXPECT_EQ(Ask("SELECT PKG.ADD_T('x',1), T_SQ.CURRVAL FROM DUAL"), "10|10");
  EXPECT_EQ(Do("BEGIN INSERT INTO T (ID, D) VALUES (1, TO_DATE('2024','YYYY')); NOTHING; END;"),
            "");
  EXPECT_EQ(Ask("SELECT TRUNC(LAST_D(),'YYYY') FROM DUAL"), "date 2024-01-01 00:00:00");
  EXPECT_EQ(Ask("SELECT ID FROM T ORDER BY ID"), "1;10");
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

TEST_F(SqliteRoutines, TheDictionaryShowsTheUsersObjects) {
  ASSERT_EQ(Do("CREATE VIEW Tv AS SELECT NAME FROM T"), "");
  EXPECT_EQ(Ask("SELECT object_name, object_type FROM user_objects ORDER BY object_name"),
            "'LAST_D'|'FUNCTION';'NOTHING'|'PROCEDURE';'PKG'|'PACKAGE';'SWAP'|'PROCEDURE';"
            "'T'|'TABLE';'TV'|'VIEW';'T_SQ'|'SEQUENCE'");
  EXPECT_EQ(Ask("SELECT column_name, data_type, data_length, data_precision, nullable FROM"
                " user_tab_columns WHERE table_name = 'T' ORDER BY column_id"),
            "'ID'|'NUMBER'|22|10|'N';'NAME'|'VARCHAR2'|20|null|'Y';'D'|'DATE'|7|null|'Y'");
  EXPECT_EQ(Ask("SELECT argument_name, position, data_type, in_out FROM user_arguments WHERE"
                " package_name = 'PKG' AND object_name = 'ADD_T' ORDER BY position"),
            "null|0|'NUMBER'|'OUT';'SNAME'|1|'VARCHAR2'|'IN';'NPARENT'|2|'NUMBER'|'IN'");
  EXPECT_EQ(Ask("SELECT sequence_name, last_number FROM user_sequences"), "'T_SQ'|10");
}

}  // namespace
}  // namespace sabrel::testing
