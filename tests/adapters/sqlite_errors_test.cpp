// Every native number that the embedded server reports, provoked for real.
#include "tests/adapters/sqlite_site.h"

namespace sabrel::testing {
namespace {

class SqliteErrors : public SiteTest {
 protected:
  void SetUp() override {
    Make({
        "CREATE TABLE P (ID INTEGER PRIMARY KEY, NAME VARCHAR2(5))",
        "CREATE TABLE C (ID NUMBER(10) PRIMARY KEY, P_ID NUMBER(10) REFERENCES P(ID),"
        " TXT VARCHAR2(5) NOT NULL, N NUMBER(5,2), D DATE,"
        " YN CHAR(1) CHECK (YN IN ('Y','N')))",
        "CREATE TABLE Q (ID NUMBER(10) PRIMARY KEY)",
        "CREATE TABLE R (Q_ID NUMBER(10) REFERENCES Q(ID) ON DELETE RESTRICT)",
        "CREATE TABLE L (Q_ID NUMBER(10) REFERENCES Q(ID) DEFERRABLE INITIALLY DEFERRED)",
        "INSERT INTO Q SELECT 1 FROM DUAL UNION SELECT 2 FROM DUAL",
        "INSERT INTO R VALUES (1)",
        "INSERT INTO L VALUES (2)",
        "CREATE VIEW V AS SELECT ID FROM P",
        "CREATE SEQUENCE S",
        "CREATE SEQUENCE LAST_S START WITH 9223372036854775807",
        "CREATE FUNCTION WRITING(a NUMBER) RETURN NUMBER IS BEGIN"
        " INSERT INTO P (ID) VALUES (:a + 1000); SELECT :a AS return_value FROM DUAL; END;",
        "INSERT INTO P VALUES (1,'one')",
        "INSERT INTO C (ID, P_ID, TXT) VALUES (1,1,'c')",
        "CREATE PROCEDURE DELETE_P(a NUMBER) IS BEGIN DELETE FROM P WHERE ID = :a; END;",
        "CREATE PROCEDURE OUT_P(a OUT NUMBER) IS BEGIN SELECT 1 AS a FROM DUAL; END;",
        "CREATE FUNCTION OUT_F(a OUT NUMBER) RETURN NUMBER IS BEGIN"
        " SELECT 1 AS a, 2 AS return_value FROM DUAL; END;",
        "CREATE FUNCTION DEEPER(a NUMBER) RETURN NUMBER IS BEGIN"
        " SELECT DEEPER(:a) AS return_value FROM DUAL; END;",
        "CREATE FUNCTION CHECKED(a NUMBER) RETURN NUMBER IS BEGIN"
        " SELECT RAISE_APPLICATION_ERROR(-20011,'User Not Found') FROM DUAL"
        " WHERE NOT EXISTS (SELECT 1 FROM P WHERE ID = :a);"
        " SELECT :a AS return_value FROM DUAL; END;",
    });
  }
};

TEST_F(SqliteErrors, EachFaultHasItsNativeNumber) {
  constexpr std::tuple<const char*, int, const char*> kRows[] = {
      {"cast to what is no type", 902, "SELECT CAST(ID AS NONSENSE) FROM P WHERE 1 = 0"},
      {"cast without its width", 906, "SELECT CAST(ID AS VARCHAR2) FROM P"},
      {"cast of a date", 932, "SELECT CAST(SYSDATE AS NUMBER) FROM DUAL"},
      {"cast out of all digits", 1727, "SELECT CAST(1 AS NUMBER(39)) FROM DUAL"},
      {"cast too narrow for a number", 25137, "SELECT CAST(12345 AS VARCHAR2(3)) FROM DUAL"},
      {"infinite product", 1426, "SELECT ID*1e308*10 FROM P"},
      {"infinite value stored", 1426, "INSERT INTO P (ID) VALUES (1e308*10)"},
      {"logarithm to base 0", 1428, "SELECT LOG(0,5) FROM DUAL"},
      {"months beyond all years", 1841,
       "SELECT ADD_MONTHS(SYSDATE,-9223372036854775808) FROM DUAL"},
      {"character beyond 32 bits", 1428, "SELECT CHR(4294967361) FROM DUAL"},
      {"escape at the end", 1424, "SELECT 1 FROM DUAL WHERE 'zz' LIKE 'a!' ESCAPE '!'"},
      {"escape before nothing special", 1424,
       "SELECT 1 FROM DUAL WHERE 'ab' LIKE 'a!b' ESCAPE '!'"},
      {"calls nested too deep", 36, "SELECT DEEPER(1) FROM DUAL"},
      {"settings of the engine", 900, "PRAGMA foreign_keys=OFF"},
      {"quoted name is no text", 904, "SELECT \"nope\" FROM P"},
      {"the server's own table", 942, "DELETE FROM \"SABREL_ROUTINE\""},
      {"own table behind a name", 942, "SELECT 1 FROM \"x'y\", sabrel_body"},
      {"the engine's own table", 942, "SELECT * FROM sqlite_schema"},
      {"too few values", 947, "INSERT INTO P VALUES (2)"},
      {"routine exists", 955, "CREATE PROCEDURE OUT_P IS BEGIN DELETE FROM P; END;"},
      {"date and date", 975, "SELECT SYSDATE + SYSDATE FROM DUAL"},
      {"null in a key", 1400, "INSERT INTO P (NAME) VALUES ('x')"},
      {"value beyond all bounds", 1489,
       "SELECT REPLACE(LPAD('a',32767,'a'),'a',LPAD('b',32767,'b')) FROM DUAL"},
      {"division by zero", 1476, "SELECT 1/0 FROM DUAL"},
      {"the dictionary by its owner", 1031, "DROP\tVIEW main.user_sequences"},
      {"a view of nothing", 942, "CREATE OR REPLACE VIEW V AS SELECT ID FROM NOWHERE"},
      {"a view in the dictionary's place", 955, "CREATE OR REPLACE VIEW DUAL AS SELECT ID FROM P"},
      {"a view with too many names", 1730, "CREATE OR REPLACE VIEW V (A, B) AS SELECT ID FROM P"},
      {"a view of itself", 1731, "CREATE OR REPLACE VIEW V AS SELECT ID FROM V"},
      {"referenced table", 2449, "DROP TABLE P"},
      {"definition in a body", 6550, "CREATE PROCEDURE D IS BEGIN DROP TABLE P; END;"},
      {"restricted parent", 2292, "DELETE FROM Q WHERE ID = 1"},
      {"child refused at the end", 2291, "UPDATE L SET Q_ID = 9"},
      {"expression for an out argument", 6550, "BEGIN OUT_P( 5 ); END;"},
      {"function as a procedure", 6550, "BEGIN CHECKED( 1 ); END;"},
      {"wrong count in a query", 6553, "SELECT CHECKED(1,2) FROM DUAL"},
      {"out argument in a query", 6572, "SELECT OUT_F(1) FROM DUAL"},
      {"sequence at its end", 8004,
       "BEGIN INSERT INTO P (ID) VALUES (LAST_S.NEXTVAL);"
       " INSERT INTO P (ID) VALUES (LAST_S.NEXTVAL); END;"},
      {"writing while reading", 14551, "SELECT WRITING(ID) FROM P"},
      {"current value too early", 8002, "SELECT S.CURRVAL FROM DUAL"},
      {"raised by a routine", 20011, "SELECT CHECKED(7) FROM DUAL"},
  };
  for (const auto& [name, number, sql] : kRows) {
    EXPECT_EQ(Ask(sql), "ORA-" + std::to_string(number))
        << name << ": " << link->LastDatabaseError().message;
  }
  EXPECT_EQ(Ask("SELECT COUNT(*) FROM P, C"), "1") << "what was refused left nothing behind";
}

TEST_F(SqliteErrors, NamesThatOnlyLookReservedAreTaken) {
  EXPECT_EQ(Ask("SELECT ID AS MYSABREL_COL FROM P"), "1");
  EXPECT_EQ(Ask("SELECT WRITING((SELECT 5 FROM DUAL)), S.NEXTVAL FROM DUAL"), "5|1");
  EXPECT_EQ(Do("CREATE TABLE W (USING NUMBER, COLLATE NUMBER, FOREIGN NUMBER)"), "");
  EXPECT_EQ(Do("INSERT INTO W (USING, COLLATE, FOREIGN) VALUES (1,2,3)"), "");
  EXPECT_EQ(Ask("SELECT USING, COLLATE, FOREIGN FROM W WHERE FOREIGN = 3"), "1|2|3");
}

TEST_F(SqliteErrors, TheErrorTellsWhatAndWhereButNoConstant) {
  EXPECT_EQ(Do("INSERT INTO P VALUES (1,'hush')"), "ORA-1");
  const DatabaseError error = link->LastDatabaseError();
  EXPECT_EQ(error.message, "ORA-00001: unique constraint (P.ID) violated");
  EXPECT_EQ(error.source, "Embedded Data Server");
  EXPECT_EQ(error.originator, File());
  for (const char* sql :
       {"INSERT INTO P VALUES (1,'hush')", "SELECT 'x' 'hush' FROM DUAL",
        "INSERT INTO P VALUES (2,'hush!!')", "SELECT TO_NUMBER('hush') FROM DUAL"}) {
    EXPECT_NE(Do(sql), "");
    const DatabaseError told = link->LastDatabaseError();
    EXPECT_EQ((told.message + told.detail).find("hush"), std::string::npos) << told.message;
  }
}

}  // namespace
}  // namespace sabrel::testing
