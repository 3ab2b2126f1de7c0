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
      "22001 12899 22P02 1722 23001 2292 23000 2290 23P01 1 25P03 -30 25P02 1453 28P01 1017 "
      "28000 1017 3D000 12514 3F000 904 42883 904 42P13 6550 42939 900 53300 18 53100 1653 54001 "
      "36 "
      "55P03 54 57014 1013 57P01 -30 P0001 20000 XX001 1578 08S01 -30 HYT00 -24 HYT01 -23 HY008 "
      "1013 "
      "IM002 -31 01000 -31 HY000 600 N2289 2289 N0000 600 Nxyz1 600 20000 20000 20999 20999 ");
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
