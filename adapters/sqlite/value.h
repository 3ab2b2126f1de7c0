// A value on its way into or out of the embedded server: null, number, text or date.
//
// A date is kept as the text of its moment, 'YYYY-MM-DD HH:MM:SS', and travels as a BLOB: a storage
// class of its own, so that nothing has to guess a date by its shape. BLOBs of dates sort in the
// order of time.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "sabrel/platform/date.h"
#include "sabrel/platform/variant.h"

namespace sabrel::sqlite {

struct Value {
  enum class Kind { kNull, kInteger, kReal, kText, kDate };
  Kind kind = Kind::kNull;
  std::int64_t integer = 0;
  double real = 0.0;
  std::string text;  // of kText and kDate

  [[nodiscard]] bool IsNull() const noexcept { return kind == Kind::kNull; }
  [[nodiscard]] bool IsNumber() const noexcept {
    return kind == Kind::kInteger || kind == Kind::kReal;
  }
};

[[nodiscard]] Value IntegerValue(std::int64_t number);
[[nodiscard]] Value RealValue(double number);
/// An empty text is null, as everywhere in this dialect.
[[nodiscard]] Value TextValue(std::string_view text);
[[nodiscard]] Value DateValue(std::string_view moment);

/// Whether `bytes` are a date as this server writes it.
[[nodiscard]] bool IsMoment(std::string_view bytes) noexcept;
/// Parts of what IsMoment accepts.
[[nodiscard]] CivilDate PartsOf(std::string_view moment) noexcept;
[[nodiscard]] std::string MomentOf(const CivilDate& parts);

/// `text` read as a number ("." as the decimal point, blanks around it allowed); nothing when it is
/// none.
[[nodiscard]] std::optional<Value> NumberFrom(std::string_view text);
/// A number's text as the server's language writes it: "5", ".5", "-1.25", "1E+30".
[[nodiscard]] std::string NumberText(const Value& number);
[[nodiscard]] std::string NumberText(double number);

/// `value` turned into the declared type of an argument or a result (upper case: NUMBER, VARCHAR2,
/// DATE). Errors (ServerFailure): 6502 for text that is no number, as ParseMoment for text that is
/// no date
[[nodiscard]] Value CoerceTo(std::string_view type, Value value, std::string_view date_format);
/// The same for an argument that a call gives: a date may also be "YYYY-MM-DD[ HH24:MI:SS]".
[[nodiscard]] Value ArgumentFor(std::string_view type, Value value, std::string_view date_format);

[[nodiscard]] Variant ToVariant(const Value& value);

}  // namespace sabrel::sqlite
