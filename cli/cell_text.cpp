#include "cli/cell_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>

#include "adapters/console/terminal.h"
#include "sabrel/platform/conversions.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::cli {
namespace {

constexpr int kExactDigits = 15;

// Reads back as the same number. Beyond the whole numbers that a double tells apart, its digits
// without an exponent would look like more than it knows.
std::string ShortestText(double number) {
  constexpr double kAllWholeNumbers = 9007199254740992.0;
  std::array<char, 32> buffer{};
  char* const end = buffer.data() + buffer.size();
  const auto written =
      std::abs(number) > kAllWholeNumbers
          ? std::to_chars(buffer.data(), end, number, std::chars_format::scientific)
          : std::to_chars(buffer.data(), end, number);
  return {buffer.data(), written.ptr};
}

std::string PlainText(const Variant& value) {
  static const LocaleFacts neutral;
  switch (value.kind()) {
    case VariantKind::kDouble: return ShortestText(value.Get<double>());
    case VariantKind::kDecimal: return value.Get<Decimal>().Text();
    case VariantKind::kDate: return IsoDate(value.Get<Date>(), 'T');
    case VariantKind::kBoolean: return value.Get<bool>() ? "true" : "false";
    default: return ToText(value, neutral);
  }
}

}  // namespace

const std::map<std::string, Format>& FormatWords() {
  static const std::map<std::string, Format> words = {
      {"table", Format::kTable}, {"csv", Format::kCsv}, {"json", Format::kJson}};
  return words;
}

std::string IsoDate(const Date& date, char separator) {
  std::string text = FormatDateTime(date, LocaleFacts{});
  text[10] = separator;
  return text;
}

bool IsNumber(const Variant& value) noexcept {
  switch (value.kind()) {
    case VariantKind::kByte:
    case VariantKind::kInt16:
    case VariantKind::kInt32:
    case VariantKind::kSingle:
    case VariantKind::kDouble:
    case VariantKind::kCurrency:
    case VariantKind::kDecimal: return true;
    default: return false;
  }
}

std::string TableText(const Variant& value) {
  if (value.IsNull()) return std::string(kNullMark);
  if (value.kind() == VariantKind::kDouble) return NumberText(value.Get<double>(), 15, ".");
  if (value.kind() == VariantKind::kDate) return IsoDate(value.Get<Date>(), ' ');
  if (const auto* text = value.GetIf<std::string>()) {
    return ReplaceAll(VisibleText(*text, "\u21b5"), "\t", "\\t");
  }
  return PlainText(value);
}

std::string CsvText(const Variant& value) {
  if (value.IsNull() || value.IsEmpty()) return {};
  std::string text = PlainText(value);
  const bool quoted = text.empty() || text.find_first_of(",\"\r\n") != std::string::npos ||
                      text.front() == ' ' || text.back() == ' ';
  return quoted ? "\"" + ReplaceAll(text, "\"", "\"\"") + "\"" : text;
}

std::string JsonString(std::string_view text) {
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string JsonText(const Variant& value) {
  if (value.IsNull() || value.IsEmpty()) return "null";
  const std::string text = PlainText(value);
  if (value.kind() == VariantKind::kBoolean) return text;
  if (!IsNumber(value)) return JsonString(text);
  if (value.kind() == VariantKind::kDouble || value.kind() == VariantKind::kSingle) {
    return std::isfinite(ToDouble(value, LocaleFacts{})) ? text : JsonString(text);
  }
  const auto digits = std::ranges::count_if(text, [](char c) { return c >= '0' && c <= '9'; });
  return digits <= kExactDigits ? text : JsonString(text);
}

}  // namespace sabrel::cli
