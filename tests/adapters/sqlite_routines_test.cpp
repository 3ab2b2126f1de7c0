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
      {"no row assigns nothing", "PKG.ADD_T", {"i:", "s:z", "i:"}, "null|null|'z'|''"},
      {"in and out", "SWAP", {"s:a", "i:", "i:21"}, "null|'was a'|42|'21'"},
      {"text for a number", "SWAP", {"s:a", "i:", "i:x"}, "ORA-6502"},
      {"two too many for a function", "PKG.ADD_T", {"i:", "i:", "s:a", "i:1"}, "ORA-6550"},
  };
  for (const auto& [name, routine, parameters, outcome] : rows) {
    EXPECT_EQ(Call(routine, parameters), outcome) << name;
  }
  EXPECT_EQ(Ask("SELECT ID, NAME FROM T ORDER BY ID"), "10|'x';11|'z'");
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

}  // namespace
}  // namespace sabrel::testing
