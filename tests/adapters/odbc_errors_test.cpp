// What servers and drivers report, as the numbers and connection codes that callers know.
#include <gtest/gtest.h>

#include <sstream>

#include "adapters/odbc/oracle/oracle_errors.h"
#include "adapters/odbc/postgresql/postgresql_errors.h"

namespace sabrel::odbc {
namespace {

/// A native number, or minus the code of a failed connection; 0 for nothing.
int Told(const std::optional<Meaning>& meaning) {
  if (!meaning) return 0;
  return meaning->connection ? -static_cast<int>(*meaning->connection) : meaning->native_number;
}

TEST(OdbcErrors, EachStateOfPostgresqlHasItsNumber) {
  std::istringstream rows(
      "0A000 3001 21000 1427 22001 12899 22003 1426 22007 1861 22008 1843 2200B 1425 2200H 8004 "
      "22011 1428 22012 1476 22018 1722 22019 1425 2201B 12722 2201F 1428 22021 911 22023 1428 "
      "22025 1424 22P02 1722 22P05 12703 22004 6502 23001 2292 23502 1400 23503 2291 23505 1 "
      "23514 2290 23P01 1 23000 2290 24000 1001 25006 16000 25P03 -30 25P04 -30 25P02 1453 "
      "26000 1003 28P01 1017 28000 1017 2BP01 2449 2D000 14552 2F005 6503 2F003 14551 34000 1001 "
      "38000 6510 39000 6510 3B001 1086 3D000 12514 3F000 904 40001 8177 40P01 60 40002 2091 "
      "42501 1031 42601 900 42622 972 42701 957 42702 918 42703 904 42704 4043 42710 955 "
      "42712 918 42723 955 42725 6553 42803 979 42804 932 42809 4044 42830 2270 42846 932 "
      "42883 904 428C9 32795 42P01 942 42P02 1008 42P04 1501 42P06 1920 42P07 955 42P08 932 "
      "42P09 918 42P10 1785 42P13 6550 42P16 2260 42P18 932 42P20 30483 42939 900 44000 1402 "
      "53100 1653 53200 4030 53300 18 54001 36 54011 1792 54023 939 54000 1450 55000 1732 "
      "55P02 2095 55P03 54 55006 54 57014 1013 57P01 -30 57P02 -30 57P03 -30 58030 1115 "
      "72000 1555 HV000 28500 P0001 20000 P0002 1403 P0003 1422 P0004 6510 XX000 600 XX001 1578 "
      "XX002 1578 08S01 -30 08003 -30 08006 -30 07006 932 07009 1007 07002 1008 HYT00 -24 "
      "HYT01 -23 HY001 4030 HY008 1013 HY013 4030 HYC00 3001 IM001 3001 IM002 -31 01000 -31 HY000 "
      "600 "
      "N2289 2289 N0054 54 N0000 600 Nxyz1 600 20000 20000 20011 20011 20999 20999 ");
  int told = 0;
  for (std::string state; rows >> state >> told;) {
    EXPECT_EQ(Told(PostgresqlMeaningOf({state, 1, "ERROR: x"}, Verb::kOther)), told) << state;
  }
}

TEST(OdbcEngine, DriverNameTellsTheServer) {
  EXPECT_EQ(EngineForDriver("PostgreSQL Unicode"), &PostgresqlEngine());
  EXPECT_EQ(EngineForDriver("/usr/lib/odbc/psqlodbcw.so"), &PostgresqlEngine());
  for (const char* name : {"Oracle 19 ODBC driver", "libsqora.so.19.1", "OraODBC"}) {
    EXPECT_EQ(EngineForDriver(name), &OracleEngine()) << name;
  }
  EXPECT_EQ(EngineForDriver("SQLite3"), nullptr);
}

TEST(OdbcErrors, VerbOrTextDecideWhatOneStateMixes) {
  constexpr std::tuple<const char*, Verb, const char*, int> kRows[] = {
      {"23502", Verb::kUpdateOfReference, "null by update", 1407},
      {"22003", Verb::kInsert, "number too large for a column", 1438},
      {"55000", Verb::kInsert, "currval of sequence \"s\" is not yet", 8002},
      {"42P16", Verb::kOther, "cannot drop columns from view", 955},
      {"23503", Verb::kInsert, "update or delete on table p, foreign key f on table c", 2292},
      {"23503", Verb::kDelete, "Einfügen in „c“ verletzt „f“\nDETAIL: in Tabelle „p“", 2291},
      {"23503", Verb::kInsert, "ERREUR: « p » « f » « c »", 2292},
      {"23503", Verb::kUpdate, "no names", 2292},
      {"23503", Verb::kUpdateOfReference, "no names", 2291}};
  for (const auto& [state, verb, text, told] : kRows) {
    EXPECT_EQ(Told(PostgresqlMeaningOf({state, 1, text}, verb)), told) << text;
  }
}

TEST(OdbcErrors, RefusedLoginIsToldByTheServersSentence) {
  constexpr std::pair<const char*, int> kRows[] = {
      {"FATAL:  password authentication failed for user \"u\"", 1017},
      {"FATAL:  database \"d\" does not exist", 12514},
      {"FATAL:  database \"d\" is not currently accepting connections", 12528},
      {"FATAL:  role \"u\" is not permitted to log in", 1045},
      {"FATAL:  sorry, too many clients already", 18},
      {"FATAL:  the database system is not yet accepting connections", 1033},
      {"FATAL:  the database system is shutting down", 1089},
      {"FATAL:  kein Eintrag in pg_hba.conf für Host", 1017},
      {"fe_sendauth: no password supplied", 1017},
      {"Connection refused", 0}};
  for (const auto& [text, told] : kRows) {
    const std::string lines =
        "\"::1\": FATAL:  unknown\n\"127.0.0.1\": " + std::string(text) + "\n";
    EXPECT_EQ(Told(PostgresqlMeaningOfRefusedLogin({"08001", 101, lines})), told) << text;
  }
}

TEST(OdbcErrors, EachNumberOfOracleIsItselfOrACode) {
  std::istringstream rows(
      "22 -30 28 -30 31 -30 45 -30 378 -30 602 -30 603 -30 609 -30 1012 -30 1041 -30 1043 -30 "
      "1089 -30 1092 -30 2396 -30 3113 -30 3114 -30 3135 -30 12153 -30 12537 -30 12541 -30 "
      "12547 -30 12570 -30 12583 -30 12170 -23 3136 -24 3156 -24 12161 -24 12154 -31 12543 -31 "
      "12545 -31 1013 1013 1 1 -942 942 12514 12514 20011 20011 0 600 ");
  for (int number = 0, told = 0; rows >> number >> told;) {
    EXPECT_EQ(Told(OracleMeaningOf({"HY000", number, "x"})), told) << number;
  }
  EXPECT_EQ(Told(OracleEngine().MeaningOfRefusedLogin({"28000", 1017, "x"})), 1017);
  EXPECT_EQ(Told(OracleEngine().MeaningOfRefusedLogin({"08001", 0, "x"})), 0);
}

}  // namespace
}  // namespace sabrel::odbc
