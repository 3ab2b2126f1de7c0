// The ordinary conversions among all kinds, in several locales: documented failures only, and what
// one conversion says agrees with what the others say.
#include "sabrel/platform/conversions.h"

#include <array>
#include <cmath>

#include "fuzz/target.h"

namespace sabrel::fuzz {
namespace {

using enum RuntimeErrorNumber;

const std::array<LocaleFacts, 6> kLocales = {{
    {},
    {",", ".", ".", ":", DateOrder::kDayMonthYear},
    {",", "\u00a0", "-", ".", DateOrder::kYearMonthDay},
    {"\u066b", "\u066c", "/", ":", DateOrder::kDayMonthYear},
    // Not fit for a round trip: what parts two numbers is missing or means two things.
    {"", "", "", "", DateOrder::kMonthDayYear},
    {".", ".", ".", ".", DateOrder::kDayMonthYear},
}};
constexpr std::size_t kLastUsable = 3;

template <class Result, class Work>
std::optional<Result> Tried(Work&& work) {
  std::optional<Result> result;
  DoneOr({kOverflow, kTypeMismatch, kObjectNotSet, kInvalidUseOfNull}, [&] { result = work(); });
  return result;
}

void CheckTextReadsBack(const Variant& value, const std::string& text, const LocaleFacts& locale) {
  const Variant written(text);
  if (value.kind() == VariantKind::kDate) {
    const CivilDate parts = value.Get<Date>().ToCivil();
    const auto read = Tried<Date>([&] { return ToDate(written, locale); });
    Require(read && read->ToCivil() == parts, "a date's text reads back", text);
  } else if (IsNumeric(value, locale) && value.kind() != VariantKind::kBoolean && !text.empty()) {
    const auto number = Tried<double>([&] { return ToDouble(value, locale); });
    if (!std::isfinite(*number)) return;
    const auto read = Tried<double>([&] { return ToDouble(written, locale); });
    // The largest doubles round up beyond all of them.
    if (!read) return Require(std::abs(*number) > 1.79769e308, "a number's text reads back", text);
    if (value.kind() == VariantKind::kString) return;
    Require(ToText(value.kind() == VariantKind::kSingle ? Variant(static_cast<float>(*read))
                                                        : Variant(*read),
                   locale) ==
                (value.kind() == VariantKind::kDecimal || value.kind() == VariantKind::kCurrency
                     ? ToText(Variant(*number), locale)
                     : text),
            "a number's text is that of what it reads as", text);
  }
}

void CheckNumbers(const Variant& value, const LocaleFacts& locale) {
  const auto small = Tried<std::int16_t>([&] { return ToInt16(value, locale); });
  const auto whole = Tried<std::int32_t>([&] { return ToInt32(value, locale); });
  const auto real = Tried<double>([&] { return ToDouble(value, locale); });
  const std::string seen = Shown(value);
  if (small) Require(whole == std::int32_t{*small}, "16 and 32 bits are the same number", seen);
  if (whole && !small) Require(*whole > 32767 || *whole < -32768, "fits 16 bits", seen);
  if (whole) Require(real && std::abs(*real - *whole) <= 0.5, "is rounded to the nearest", seen);
  if (real && !whole) {
    Require(!(*real > -2147483648.5 && *real < 2147483647.5), "fits 32 bits", seen);
  }
  Require(IsNumeric(value, locale) == (real.has_value() && value.kind() != VariantKind::kDate),
          "IsNumeric tells whether there is a number", seen);
}

}  // namespace

void Check(std::string_view bytes) {
  Input input(bytes);
  const std::size_t chosen = input.Choice(kLocales.size());
  const LocaleFacts& locale = kLocales[chosen];
  const Variant value = input.Byte() % 2 == 0 ? input.Value() : Variant(input.Rest());
  CheckNumbers(value, locale);
  const auto date = Tried<Date>([&] { return ToDate(value, locale); });
  if (value.kind() == VariantKind::kString) {
    Require(IsDate(value, locale) == date.has_value(), "IsDate tells whether there is a date",
            Shown(value));
  }
  if (date && value.kind() != VariantKind::kDate) {
    const auto parts = Tried<CivilDate>([&] { return date->ToCivil(); });
    Require(parts.has_value(), "a date that was read is one", Shown(value));
  }
  const auto text = Tried<std::string>([&] { return ToText(value, locale); });
  if (text && chosen <= kLastUsable) CheckTextReadsBack(value, *text, locale);
}

}  // namespace sabrel::fuzz
