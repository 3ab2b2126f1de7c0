// `literal`: values as SQL text.
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "cli/argument.h"
#include "cli/commands/commands.h"
#include "sabrel/core/gsabrel.h"
#include "sabrel/platform/conversions.h"

namespace sabrel::cli {
namespace {

using Texts = std::vector<std::string>;

std::int32_t WholeNumber(const std::string& text) {
  const Variant value = ParseArgument(text);
  if (const auto* number = value.GetIf<std::int32_t>()) return *number;
  throw UsageError("'" + text + "' is no whole number of 32 bits");
}

double Number(const std::string& text) {
  const Variant value = ParseArgument(text);
  if (!IsNumber(value)) throw UsageError("'" + text + "' is no number");
  return ToDouble(value, LocaleFacts{});
}

Date DateOf(const std::string& text) {
  return ParseIsoDate(text.starts_with("date:") ? text.substr(5) : text);
}

// The elements of an assignment list: names stay text whatever they look like.
std::vector<Variant> Pairs(const Texts& texts) {
  std::vector<Variant> values = ParseArguments(texts);
  for (std::size_t i = 0; i < values.size(); i += 2) values[i] = Variant(texts[i]);
  return values;
}

struct Kind {
  std::string_view name;
  std::size_t least;
  std::size_t most;
  std::function<std::string(const Texts&)> text;
};

constexpr std::size_t kAnyNumber = static_cast<std::size_t>(-1);

const std::vector<Kind>& Kinds() {
  static const std::vector<Kind> kinds = {
      {"str", 1, 1, [](const Texts& v) { return GSabrel::DBStr(v[0]).Value(); }},
      {"ord", 1, 1, [](const Texts& v) { return GSabrel::DBOrd(WholeNumber(v[0])).Value(); }},
      {"int", 1, 2,
       [](const Texts& v) {
         return GSabrel::DBInt(WholeNumber(v[0]), v.size() > 1 ? WholeNumber(v[1]) : 0).Value();
       }},
      {"float", 1, 2,
       [](const Texts& v) {
         return GSabrel::DBFloat(Number(v[0]), v.size() > 1 ? WholeNumber(v[1]) : 0).Value();
       }},
      {"date", 1, 1, [](const Texts& v) { return GSabrel::DateToDBString(DateOf(v[0])).Value(); }},
      {"date-string", 2, 2,
       [](const Texts& v) { return GSabrel::DBDateString(v[0], v[1]).Value(); }},
      {"arg", 1, 1, [](const Texts& v) { return GSabrel::DBArg(ParseArgument(v[0])); }},
      {"args", 0, kAnyNumber, [](const Texts& v) { return GSabrel::DBArgs(ParseArguments(v)); }},
      {"set-args", 0, kAnyNumber, [](const Texts& v) { return GSabrel::DBSetArgs(Pairs(v)); }},
      {"now", 0, 0, [](const Texts&) { return GSabrel::CurrentDateTime().Value(); }},
      {"sequence", 1, 1, [](const Texts& v) { return GSabrel::NextInSequence(v[0]).Value(); }},
      {"pad", 1, 1, [](const Texts& v) { return GSabrel::PadStr(v[0]); }},
  };
  return kinds;
}

int Literal(Context& context, const std::string& name, const Texts& values) {
  for (const Kind& kind : Kinds()) {
    if (kind.name != name) continue;
    if (values.size() < kind.least || values.size() > kind.most) {
      throw UsageError("literal " + name + " takes " + std::to_string(kind.least) +
                       (kind.most == kind.least ? "" : " or more") + " value(s)");
    }
    const std::string text = kind.text(values);
    // SQL text is printed as it is; only the forms for machines wrap it.
    if (context.options.format == Format::kTable) {
      context.Out().Write(text + "\n");
    } else {
      context.Print(Variant(text));
    }
    return kDone;
  }
  throw UsageError("There is no kind of literal named " + name);
}

}  // namespace

void AddLiteralCommand(CLI::App& parent, Context& context) {
  const auto name = std::make_shared<std::string>();
  const auto values = std::make_shared<Texts>();
  CLI::App& command = AddCommand(
      parent, context, "literal", "Print values as SQL text",
      "  sabrel literal str \"O'Hara\"                 'O''Hara'\n"
      "  sabrel literal int 7 7                      NULL: the second number stands for null\n"
      "  sabrel literal date 2024-03-09T17:05:00\n"
      "  sabrel literal date-string 09.03.2024 DD.MM.YYYY\n"
      "  sabrel literal args 5 2.5 text null true\n"
      "  sabrel literal set-args NAME abc AGE 5",
      [name, values](Context& c) { return Literal(c, *name, *values); });
  std::vector<std::string> names;
  std::string listed;
  for (const Kind& kind : Kinds()) {
    names.emplace_back(kind.name);
    listed += (listed.empty() ? "" : " ") + names.back();
  }
  command.add_option("KIND", *name, listed)->required()->check(CLI::IsMember(names));
  command.add_option("VALUE", *values, std::string(kArgumentHelp));
}

}  // namespace sabrel::cli
