#include "adapters/sqlite/access.h"

#include <sqlite3.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "adapters/shared/dialect/token.h"
#include "adapters/sqlite/connection.h"
#include "adapters/sqlite/failure.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::sqlite {
namespace {

constexpr std::string_view kOwnBeginnings[] = {"sabrel_", "sqlite_", "pragma_"};

template <std::size_t kCount>
bool IsOneOf(std::string_view name, const std::string_view (&names)[kCount]) {
  return std::any_of(std::begin(names), std::end(names),
                     [name](std::string_view one) { return EqualIgnoringCase(name, one); });
}

[[noreturn]] void RefuseTable(std::string_view name, const std::string& why = {}) {
  throw ServerFailure(942, "table or view does not exist: " + std::string(name) + why);
}

/// `reader` is the innermost view or trigger that wants the table; empty for a statement.
void JudgeTable(std::string_view table, std::string_view reader) {
  if (reader.empty() || !IsOwnName(table) || IsOwnName(reader) || IsDictionaryView(reader)) return;
  RefuseTable(table, ", which " + std::string(reader) + " reads");
}

/// Allows the pragmas that this server runs once its connection is set up, that its views read, and
/// that the engine runs itself, for ALTER TABLE and to look at virtual tables.
void JudgePragma(std::string_view name) {
  constexpr std::string_view kAllowed[] = {"table_info",      "table_xinfo", "foreign_key_list",
                                           "integrity_check", "quick_check", "page_size",
                                           "data_version"};
  if (IsOneOf(name, kAllowed)) return;
  throw ServerFailure(1031, "insufficient privileges: PRAGMA " + std::string(name));
}

/// As JudgeTable, where no column is asked for. The engine then names a reader further outside,
/// too, so that all may count the rows of what the dictionary's views read.
void JudgeCount(std::string_view table, std::string_view reader) {
  constexpr std::string_view kCounted[] = {"sabrel_argument", "sabrel_relation",
                                           "sabrel_routine",  "sabrel_sequence",
                                           "sqlite_schema",   "pragma_table_xinfo"};
  if (!IsOneOf(table, kCounted)) JudgeTable(table, reader);
}

/// What the engine asks: an action, two names as it has them, the database, and the innermost view
/// or trigger that leads there.
struct Question {
  int action;
  std::string_view first;
  std::string_view second;
  std::string_view database;
  std::string_view reader;
};

void Judge(Connection& connection, const Question& question) {
  const auto& [action, first, second, database, reader] = question;
  switch (action) {
    case SQLITE_READ:
    case SQLITE_INSERT:
    case SQLITE_UPDATE:
      if (connection.HasVirtualTable(first)) RefuseTable(first, ", which is virtual; drop it");
      if (action == SQLITE_UPDATE && reader.empty()) connection.NoteSetColumn(first, second);
      return action == SQLITE_READ && second.empty() ? JudgeCount(first, reader)
                                                     : JudgeTable(first, reader);
    case SQLITE_DELETE: return JudgeTable(first, reader);
    case SQLITE_PRAGMA: return JudgePragma(first);
    case SQLITE_FUNCTION:
      if (!EqualIgnoringCase(second, "load_extension")) return;
      throw ServerFailure(904, "\"LOAD_EXTENSION\": invalid identifier");
    case SQLITE_CREATE_TABLE:
    case SQLITE_CREATE_VIEW:
      if (database != "temp") return;
      [[fallthrough]];
    case SQLITE_CREATE_TEMP_TABLE:
    case SQLITE_CREATE_TEMP_VIEW:
      throw ServerFailure(1918, "user does not exist: TEMP; nothing temporary can be made");
    case SQLITE_CREATE_VTABLE:
      throw ServerFailure(901, "invalid CREATE command: virtual tables are not supported");
    case SQLITE_ATTACH:
    case SQLITE_DETACH: throw ServerFailure(1031, "insufficient privileges: a site is one file");
    default: return;
  }
}

std::string_view TextOrNothing(const char* text) {
  return text != nullptr ? std::string_view(text) : std::string_view();
}

int Authorize(void* connection, int action, const char* first, const char* second,
              const char* database, const char* reader) noexcept {
  auto& asking = *static_cast<Connection*>(connection);
  try {
    Judge(asking, {action, TextOrNothing(first), TextOrNothing(second), TextOrNothing(database),
                   TextOrNothing(reader)});
    return SQLITE_OK;
  } catch (...) {  // No exception may pass through the engine.
    asking.Keep(std::current_exception());
    return SQLITE_DENY;
  }
}

}  // namespace

bool IsOwnName(std::string_view name) {
  return std::any_of(std::begin(kOwnBeginnings), std::end(kOwnBeginnings),
                     [name](std::string_view beginning) {
                       return EqualIgnoringCase(name.substr(0, beginning.size()), beginning);
                     });
}

bool IsDictionaryView(std::string_view name) {
  constexpr std::string_view kViews[] = {"DUAL",           "USER_TABLES",  "USER_TAB_COLUMNS",
                                         "USER_ARGUMENTS", "USER_OBJECTS", "USER_SEQUENCES"};
  return IsOneOf(name, kViews);
}

void RefuseOwnNames(std::string_view text) {
  if (std::none_of(std::begin(kOwnBeginnings), std::end(kOwnBeginnings),
                   [text](std::string_view name) { return ContainsIgnoringCase(text, name); })) {
    return;
  }
  for (const dialect::Token& token : dialect::Tokenize(text)) {
    const bool is_name =
        token.kind == dialect::TokenKind::kWord || token.kind == dialect::TokenKind::kQuotedName;
    if (!is_name) continue;
    const std::string name = dialect::ValueOfName(text, token);
    if (IsOwnName(name)) RefuseTable(name, ", a name that belongs to the server");
  }
}

bool IsOraclesFunction(std::string_view upper_name) {
  constexpr std::string_view kFunctions[] = {
      "ACOS",   "ASIN", "ATAN", "ATAN2",        "AVG",         "COALESCE",   "COS",    "COSH",
      "COUNT",  "LAG",  "LEAD", "SUM",          "CUME_DIST",   "DENSE_RANK", "LENGTH", "MAX",
      "MIN",    "RANK", "SIGN", "NTH_VALUE",    "FIRST_VALUE", "LAST_VALUE", "NTILE",  "SIN",
      "NULLIF", "SINH", "TAN",  "PERCENT_RANK", "ROW_NUMBER",  "TANH"};
  return std::find(std::begin(kFunctions), std::end(kFunctions), upper_name) !=
         std::end(kFunctions);
}

void GuardStatements(Connection& connection) {
  // Those stay that tables may have which an older program made: they are listed and dropped.
  const char* kept[] = {"fts3",  "fts4",      "fts4aux", "fts5", "fts5vocab",
                        "rtree", "rtree_i32", "geopoly", nullptr};
  sqlite3_drop_modules(connection.Handle(), kept);
  sqlite3_set_authorizer(connection.Handle(), Authorize, &connection);
}

}  // namespace sabrel::sqlite
