// What every Data Server must do for the component, whichever engine is behind it.
//
// The suite is written once; each engine names itself and its quirks in a file of its own and
// instantiates it. The session works on a freshly made sample site.
#pragma once

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "sabrel/platform/rowlink.h"

namespace sabrel::testing {

struct ContractEngine {
  std::string name;
  /// Makes a new sample site and returns what opens a session on it, nothing where there is no
  /// server; the site ends with the last copy.
  std::function<std::function<std::shared_ptr<Rowlink>()>()> make_site;
  // Quirks; the defaults are Oracle's.
  /// Numbers with a fraction come as decimals, not as doubles.
  bool exact_numbers_are_decimal = true;
  /// A name that no statement of this engine may use as a table.
  std::string unknown_table = "NO_SUCH_TABLE";
};

// GoogleTest prints parameters; an engine is its name.
inline void PrintTo(const ContractEngine& engine, std::ostream* out) { *out << engine.name; }

[[nodiscard]] inline std::string EngineName(const ::testing::TestParamInfo<ContractEngine>& info) {
  return info.param.name;
}

/// What a statement came to: its rows, or the native number of its refusal.
struct Outcome {
  std::int32_t native = 0;
  std::int32_t connection = 0;
  std::vector<std::string> columns;
  std::vector<std::vector<Variant>> rows;
  std::int64_t rows_changed = kUnknownRows;
};

class Contract : public ::testing::TestWithParam<ContractEngine> {
 protected:
  void SetUp() override;

  [[nodiscard]] Outcome Query(std::string_view sql, std::int32_t timeout_s = 60);
  [[nodiscard]] Outcome Execute(std::string_view sql, std::int32_t timeout_s = 60);
  /// Executes what must not be refused.
  void Run(std::string_view sql);
  /// The first field of the first row; empty when there is none or the statement failed.
  [[nodiscard]] Variant Value(std::string_view sql);
  /// Runs `action` and says which native or connection number it was refused with, if any.
  [[nodiscard]] Outcome Tried(const std::function<void(Outcome&)>& action);

  std::function<std::shared_ptr<Rowlink>()> open_session;
  std::shared_ptr<Rowlink> session;
};

}  // namespace sabrel::testing
