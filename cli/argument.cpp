#include "cli/argument.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>

#include "cli/exit_status.h"
#include "sabrel/platform/runtime_error.h"

namespace sabrel::cli {
namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsAllDigits(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

std::string_view WithoutSign(std::string_view text) {
  if (text.starts_with('-')) text.remove_prefix(1);
  return text;
}

// Digits only, no needless zero in front: what has one is a code, not a number.
bool IsWholeNumber(std::string_view text) {
  const std::string_view digits = WithoutSign(text);
  return IsAllDigits(digits) && (digits.size() == 1 || digits[0] != '0');
}

bool LooksLikeFraction(std::string_view text) {
  const std::string_view digits = WithoutSign(text);
  if (digits.empty() || digits.find_first_not_of("0123456789.eE+-") != std::string_view::npos) {
    return false;
  }
  if (digits.size() > 1 && digits[0] == '0' && IsDigit(digits[1])) return false;
  const bool starts = IsDigit(digits[0]) || (digits[0] == '.' && digits.size() > 1);
  return starts && digits.find_first_of(".eE") != std::string_view::npos;
}

std::optional<double> ParseDouble(std::string_view text) {
  double number = 0.0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (end != text.data() + text.size()) return std::nullopt;
  if (error == std::errc::result_out_of_range) {
    throw UsageError("The number '" + std::string(text) + "' does not fit");
  }
  return error == std::errc() ? std::optional(number) : std::nullopt;
}

Variant ParseWhole(std::string_view text) {
  std::int32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error == std::errc()) return Variant(number);
  try {
    return Variant(Decimal::Parse(text));
  } catch (const RuntimeError&) {
    throw UsageError("The number '" + std::string(text) +
                     "' does not fit; write text:" + std::string(text) + " to pass it as text");
  }
}

// Takes a number of exactly `digits` digits and then the character `end` off the front of `text`.
bool TakeNumber(std::string_view& text, std::size_t digits, char end, int& number) {
  if (text.size() < digits || !IsAllDigits(text.substr(0, digits))) return false;
  std::from_chars(text.data(), text.data() + digits, number);
  text.remove_prefix(digits);
  if (end == '\0' || text.empty()) return true;
  if (text[0] != end) return false;
  text.remove_prefix(1);
  return true;
}

bool TakeTime(std::string_view& text, CivilDate& parts) {
  if (text.size() < 2 || (text[0] != 'T' && text[0] != ' ')) return false;
  text.remove_prefix(1);
  if (text.size() != 5 && text.size() != 8) return false;
  return TakeNumber(text, 2, ':', parts.hour) && TakeNumber(text, 2, ':', parts.minute) &&
         (text.empty() || TakeNumber(text, 2, '\0', parts.second));
}

}  // namespace

Date ParseIsoDate(std::string_view text) {
  CivilDate parts;
  std::string_view rest = text;
  const bool read = text.size() >= 10 && TakeNumber(rest, 4, '-', parts.year) &&
                    TakeNumber(rest, 2, '-', parts.month) && TakeNumber(rest, 2, '\0', parts.day) &&
                    (rest.empty() || TakeTime(rest, parts));
  if (!read || !rest.empty() || !Date::IsValidCivil(parts)) {
    throw UsageError("'" + std::string(text) +
                     "' is no date; write it as 2024-03-09 or 2024-03-09T17:05:00");
  }
  return Date::FromCivil(parts);
}

Variant ParseArgument(std::string_view text) {
  if (text.starts_with("text:")) return Variant(text.substr(5));
  if (text.starts_with("date:")) return Variant(ParseIsoDate(text.substr(5)));
  if (text == "null") return Variant(Null{});
  if (text == "empty") return {};
  if (text == "true" || text == "false") return Variant(text == "true");
  if (IsWholeNumber(text)) return ParseWhole(text);
  if (LooksLikeFraction(text)) {
    if (const auto number = ParseDouble(text)) return Variant(*number);
  }
  return Variant(text);
}

std::vector<Variant> ParseArguments(std::span<const std::string> texts) {
  std::vector<Variant> values;
  for (const std::string& text : texts) values.push_back(ParseArgument(text));
  return values;
}

bool IsNegativeNumber(std::string_view text) noexcept {
  return text.size() > 1 && text[0] == '-' && (IsWholeNumber(text) || LooksLikeFraction(text));
}

}  // namespace sabrel::cli
