// SQL literals: what DBArg and its siblings write is one literal that reads back as the value, by
// a reader of its own and on the embedded server.
#include "sabrel/sql/literals.h"

#include <cmath>

#include "fuzz/site.h"
#include "fuzz/target.h"
#include "sabrel/platform/conversions.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::fuzz {
namespace {

using namespace MSabrel;

/// Takes a quoted constant off the front of `text`; nothing where there is none.
std::optional<std::string> TakeQuoted(std::string_view& text) {
  if (!text.starts_with('\'')) return std::nullopt;
  std::string value;
  for (std::size_t i = 1; i < text.size(); ++i) {
    if (text[i] != '\'') {
      value += text[i];
    } else if (i + 1 < text.size() && text[i + 1] == '\'') {
      value += text[i++];
    } else {
      text.remove_prefix(i + 1);
      return value;
    }
  }
  return std::nullopt;
}

bool Take(std::string_view& text, std::string_view token) {
  if (!text.starts_with(token)) return false;
  text.remove_prefix(token.size());
  return true;
}

/// Takes `value` as its literal off the front of `text`.
bool TakeLiteral(std::string_view& text, const Variant& value) {
  if (const auto* string = value.GetIf<std::string>()) {
    return string->empty() ? Take(text, "NULL") : TakeQuoted(text) == *string;
  }
  if (const auto* boolean = value.GetIf<bool>()) return Take(text, *boolean ? "'Y'" : "'N'");
  if (value.IsNull()) return Take(text, "NULL");
  if (value.IsEmpty()) return true;
  if (const auto* date = value.GetIf<Date>()) {
    if (date->IsZero()) return Take(text, "NULL");
    return Take(text, "TO_DATE(") && TakeQuoted(text) == FormatDateTime(*date, LocaleFacts{}) &&
           Take(text, ",'YYYY-MM-DD HH24:MI:SS')");
  }
  return Take(text, ToText(value, LocaleFacts{}));
}

void CheckOnServer(const Variant& value, const std::string& literal) {
  const std::optional<Variant> read = FirstValue(SelectFromDual(literal));
  const std::string seen = literal + " gives " + (read ? Shown(*read) : "nothing");
  if (const auto* text = value.GetIf<std::string>()) {
    if (!IsSendableText(*text)) return Require(!read, "text that is no UTF-8 is refused", seen);
    Require(read && (text->empty() ? read->IsNull() : Same(*read, value)), "text comes back", seen);
  } else if (const auto* date = value.GetIf<Date>()) {
    const bool same = read && (date->IsZero() ? read->IsNull()
                                              : read->kind() == VariantKind::kDate &&
                                                    read->Get<Date>().ToCivil() == date->ToCivil());
    Require(same, "a date comes back", seen);
  } else if (const auto* whole = value.GetIf<std::int32_t>()) {
    Require(read && ToDouble(*read, LocaleFacts{}) == static_cast<double>(*whole),
            "a whole number comes back", seen);
  } else if (const auto* real = value.GetIf<double>()) {
    // Beyond these the server's numbers end, on Oracle as here.
    if (*real != 0.0 && !(std::abs(*real) > 1e-100 && std::abs(*real) < 1e100)) return;
    const std::string digits = NumberText(*real, 15, ".");
    Require(read && NumberText(ToDouble(*read, LocaleFacts{}), 15, ".") == digits,
            "a number comes back with 15 digits", seen);
  }
}

}  // namespace

void Check(std::string_view bytes) {
  UsePlatform();
  Input input(bytes);
  std::vector<Variant> values;
  std::vector<Variant> assignments;
  while (!input.AtEnd() && values.size() < 8) {
    const Variant value = input.Value();
    std::string literal;
    // Dates beyond the calendar have no text.
    if (!DoneOr({RuntimeErrorNumber::kOverflow}, [&] { literal = DBArg(value); })) {
      Require(value.kind() == VariantKind::kDate, "has a literal", Shown(value));
      continue;
    }
    std::string_view rest = literal;
    Require(TakeLiteral(rest, value) && rest.empty(), "is one literal of the value", literal);
    CheckOnServer(value, literal);
    values.push_back(value);
    assignments.insert(assignments.end(), {Variant("N"), value});
  }
  const std::string list = DBArgs(values);
  std::string_view rest = list;
  bool read = Take(rest, " ");
  bool is_first = true;
  for (const Variant& value : values) {
    if (!is_first) read = read && Take(rest, ",");
    read = read && TakeLiteral(rest, value);
    is_first = is_first && value.IsEmpty();
  }
  Require(read && rest == " ", "is the list of the values", list);
  const std::string pairs = DBSetArgs(assignments);
  rest = pairs;
  read = Take(rest, " ");
  for (std::size_t i = 0; i < values.size(); ++i) {
    read = read && Take(rest, i == 0 ? "N = " : ",N = ") && TakeLiteral(rest, values[i]);
  }
  Require(read && rest == " ", "is the list of assignments", pairs);
}

}  // namespace sabrel::fuzz
