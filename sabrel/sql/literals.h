// SQL literal text: the only place where quoting rules live.
//
// Every statement is text built by joining; whatever stands in it as a value went through one of
// these. Results are `CDBLiteral`s, so that a value formatted once is never quoted twice. Nothing
// is validated and nothing but the single quote is escaped; names (of sequences, of columns in
// DBSetArgs) and the text of DBLiteral are inserted as they are.
//
//   "SELECT Id FROM T WHERE Name = " + DBStr("O'Hara").Value()   ->  ... WHERE Name = 'O''Hara'
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "sabrel/platform/date.h"
#include "sabrel/platform/narrowing.h"
#include "sabrel/platform/variant.h"
#include "sabrel/sql/db_literal.h"

namespace sabrel::MSabrel {

/// `s` as it is.
[[nodiscard]] CDBLiteral DBLiteral(std::string_view s);

/// Turns `s` into a quoted SQL string constant: 'it''s'.
/// Shape:  UTF-8 in, UTF-8 out; empty text gives NULL; every ' is doubled, nothing else is changed
/// Errors: none
/// Cost:   no round trip, one allocation
/// Source: Oracle SQL Language Reference, "Text Literals"
[[nodiscard]] CDBLiteral DBStr(std::string_view s);

/// An identifier: NULL for 0, else its digits.
[[nodiscard]] CDBLiteral DBOrd(std::int32_t ord);
template <WiderThan32Bits Wide>
void DBOrd(Wide ord) = delete;

/// NULL when `i` is `iNull`, else its digits.
[[nodiscard]] CDBLiteral DBInt(std::int32_t i, std::int32_t iNull = 0);
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void DBInt(Arguments&&...) = delete;

/// NULL when `i` is neither less nor greater than `iNull` (so also for not-a-number), else the
/// number with "." as its decimal point: at most 15 significant digits, "1E-05" for small ones.
[[nodiscard]] CDBLiteral DBFloat(double i, std::int32_t iNull = 0);

/// TO_DATE('sDate','sFormat') without a blank; NULL when `sDate` is empty.
[[nodiscard]] CDBLiteral DBDateString(std::string_view sDate, std::string_view sFormat);

/// TO_DATE('2024-03-09 17:05:00','YYYY-MM-DD HH24:MI:SS') in every locale; NULL for the zero date.
/// Errors: 6 when `d` is outside the years 100 to 9999
[[nodiscard]] CDBLiteral DateToDBString(const Date& d);

/// The server's clock, cut to the minute.
[[nodiscard]] CDBLiteral CurrentDateTime();

/// `sSequence` + ".NEXTVAL"
[[nodiscard]] CDBLiteral NextInSequence(std::string_view sSequence);

/// The database server's time, to the minute; the zero date when the query fails.
/// Errors: 6 or 13 for an answer that is no date. Cost: one round trip
[[nodiscard]] Date GetCurrentDateTime();

/// The sequence's next value; 0, reported through the assertion service, when the query fails.
/// Errors: 6 for a value beyond 32 bits; of the assertion. Cost: one round trip
[[nodiscard]] std::int32_t GetNextInSequence(std::string_view sSequence);

/// One blank before and one after.
[[nodiscard]] std::string PadStr(std::string_view s);

/// One value as SQL text. A CDBLiteral gives its value; null, the empty string and the zero date
/// give NULL; singles and doubles have "." as decimal point, currency and decimal the locale's;
/// booleans are 'Y' and 'N'; empty gives "". Errors: 13 for what has no text (an array, an absent
/// object, an object without default property); 94 and 91 for a default property that is null or
/// absent
[[nodiscard]] std::string DBArg(const Variant& v);

/// The values as a comma list, padded. A value whose text is empty vanishes without a comma while
/// the list is still empty and leaves its comma later: (empty, 7) gives " 7 " and (5, empty)
/// gives " 5, ". Errors: as DBArg
[[nodiscard]] std::string DBArgs(std::span<const Variant> vArgs);

/// Pairs of column name and value as an assignment list, padded: " NAME = 'abc',AGE = 5 ". An odd
/// number of elements leaves the last name with " = " and no value. Errors: as DBArg; for a name
/// 13 where it has no text and 91 where it is an absent object
[[nodiscard]] std::string DBSetArgs(std::span<const Variant> vArgs);

/// "SELECT " + expression + " FROM DUAL"
[[nodiscard]] std::string SelectFromDual(std::string_view sExpression);

}  // namespace sabrel::MSabrel
