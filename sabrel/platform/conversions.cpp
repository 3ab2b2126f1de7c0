#include "sabrel/platform/conversions.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <variant>

#include "sabrel/platform/platform.h"
#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/text_to_number.h"

namespace sabrel {
namespace {

constexpr int kDoubleDigits = 15;
constexpr int kSingleDigits = 7;
/// An object may stand for an object, but not forever.
constexpr int kMostDefaultProperties = 32;
/// The last serial that still rounds to a second of the year 9999.
constexpr double kLastSerial = 2958465.99999;

[[noreturn]] void Raise(RuntimeErrorNumber number) { throw RuntimeError(number); }
[[noreturn]] void Mismatch() { Raise(RuntimeErrorNumber::kTypeMismatch); }
[[noreturn]] void Overflow() { Raise(RuntimeErrorNumber::kOverflow); }

LocaleFacts CurrentLocale() { return Deref(CurrentPlatform().services).Locale(); }

/// `value`, or what stands for it when it is an object; `holder` keeps the latter.
const Variant& Plain(const Variant& value, Variant& holder) {
  const Variant* plain = &value;
  for (int i = 0; plain->kind() == VariantKind::kObject; ++i) {
    if (i == kMostDefaultProperties) Mismatch();
    holder = Deref(plain->Get<ObjectRef>()).DefaultProperty();
    plain = &holder;
  }
  return *plain;
}

/// A number in the exact form in which its source holds it.
using Number = std::variant<std::int64_t, double, Decimal, NumberParts>;

Number NumberOfText(const std::string& text, const LocaleFacts& locale) {
  NumberParts parts;
  if (!SplitNumber(text, locale.decimal_separator, locale.thousands_separator, parts)) Mismatch();
  return parts;
}

Number NumberOf(const Variant& value, const LocaleFacts& locale) {
  Variant holder;
  const Variant& plain = Plain(value, holder);
  switch (plain.kind()) {
    case VariantKind::kEmpty: return std::int64_t{0};
    case VariantKind::kNull: Raise(RuntimeErrorNumber::kInvalidUseOfNull);
    case VariantKind::kByte: return std::int64_t{plain.Get<std::uint8_t>()};
    case VariantKind::kInt16: return std::int64_t{plain.Get<std::int16_t>()};
    case VariantKind::kInt32: return std::int64_t{plain.Get<std::int32_t>()};
    case VariantKind::kSingle: return double{plain.Get<float>()};
    case VariantKind::kDouble: return plain.Get<double>();
    case VariantKind::kCurrency: return Decimal::FromCurrency(plain.Get<Currency>());
    case VariantKind::kDecimal: return plain.Get<Decimal>();
    case VariantKind::kDate: return plain.Get<Date>().Serial();
    case VariantKind::kString: return NumberOfText(plain.Get<std::string>(), locale);
    case VariantKind::kBoolean: return std::int64_t{plain.Get<bool>() ? -1 : 0};
    case VariantKind::kError:
    case VariantKind::kObject:
    case VariantKind::kArray: break;
  }
  Mismatch();
}

double DoubleOf(const Number& number) {
  if (const auto* whole = std::get_if<std::int64_t>(&number)) return static_cast<double>(*whole);
  if (const auto* real = std::get_if<double>(&number)) return *real;
  if (const auto* decimal = std::get_if<Decimal>(&number)) return decimal->ToDouble();
  return std::get<NumberParts>(number).ToDouble();
}

/// Text is rounded once, from all its digits.
std::int64_t ExactWhole(const Number& number) {
  if (const auto* whole = std::get_if<std::int64_t>(&number)) return *whole;
  if (const auto* decimal = std::get_if<Decimal>(&number)) return decimal->ToInt64();
  return Decimal::Parse(std::get<NumberParts>(number).CutForRounding(0).Text()).ToInt64();
}

template <class Whole>
Whole WholeOf(const Number& number) {
  constexpr std::int64_t kLow = std::numeric_limits<Whole>::min();
  constexpr std::int64_t kHigh = std::numeric_limits<Whole>::max();
  if (const auto* real = std::get_if<double>(&number)) {
    return static_cast<Whole>(RoundHalfEven(*real, kLow, kHigh));
  }
  const std::int64_t whole = ExactWhole(number);
  if (whole < kLow || whole > kHigh) Overflow();
  return static_cast<Whole>(whole);
}

std::string WithSeparator(std::string text, const LocaleFacts& locale) {
  if (const std::size_t point = text.find('.'); point != std::string::npos) {
    if (!locale.decimal_separator.empty()) text.replace(point, 1, locale.decimal_separator);
  }
  return text;
}

}  // namespace

std::string NumberText(double number, int digits, std::string_view decimal_separator) {
  if (decimal_separator.empty()) decimal_separator = ".";  // 2.5 must never read as 25
  if (std::isnan(number)) return "NaN";
  if (std::isinf(number)) return number > 0 ? "Infinity" : "-Infinity";
  digits = std::clamp(digits, 1, std::numeric_limits<double>::max_digits10);
  std::array<char, 40> buffer{};
  const std::string_view scientific = ScientificText(std::abs(number), digits, buffer);
  const std::size_t mark = scientific.find('e');
  int exponent = 0;
  const bool small = scientific[mark + 1] == '-';
  std::from_chars(&scientific[mark + 2], scientific.data() + scientific.size(), exponent);
  if (small) exponent = -exponent;

  std::string figures(scientific.substr(0, 1));
  if (mark > 2) figures += scientific.substr(2, mark - 2);
  figures.erase(figures.find_last_not_of('0') + 1);

  std::string out = number < 0 ? "-" : "";
  if (exponent < -4 || exponent >= digits) {
    out += figures.front();
    if (figures.size() > 1) out.append(decimal_separator).append(figures, 1);
    out += small ? "E-" : "E+";
    if (std::abs(exponent) < 10) out += '0';
    return out + std::to_string(std::abs(exponent));
  }
  if (exponent < 0) {
    out.append("0").append(decimal_separator).append(static_cast<std::size_t>(-exponent - 1), '0');
    return out + figures;
  }
  const auto whole = static_cast<std::size_t>(exponent) + 1;
  if (figures.size() < whole) figures.append(whole - figures.size(), '0');
  out.append(figures, 0, whole);
  if (figures.size() > whole) out.append(decimal_separator).append(figures, whole);
  return out;
}

std::int64_t RoundHalfEven(double number, std::int64_t low, std::int64_t high) {
  // Not nearbyint: a host may have changed the rounding mode.
  double whole = std::floor(number);
  const double rest = number - whole;
  if (rest > 0.5 || (rest == 0.5 && std::fmod(whole, 2.0) != 0.0)) whole += 1.0;
  constexpr double kLimit = 9223372036854775808.0;
  if (!(whole >= -kLimit && whole < kLimit)) Overflow();
  const auto result = static_cast<std::int64_t>(whole);
  if (result < low || result > high) Overflow();
  return result;
}

std::string ToText(const Variant& value, const LocaleFacts& locale) {
  Variant holder;
  const Variant& plain = Plain(value, holder);
  switch (plain.kind()) {
    case VariantKind::kEmpty: return {};
    case VariantKind::kNull: Raise(RuntimeErrorNumber::kInvalidUseOfNull);
    case VariantKind::kByte: return std::to_string(plain.Get<std::uint8_t>());
    case VariantKind::kInt16: return std::to_string(plain.Get<std::int16_t>());
    case VariantKind::kInt32: return std::to_string(plain.Get<std::int32_t>());
    case VariantKind::kSingle:
      return NumberText(double{plain.Get<float>()}, kSingleDigits, locale.decimal_separator);
    case VariantKind::kDouble:
      return NumberText(plain.Get<double>(), kDoubleDigits, locale.decimal_separator);
    case VariantKind::kCurrency:
      return WithSeparator(Decimal::FromCurrency(plain.Get<Currency>()).Text(), locale);
    case VariantKind::kDecimal: return WithSeparator(plain.Get<Decimal>().Text(), locale);
    case VariantKind::kDate: return GeneralDateText(plain.Get<Date>(), locale);
    case VariantKind::kString: return plain.Get<std::string>();
    case VariantKind::kBoolean: return plain.Get<bool>() ? "True" : "False";
    case VariantKind::kError: return "Error " + std::to_string(plain.Get<ErrorValue>().number);
    case VariantKind::kObject:
    case VariantKind::kArray: break;
  }
  Mismatch();
}

std::int16_t ToInt16(const Variant& value, const LocaleFacts& locale) {
  return WholeOf<std::int16_t>(NumberOf(value, locale));
}

std::int32_t ToInt32(const Variant& value, const LocaleFacts& locale) {
  if (const auto* same = value.GetIf<std::int32_t>()) return *same;
  return WholeOf<std::int32_t>(NumberOf(value, locale));
}

double ToDouble(const Variant& value, const LocaleFacts& locale) {
  if (const auto* same = value.GetIf<double>()) return *same;
  return DoubleOf(NumberOf(value, locale));
}

Date ToDate(const Variant& value, const LocaleFacts& locale) {
  Variant holder;
  const Variant& plain = Plain(value, holder);
  Date date;
  if (const auto* same = plain.GetIf<Date>()) return *same;
  if (const auto* text = plain.GetIf<std::string>()) {
    if (!ParseDate(*text, locale, date)) Mismatch();
    return date;
  }
  const double serial = DoubleOf(NumberOf(plain, locale));
  if (!(serial >= Date::kFirstSerial && serial <= kLastSerial)) Overflow();
  return Date(serial);
}

std::string ToText(const Variant& value) {
  if (const auto* same = value.GetIf<std::string>()) return *same;
  return ToText(value, CurrentLocale());
}
std::int16_t ToInt16(const Variant& value) { return ToInt16(value, CurrentLocale()); }
std::int32_t ToInt32(const Variant& value) {
  if (const auto* same = value.GetIf<std::int32_t>()) return *same;
  return ToInt32(value, CurrentLocale());
}
double ToDouble(const Variant& value) { return ToDouble(value, CurrentLocale()); }
Date ToDate(const Variant& value) { return ToDate(value, CurrentLocale()); }

std::string ToJoinedText(const Variant& value) {
  Variant holder;
  const Variant& plain = Plain(value, holder);
  return plain.IsNull() ? std::string() : ToText(plain);
}

bool IsNumeric(const Variant& value, const LocaleFacts& locale) {
  try {
    Variant holder;
    const Variant& plain = Plain(value, holder);
    if (plain.kind() == VariantKind::kDate) return false;
    static_cast<void>(DoubleOf(NumberOf(plain, locale)));
    return true;
  } catch (const RuntimeError&) {
    return false;
  }
}

bool IsDate(const Variant& value, const LocaleFacts& locale) {
  if (value.kind() == VariantKind::kDate) return true;
  Date date;
  const auto* text = value.GetIf<std::string>();
  return text != nullptr && ParseDate(*text, locale, date);
}

}  // namespace sabrel
