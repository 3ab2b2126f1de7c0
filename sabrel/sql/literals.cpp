#include "sabrel/sql/literals.h"

#include <algorithm>

#include "sabrel/core/query_execution.h"
#include "sabrel/platform/conversions.h"
#include "sabrel/platform/platform.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::MSabrel {
namespace {

constexpr int kSingleDigits = 7;
constexpr int kDoubleDigits = 15;

std::string Quoted(std::string_view s) {
  std::string quoted;
  quoted.reserve(s.size() + 2 + static_cast<std::size_t>(std::count(s.begin(), s.end(), '\'')));
  quoted.push_back('\'');
  for (const char c : s) {
    if (c == '\'') quoted.push_back('\'');
    quoted.push_back(c);
  }
  quoted.push_back('\'');
  return quoted;
}

std::string ObjectArg(const Variant& v) {
  const ObjectRef& object = v.Get<ObjectRef>();
  if (!object) throw RuntimeError(RuntimeErrorNumber::kTypeMismatch);
  if (const auto* literal = dynamic_cast<const CDBLiteral*>(object.get())) return literal->Value();
  return ToText(v);
}

}  // namespace

CDBLiteral DBLiteral(std::string_view s) { return CDBLiteral(std::string(s)); }

CDBLiteral DBStr(std::string_view s) { return CDBLiteral(s.empty() ? "NULL" : Quoted(s)); }

CDBLiteral DBOrd(std::int32_t ord) { return DBInt(ord, 0); }

CDBLiteral DBInt(std::int32_t i, std::int32_t iNull) {
  return CDBLiteral(i == iNull ? "NULL" : std::to_string(i));
}

CDBLiteral DBFloat(double i, std::int32_t iNull) {
  const auto sentinel = static_cast<double>(iNull);
  if (!(i < sentinel) && !(i > sentinel)) return CDBLiteral("NULL");
  return CDBLiteral(NumberText(i, kDoubleDigits, "."));
}

CDBLiteral DBDateString(std::string_view sDate, std::string_view sFormat) {
  if (sDate.empty()) return CDBLiteral("NULL");
  return CDBLiteral("TO_DATE(" + DBStr(sDate) + "," + DBStr(sFormat) + ")");
}

CDBLiteral DateToDBString(const Date& d) {
  if (d.IsZero()) return CDBLiteral("NULL");
  // The server reads ":" whatever the user's locale writes between hours and minutes.
  static const LocaleFacts colons;
  return DBDateString(FormatDateTime(d, colons), "YYYY-MM-DD HH24:MI:SS");
}

CDBLiteral CurrentDateTime() { return CDBLiteral("TRUNC(SYSDATE,'MI')"); }

CDBLiteral NextInSequence(std::string_view sSequence) {
  return CDBLiteral(std::string(sSequence) + ".NEXTVAL");
}

Date GetCurrentDateTime() {
  return ExecuteQueryReturningDate(SelectFromDual(CurrentDateTime().Value()));
}

std::int32_t GetNextInSequence(std::string_view sSequence) {
  const std::int32_t next =
      ExecuteQueryReturningLong(SelectFromDual(NextInSequence(sSequence).Value()));
  CurrentPlatform().services->Assertion(next > 0, "Sabrel", "MSabrel", "GetNextInSequence", "");
  return next;
}

std::string PadStr(std::string_view s) { return " " + std::string(s) + " "; }

std::string DBArg(const Variant& v) {
  switch (v.kind()) {
    case VariantKind::kObject: return ObjectArg(v);
    case VariantKind::kNull: return "NULL";
    case VariantKind::kSingle:
      return NumberText(static_cast<double>(v.Get<float>()), kSingleDigits, ".");
    case VariantKind::kDouble: return NumberText(v.Get<double>(), kDoubleDigits, ".");
    case VariantKind::kDate: return DateToDBString(v.Get<Date>()).Value();
    case VariantKind::kString: return DBStr(v.Get<std::string>()).Value();
    case VariantKind::kBoolean: return DBStr(v.Get<bool>() ? "Y" : "N").Value();
    case VariantKind::kEmpty: return {};
    default: return ToText(v);
  }
}

std::string DBArgs(std::span<const Variant> vArgs) {
  std::string list;
  for (const Variant& v : vArgs) {
    if (!list.empty()) list += ",";
    list += DBArg(v);
  }
  return PadStr(list);
}

std::string DBSetArgs(std::span<const Variant> vArgs) {
  std::string list;
  bool at_name = true;
  for (const Variant& v : vArgs) {
    if (at_name) {
      if (!list.empty()) list += ",";
      list += ToJoinedText(v) + " = ";
    } else {
      list += DBArg(v);
    }
    at_name = !at_name;
  }
  return PadStr(list);
}

std::string SelectFromDual(std::string_view sExpression) {
  return "SELECT " + std::string(sExpression) + " FROM DUAL";
}

}  // namespace sabrel::MSabrel
