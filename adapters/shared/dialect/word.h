// The words of Oracle's SQL that the parsers ask about, found without allocation.
//
// Reserved words never name a column or a table in Oracle; all others may, wherever a name stands.
#pragma once

#include <cstdint>
#include <string_view>

namespace sabrel::dialect {

enum class Word : std::uint8_t {
  kNone,
  kAll,
  kAlter,
  kAnd,
  kAny,
  kAs,
  kAsc,
  kBegin,
  kBetween,
  kBy,
  kCase,
  kCast,
  kCheck,
  kCommit,
  kConnect,
  kConstraint,
  kCreate,
  kCross,
  kCurrval,
  kDate,
  kDeclare,
  kDefault,
  kDelete,
  kDesc,
  kDistinct,
  kDrop,
  kElse,
  kEnd,
  kEscape,
  kExcept,
  kExists,
  kFetch,
  kFor,
  kForeign,
  kFrom,
  kFull,
  kFunction,
  kGroup,
  kHaving,
  kIf,
  kIn,
  kIndex,
  kInner,
  kInsert,
  kIntersect,
  kInterval,
  kInto,
  kIs,
  kJoin,
  kLeft,
  kLike,
  kLoop,
  kMinus,
  kNatural,
  kNextval,
  kNot,
  kNull,
  kOffset,
  kOn,
  kOr,
  kOrder,
  kOuter,
  kOver,
  kPrimary,
  kPrior,
  kProcedure,
  kReplace,
  kReturn,
  kReturning,
  kRight,
  kRollback,
  kRownum,
  kSavepoint,
  kSelect,
  kSequence,
  kSet,
  kStart,
  kSystemDate,  // SYSDATE and its relatives
  kTable,
  kThen,
  kTimestamp,
  kTruncate,
  kUnion,
  kUnique,
  kUpdate,
  kUsing,
  kValues,
  kView,
  kWhen,
  kWhere,
  kWith,
};

/// The word that `text` is in any case; kNone for every other text.
[[nodiscard]] Word FindWord(std::string_view text) noexcept;

/// Whether Oracle reserves the word, so that it never is a name.
[[nodiscard]] bool IsReservedByOracle(Word word) noexcept;

/// Whether the word may follow a table or a condition as part of the statement, so that it is no
/// alias there.
[[nodiscard]] bool ContinuesFromClause(Word word) noexcept;

/// Upper case of an ASCII letter; every other byte as it is.
[[nodiscard]] constexpr char AsciiUpper(char c) noexcept {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

}  // namespace sabrel::dialect
