// Statements that end too early.
#pragma once

#include <string_view>

#include "adapters/shared/dialect/token.h"

namespace sabrel::testing {

/// Gives `sql`, cut off after each token and after each seventh byte, to all that reads statements,
/// and to `rewrite`: each takes it or refuses it with a SyntaxFailure.
template <class Rewriting>
void ReadCutOff(std::string_view sql, const Rewriting& rewrite) {
  const auto attempt = [](const auto& reader, std::string_view text) {
    try {
      (void)reader(text);
    } catch (const dialect::SyntaxFailure&) {
      return;
    }
  };
  const auto read_all = [&](std::string_view text) {
    attempt([&](std::string_view whole) { rewrite(dialect::RequireOneStatement(whole)); }, text);
    attempt(rewrite, text);
    attempt(dialect::ParseBlock, text);
    attempt(dialect::ParseCreateRoutine, text);
    attempt(dialect::ParseCreateSequence, text);
    attempt(dialect::ParseCreateTable, text);
    attempt(dialect::DroppedName, text);
  };
  const auto cut_off = [&](std::string_view text) {
    for (const dialect::Token& token : dialect::Tokenize(text)) {
      read_all(text.substr(0, token.end));
    }
    return true;
  };
  attempt(cut_off, sql);
  for (std::size_t bytes = 0; bytes < sql.size(); bytes += 7) read_all(sql.substr(0, bytes));
}

}  // namespace sabrel::testing
