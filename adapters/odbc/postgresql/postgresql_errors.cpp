#include "adapters/odbc/postgresql/postgresql_errors.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "adapters/odbc/driver_state.h"

namespace sabrel::odbc {
namespace {

// Most specific first: codes, then the classes that start them.
constexpr StateRow kStates[] = {
    {"0A000", {3001, {}}},       // not supported; see NumberByContext
    {"21000", {1427, {}}},       // scalar sub-select with several rows
    {"22001", {12899, {}}},      // too long for its column
    {"22003", {1426, {}}},       // number out of range; see NumberByContext
    {"22007", {1861, {}}},       // no such date format
    {"22008", {1843, {}}},       // date out of range
    {"2200B", {1425, {}}},       // escape character
    {"2200H", {8004, {}}},       // sequence has come to its end
    {"22012", {1476, {}}},       // division by zero
    {"22018", {1722, {}}},       // the driver's own conversion
    {"22019", {1425, {}}},       // escape character
    {"2201B", {12722, {}}},      // regular expression
    {"2201", {1428, {}}},        // argument of a function out of range
    {"22021", {911, {}}},        // character that the encoding does not have
    {"22023", {1428, {}}},       // argument of a function out of range
    {"22025", {1424, {}}},       // character behind the escape character
    {"22P02", {1722, {}}},       // no number
    {"22P05", {12703, {}}},      // character that cannot be converted
    {"22", {6502, {}}},          // other bad values
    {"23001", {2292, {}}},       // child found
    {"23502", {1400, {}}},       // null; see NumberByContext
    {"23503", {2291, {}}},       // foreign key; see NumberOfForeignKey
    {"23505", {1, {}}},          // unique key
    {"23514", {2290, {}}},       // check
    {"23P01", {1, {}}},          // exclusion constraint, of which unique ones are the common kind
    {"23", {2290, {}}},          // other constraints
    {"24", {1001, {}}},          // cursor
    {"25006", {16000, {}}},      // read-only
    {"25P03", {0, kSevered}},    // the server ended an idle session
    {"25P04", {0, kSevered}},    // the server ended a long transaction
    {"25", {1453, {}}},          // wrong place in a transaction
    {"26", {1003, {}}},          // no such prepared statement
    {"28", {1017, {}}},          // login
    {"2BP01", {2449, {}}},       // others depend on it
    {"2D", {14552, {}}},         // COMMIT inside a statement
    {"2F005", {6503, {}}},       // a function without RETURN
    {"2F", {14551, {}}},         // a function that may not write
    {"34", {1001, {}}},          // cursor
    {"38", {6510, {}}},          // exception in a routine
    {"39", {6510, {}}},          // exception in a routine
    {"3B", {1086, {}}},          // savepoint
    {"3D000", {12514, {}}},      // no such database
    {"3F000", {904, {}}},        // no such schema, which is a package here
    {"40001", {8177, {}}},       // cannot serialize
    {"40P01", {60, {}}},         // deadlock
    {"40", {2091, {}}},          // rolled back
    {"42501", {1031, {}}},       // privileges
    {"42601", {900, {}}},        // syntax
    {"42622", {972, {}}},        // name too long
    {"42701", {957, {}}},        // column twice
    {"42702", {918, {}}},        // ambiguous column
    {"42703", {904, {}}},        // no such column
    {"42704", {4043, {}}},       // no such object
    {"42710", {955, {}}},        // name in use
    {"42712", {918, {}}},        // table twice
    {"42723", {955, {}}},        // name in use
    {"42725", {6553, {}}},       // several routines fit
    {"42803", {979, {}}},        // GROUP BY
    {"42804", {932, {}}},        // types
    {"42809", {4044, {}}},       // a procedure where a function is due
    {"42830", {2270, {}}},       // foreign key without a key
    {"42846", {932, {}}},        // types
    {"42883", {904, {}}},        // no such function
    {"428C9", {32795, {}}},      // identity column
    {"42P01", {942, {}}},        // no such table
    {"42P02", {1008, {}}},       // no such parameter
    {"42P04", {1501, {}}},       // database's name in use
    {"42P06", {1920, {}}},       // schema's name in use
    {"42P07", {955, {}}},        // name in use
    {"42P08", {932, {}}},        // types
    {"42P09", {918, {}}},        // ambiguous name
    {"42P10", {1785, {}}},       // ORDER BY
    {"42P13", {6550, {}}},       // routine's definition
    {"42P16", {2260, {}}},       // second primary key; see NumberByContext
    {"42P18", {932, {}}},        // types
    {"42P20", {30483, {}}},      // window function
    {"42", {900, {}}},           // other bad statements
    {"44", {1402, {}}},          // WITH CHECK OPTION
    {"53100", {1653, {}}},       // disk full
    {"53300", {18, {}}},         // too many sessions
    {"53", {4030, {}}},          // memory
    {"54001", {36, {}}},         // nested too deeply
    {"54011", {1792, {}}},       // too many columns
    {"54023", {939, {}}},        // too many arguments
    {"54", {1450, {}}},          // a limit on rows and keys
    {"55000", {1732, {}}},       // view that cannot be written to; see NumberByContext
    {"55P02", {2095, {}}},       // setting cannot be changed
    {"55", {54, {}}},            // locked or in use
    {"57014", {1013, {}}},       // cancelled
    {"57", {0, kSevered}},       // the server is going down, or has ended the session
    {"58", {1115, {}}},          // files
    {"72000", {1555, {}}},       // snapshot too old
    {"HV", {28500, {}}},         // foreign data
    {"P0001", {20000, {}}},      // RAISE without a code
    {"P0002", {1403, {}}},       // no row
    {"P0003", {1422, {}}},       // several rows
    {"P0", {6510, {}}},          // exception in a routine
    {"XX001", {1578, {}}},       // damaged table
    {"XX002", {1578, {}}},       // damaged index
    {"XX", {kUndescribed, {}}},  // fault of the server itself
};

/// The digits of `text` as a number; 0 when they are none.
std::int32_t NumberOf(std::string_view text) {
  std::int32_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stopped == end && number > 0 ? number : 0;
}

/// The number that a state of our own server functions carries; 0 for any other state.
std::int32_t CarriedNumber(std::string_view state) {
  if (state.size() != 5) return 0;
  if (state.front() == 'N') return NumberOf(state.substr(1));
  return state.starts_with("20") ? NumberOf(state) : 0;
}

/// How many names the server quotes in its first line; its languages quote in their own ways.
std::ptrdiff_t QuotedNames(std::string_view line) {
  std::ptrdiff_t names = std::count(line.begin(), line.end(), '"') / 2;
  for (const std::string_view opening : {"«", "„", "「"}) {
    for (std::size_t at = line.find(opening); at != std::string_view::npos;
         at = line.find(opening, at + opening.size())) {
      ++names;
    }
  }
  return names;
}

bool Updates(Verb verb) { return verb == Verb::kUpdate || verb == Verb::kUpdateOfReference; }

/// A missing parent (2291) is told with two names, the table's and the constraint's; a child that
/// is still there (2292) with the child's table as the third.
std::int32_t NumberOfForeignKey(std::string_view message, Verb verb) {
  constexpr std::int32_t kNoParent = 2291;
  constexpr std::int32_t kChildFound = 2292;
  const std::string_view line = message.substr(0, message.find('\n'));
  if (line.find("insert or update on table") != std::string_view::npos) return kNoParent;
  if (line.find("update or delete on table") != std::string_view::npos) return kChildFound;
  const std::ptrdiff_t names = QuotedNames(line);
  if (names == 2) return kNoParent;
  if (names == 3) return kChildFound;
  return verb == Verb::kDelete || verb == Verb::kUpdate ? kChildFound : kNoParent;
}

/// What the native numbers tell apart and the state alone does not; 0 where it does.
std::int32_t NumberByContext(const Diagnosis& diagnosis, Verb verb) {
  if (diagnosis.state == "23503") return NumberOfForeignKey(diagnosis.message, verb);
  if (diagnosis.state == "23502" && Updates(verb)) return 1407;
  if (diagnosis.state == "22003" && (verb == Verb::kInsert || Updates(verb))) return 1438;
  // One state for a sequence not yet drawn and for a view that cannot be written to.
  if (diagnosis.state == "55000" && diagnosis.message.find("currval") != std::string::npos) {
    return 8002;
  }
  // A view that is replaced keeps its columns.
  if (diagnosis.state == "42P16" && diagnosis.message.find("view") != std::string::npos) return 955;
  // Where the server's messages are in English; elsewhere it stays "not supported".
  if (diagnosis.state == "0A000" && diagnosis.message.starts_with("cannot truncate a table")) {
    return 2266;
  }
  return 0;
}

struct LoginRow {
  /// What the server's sentence starts with and how it ends; names stand between.
  std::string_view start;
  std::string_view end;
  std::int32_t number;
};

constexpr LoginRow kLogins[] = {
    {"database \"", "does not exist", 12514},
    {"database \"", "is not currently accepting connections", 12528},
    {"role \"", "does not exist", 1017},
    {"role \"", "is not permitted to log in", 1045},
    {"permission denied for database", "", 1045},
    {"too many connections", "", 18},
    {"sorry, too many clients", "", 18},
    {"remaining connection slots", "", 18},
    {"the database system is shutting down", "", 1089},
    {"the database system is ", "", 1033},  // starting up, in recovery, not yet accepting
    {"", "authentication failed for user", 1017},
};

/// The number that the server's sentence behind "FATAL:" has; 0 for none.
std::int32_t NumberOfLogin(std::string_view sentence) {
  for (const LoginRow& row : kLogins) {
    if (sentence.starts_with(row.start) && sentence.find(row.end) != std::string_view::npos) {
      return row.number;
    }
  }
  return 0;
}

}  // namespace

Meaning PostgresqlMeaningOf(const Diagnosis& diagnosis, Verb verb) {
  if (const std::int32_t number = CarriedNumber(diagnosis.state)) return {number, {}};
  if (const std::int32_t number = NumberByContext(diagnosis, verb)) return {number, {}};
  if (const auto meaning = FindState(kStates, diagnosis.state)) return *meaning;
  return FindState(kDriverStates, diagnosis.state).value_or(Meaning{kUndescribed, {}});
}

std::optional<Meaning> PostgresqlMeaningOfRefusedLogin(const Diagnosis& diagnosis) {
  constexpr std::string_view kFatal = "FATAL:  ";
  const std::string_view text = diagnosis.message;
  // One line for each address that was asked.
  for (std::size_t at = text.find(kFatal); at != std::string_view::npos;
       at = text.find(kFatal, at + 1)) {
    const std::string_view rest = text.substr(at + kFatal.size());
    if (const auto number = NumberOfLogin(rest.substr(0, rest.find('\n')))) {
      return Meaning{number, {}};
    }
  }
  // The same in every language of the server and of its client library.
  for (const std::string_view word : {"pg_hba.conf", "fe_sendauth: "}) {
    if (text.find(word) != std::string_view::npos) return Meaning{1017, {}};
  }
  return std::nullopt;
}

}  // namespace sabrel::odbc
