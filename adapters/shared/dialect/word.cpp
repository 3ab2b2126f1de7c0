#include "adapters/shared/dialect/word.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace sabrel::dialect {
namespace {

struct Entry {
  std::string_view text;
  Word word;
  bool reserved;
};

constexpr bool kReserved = true;
constexpr bool kFree = false;

constexpr Entry kEntries[] = {
    {"ALL", Word::kAll, kReserved},
    {"ALTER", Word::kAlter, kReserved},
    {"AND", Word::kAnd, kReserved},
    {"ANY", Word::kAny, kReserved},
    {"AS", Word::kAs, kReserved},
    {"ASC", Word::kAsc, kReserved},
    {"BEGIN", Word::kBegin, kFree},
    {"BETWEEN", Word::kBetween, kReserved},
    {"BY", Word::kBy, kReserved},
    {"CASE", Word::kCase, kFree},
    {"CAST", Word::kCast, kFree},
    {"CHECK", Word::kCheck, kReserved},
    {"COMMIT", Word::kCommit, kFree},
    {"CONNECT", Word::kConnect, kReserved},
    {"CONSTRAINT", Word::kConstraint, kFree},
    {"CREATE", Word::kCreate, kReserved},
    {"CROSS", Word::kCross, kFree},
    {"CURRENT_DATE", Word::kSystemDate, kFree},
    {"CURRENT_TIMESTAMP", Word::kSystemDate, kFree},
    {"CURRVAL", Word::kCurrval, kFree},
    {"DATE", Word::kDate, kReserved},
    {"DECLARE", Word::kDeclare, kFree},
    {"DEFAULT", Word::kDefault, kReserved},
    {"DELETE", Word::kDelete, kReserved},
    {"DESC", Word::kDesc, kReserved},
    {"DISTINCT", Word::kDistinct, kReserved},
    {"DROP", Word::kDrop, kReserved},
    {"ELSE", Word::kElse, kReserved},
    {"END", Word::kEnd, kFree},
    {"ESCAPE", Word::kEscape, kFree},
    {"EXCEPT", Word::kExcept, kFree},
    {"EXISTS", Word::kExists, kReserved},
    {"FETCH", Word::kFetch, kFree},
    {"FOR", Word::kFor, kReserved},
    {"FOREIGN", Word::kForeign, kFree},
    {"FROM", Word::kFrom, kReserved},
    {"FULL", Word::kFull, kFree},
    {"FUNCTION", Word::kFunction, kFree},
    {"GROUP", Word::kGroup, kReserved},
    {"HAVING", Word::kHaving, kReserved},
    {"IF", Word::kIf, kFree},
    {"IN", Word::kIn, kReserved},
    {"INDEX", Word::kIndex, kReserved},
    {"INNER", Word::kInner, kFree},
    {"INSERT", Word::kInsert, kReserved},
    {"INTERSECT", Word::kIntersect, kReserved},
    {"INTERVAL", Word::kInterval, kFree},
    {"INTO", Word::kInto, kReserved},
    {"IS", Word::kIs, kReserved},
    {"JOIN", Word::kJoin, kFree},
    {"LEFT", Word::kLeft, kFree},
    {"LIKE", Word::kLike, kReserved},
    {"LOCALTIMESTAMP", Word::kSystemDate, kFree},
    {"LOOP", Word::kLoop, kFree},
    {"MINUS", Word::kMinus, kReserved},
    {"NATURAL", Word::kNatural, kFree},
    {"NEXTVAL", Word::kNextval, kFree},
    {"NOT", Word::kNot, kReserved},
    {"NULL", Word::kNull, kReserved},
    {"OFFSET", Word::kOffset, kFree},
    {"ON", Word::kOn, kReserved},
    {"OR", Word::kOr, kReserved},
    {"ORDER", Word::kOrder, kReserved},
    {"OUTER", Word::kOuter, kFree},
    {"OVER", Word::kOver, kFree},
    {"PRIMARY", Word::kPrimary, kFree},
    {"PRIOR", Word::kPrior, kReserved},
    {"PROCEDURE", Word::kProcedure, kFree},
    {"REPLACE", Word::kReplace, kFree},
    {"RETURN", Word::kReturn, kFree},
    {"RETURNING", Word::kReturning, kFree},
    {"RIGHT", Word::kRight, kFree},
    {"ROLLBACK", Word::kRollback, kFree},
    {"ROWNUM", Word::kRownum, kReserved},
    {"SAVEPOINT", Word::kSavepoint, kFree},
    {"SELECT", Word::kSelect, kReserved},
    {"SEQUENCE", Word::kSequence, kFree},
    {"SET", Word::kSet, kReserved},
    {"SOME", Word::kAny, kFree},
    {"START", Word::kStart, kReserved},
    {"SYSDATE", Word::kSystemDate, kReserved},
    {"SYSTIMESTAMP", Word::kSystemDate, kFree},
    {"TABLE", Word::kTable, kReserved},
    {"THEN", Word::kThen, kReserved},
    {"TIMESTAMP", Word::kTimestamp, kFree},
    {"TRUNCATE", Word::kTruncate, kFree},
    {"UNION", Word::kUnion, kReserved},
    {"UNIQUE", Word::kUnique, kReserved},
    {"UPDATE", Word::kUpdate, kReserved},
    {"USING", Word::kUsing, kFree},
    {"VALUES", Word::kValues, kReserved},
    {"VIEW", Word::kView, kReserved},
    {"WHEN", Word::kWhen, kFree},
    {"WHERE", Word::kWhere, kReserved},
    {"WITH", Word::kWith, kReserved},
};

constexpr std::size_t kShortest = 2;
constexpr std::size_t kLongest = 17;
constexpr std::size_t kSlots = 512;

constexpr std::size_t SlotOf(std::string_view text) {
  std::uint32_t hash = 2166136261U;
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(AsciiUpper(c))) * 16777619U;
  return (hash ^ (hash >> 15)) % kSlots;
}

