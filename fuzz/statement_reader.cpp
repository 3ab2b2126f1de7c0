// Lines of a shell or script as statements: every line is taken to its end, and what comes out is
// one statement for the servers, too.
#include "adapters/shared/dialect/statement_reader.h"

#include "adapters/shared/dialect/dialect.h"
#include "fuzz/target.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::fuzz {
namespace {

void CheckStatement(const std::string& statement) {
  // A second statement and what is no text are refused with the same number.
  constexpr std::int32_t kSecondStatement = 911;
  if (!IsSendableText(statement)) return;
  try {
    static_cast<void>(dialect::RequireOneStatement(statement));
  } catch (const dialect::SyntaxFailure& failure) {
    Require(failure.native_number != kSecondStatement, "is one statement", statement);
  }
}

}  // namespace

void Check(std::string_view text) {
  dialect::StatementReader reader;
  while (!text.empty()) {
    const std::string_view whole = text.substr(0, text.find('\n'));
    std::string_view line = whole;
    do {
      const std::size_t taken = reader.Take(line);
      Require(taken <= line.size() && (taken > 0 || line.empty()), "a line is taken", line);
      line.remove_prefix(taken);
      if (!reader.IsComplete()) continue;
      // A block goes on up to the line that ends it, whatever follows its END.
      const bool is_one = !reader.HoldsStatements();
      const std::string statement = reader.Finish();
      if (is_one) CheckStatement(statement);
    } while (!line.empty());
    text.remove_prefix(std::min(whole.size() + 1, text.size()));
  }
}

}  // namespace sabrel::fuzz
