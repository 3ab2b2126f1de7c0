#include "sabrel/sql/value_conversion.h"

#include "sabrel/platform/conversions.h"
#include "sabrel/platform/platform.h"
#include "sabrel/platform/text_to_number.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::MSabrel {
namespace {

// What the Data Server sends for a number that is none.
bool IsNotANumberText(const Variant& value) {
  const auto* text = value.GetIf<std::string>();
  return text != nullptr && TrimBlanks(*text) == "(NaN)";
}

}  // namespace

std::string CVString(const Variant& vString) {
  return std::string(TrimBlanks(ToJoinedText(vString)));
}

std::int32_t CVId(const Variant& vId) { return vId.IsNull() ? 0 : ToInt32(vId); }

std::int32_t CVInt(const Variant& vInt, std::int32_t iNull) {
  return vInt.IsNull() || IsNotANumberText(vInt) ? iNull : ToInt32(vInt);
}

double CVDbl(const Variant& vInt, std::int32_t iNull) {
  const LocaleFacts locale = CurrentPlatform().services->Locale();
  const Variant value = vInt.IsNull() ? Variant(static_cast<double>(iNull)) : vInt;
  return TextToNumber(ToText(value, locale), locale.decimal_separator);
}

Date CVDateTime(const Variant& vDate) { return vDate.IsNull() ? Date() : ToDate(vDate); }

bool CVBoolean(const Variant& vYesNo) noexcept {
  const auto* text = vYesNo.GetIf<std::string>();
  return text != nullptr && *text == "Y";
}

}  // namespace sabrel::MSabrel
