// What differs between the database servers that ODBC reaches.
//
// One implementation a kind of server: how a profile becomes a connection string, how Oracle's
// statements become the server's, what its errors mean, how its routines are described and called.
// Engines hold no state of a connection and may be used by any thread.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/odbc/diagnosis.h"
#include "adapters/shared/dialect/dialect.h"
#include "adapters/shared/section_settings.h"
#include "adapters/shared/verb.h"
#include "sabrel/platform/connection_profile.h"
#include "sabrel/platform/data_link.h"
#include "sabrel/platform/runtime_error.h"

namespace sabrel::odbc {

/// What a diagnosis means to callers: a database error with Oracle's native number, or a failed
/// connection.
struct Meaning {
  /// Positive; 0 where the connection failed.
  std::int32_t native_number = 0;
  std::optional<ConnectionFailure> connection;
};

/// A stored routine as the catalogue describes it.
struct Signature {
  struct Argument {
    std::string name;
    dialect::Direction direction = dialect::Direction::kIn;
    std::string type;  // as the server writes it
  };
  bool is_function = false;
  /// As the server takes it in a call, quoted where it must be.
  std::string call_name;
  std::string result_type;
  std::vector<Argument> arguments;  // without a function's result
};

/// A statement as a server takes it.
struct Compiled {
  /// Empty where there is nothing to send (COMMIT, where each statement is a transaction).
  std::string text;
  /// A query with one row and column, more than 0 where `text` is one that gives one row at most;
  /// `one_row_prefix` then goes in front of it, which saves a round trip. Empty where there is no
  /// such doubt. The answer may be out of date: it decides on costs only.
  std::string question;
  std::string_view one_row_prefix;
};

class Engine {
 public:
  virtual ~Engine() = default;

  /// What users call the server: "PostgreSQL".
  [[nodiscard]] virtual std::string_view ServerName() const = 0;
  /// The port of a profile that names none.
  [[nodiscard]] virtual std::int32_t UsualPort() const = 0;
  /// Whether unquoted names come back in lower case, which callers then see in upper case.
  [[nodiscard]] virtual bool FoldsToLowerCase() const = 0;
  /// The driver's connection string; the only text that holds the password.
  /// Errors: 5 for a setting that no quoting can carry (NUL, a line's end)
  [[nodiscard]] virtual std::string ConnectionText(const ConnectionProfile& profile,
                                                   const SectionSettings& section) const = 0;
  /// The Unix socket that a profile means; empty where it means a host and port, or what only the
  /// driver knows.
  [[nodiscard]] virtual std::string SocketFile(const ConnectionProfile& /*profile*/) const {
    return {};
  }
  /// Statements to send once when a connection was made, in the server's own language;
  /// `date_format` is that of the session.
  [[nodiscard]] virtual std::vector<std::string> OpeningStatements(
      std::string_view date_format) const = 0;
  /// The server's form of one statement, as dialect::RequireOneStatement returned it.
  /// Errors: dialect::SyntaxFailure
  [[nodiscard]] virtual Compiled Compile(std::string_view statement) const = 0;
  [[nodiscard]] virtual Meaning MeaningOf(const Diagnosis& diagnosis, Verb verb) const = 0;
  /// What a failed connection attempt to a server that can be reached says of the login; nothing
  /// where it says nothing.
  [[nodiscard]] virtual std::optional<Meaning> MeaningOfRefusedLogin(
      const Diagnosis& diagnosis) const = 0;
  /// A query for the description of routine `name` ("PKG.F" or "F", any case), a row an argument
  /// in order of position, with the columns POSITION (0 for a function's result; a routine without
  /// arguments and result gives one row with a null position), ARGUMENT_NAME, IN_OUT ("IN",
  /// "OUT", "IN/OUT"), DATA_TYPE, CALL_NAME, OVERLOAD (null, or which of several routines of the
  /// name the row belongs to).
  [[nodiscard]] virtual std::string SignatureQuery(std::string_view name) const = 0;
  /// Whether calls go as text with constants, and answer with one row of the result (column
  /// "return_value" or the only one of a function without out arguments) and the out arguments in
  /// order; otherwise as `{? = call name(?, ?)}` with bound parameters.
  [[nodiscard]] virtual bool CallsByText() const = 0;
  /// The text of a call for an engine that calls by text; `values` are the in-values of all
  /// arguments in order, nothing for null and for out arguments.
  [[nodiscard]] virtual std::string CallText(
      const Signature& signature, const std::vector<std::optional<std::string>>& values) const = 0;
  /// Whether a multi-row `INSERT ... VALUES (...), (...)` is known to the server; otherwise row
  /// sets go as arrays of parameters.
  [[nodiscard]] virtual bool InsertsManyRows() const = 0;
  /// What is put behind the text constants of such statements.
  [[nodiscard]] virtual std::string_view TextConstantEnd() const { return {}; }
};

/// The engine that serves a profile with this driver name; null when the name tells none.
[[nodiscard]] const Engine* EngineForDriver(std::string_view driver);

[[nodiscard]] const Engine& PostgresqlEngine();
[[nodiscard]] const Engine& OracleEngine();

}  // namespace sabrel::odbc