// Open addressing, built by the compiler: slot -> 1-based index into kEntries.
constexpr auto kTable = [] {
  std::array<std::uint8_t, kSlots> table{};
  for (std::size_t i = 0; i < std::size(kEntries); ++i) {
    std::size_t slot = SlotOf(kEntries[i].text);
    while (table[slot] != 0) slot = (slot + 1) % kSlots;
    table[slot] = static_cast<std::uint8_t>(i + 1);
  }
  return table;
}();

constexpr auto kReservedFlags = [] {
  std::array<bool, 256> flags{};
  for (const Entry& entry : kEntries) {
    // Of the words that share a meaning only some are reserved; a shared meaning is not.
    if (entry.word != Word::kAny && entry.word != Word::kSystemDate) {
      flags[static_cast<std::size_t>(entry.word)] = entry.reserved;
    }
  }
  return flags;
}();

}  // namespace

Word FindWord(std::string_view text) noexcept {
  if (text.size() < kShortest || text.size() > kLongest) return Word::kNone;
  for (std::size_t slot = SlotOf(text); kTable[slot] != 0; slot = (slot + 1) % kSlots) {
    const Entry& entry = kEntries[kTable[slot] - 1];
    if (std::equal(text.begin(), text.end(), entry.text.begin(), entry.text.end(),
                   [](char a, char b) { return AsciiUpper(a) == b; })) {
      return entry.word;
    }
  }
  return Word::kNone;
}

bool IsReservedByOracle(Word word) noexcept {
  return kReservedFlags[static_cast<std::size_t>(word)];
}

bool ContinuesFromClause(Word word) noexcept {
  switch (word) {
    case Word::kCross:
    case Word::kExcept:
    case Word::kFetch:
    case Word::kFull:
    case Word::kInner:
    case Word::kJoin:
    case Word::kLeft:
    case Word::kNatural:
    case Word::kOffset:
    case Word::kReturning:
    case Word::kRight:
    case Word::kUsing: return true;
    default: return IsReservedByOracle(word);
  }
}

}  // namespace sabrel::dialect
