// `convert`: values as they are fetched into typed ones.
#include <map>
#include <memory>

#include "cli/argument.h"
#include "cli/commands/commands.h"
#include "sabrel/core/gsabrel.h"

namespace sabrel::cli {
namespace {

struct ConversionArguments {
  std::string kind;
  std::string value;
  std::int32_t null_number = 0;
};

using Conversion = Variant (*)(const Variant&, std::int32_t);

const std::map<std::string, Conversion>& Conversions() {
  static const std::map<std::string, Conversion> conversions = {
      {"string", [](const Variant& v, std::int32_t) { return Variant(GSabrel::CVString(v)); }},
      {"id", [](const Variant& v, std::int32_t) { return Variant(GSabrel::CVId(v)); }},
      {"int", [](const Variant& v, std::int32_t n) { return Variant(GSabrel::CVInt(v, n)); }},
      {"double", [](const Variant& v, std::int32_t n) { return Variant(GSabrel::CVDbl(v, n)); }},
      {"date", [](const Variant& v, std::int32_t) { return Variant(GSabrel::CVDateTime(v)); }},
      {"boolean", [](const Variant& v, std::int32_t) { return Variant(GSabrel::CVBoolean(v)); }},
  };
  return conversions;
}

int Convert(Context& context, const ConversionArguments& arguments, bool null_is_given) {
  if (null_is_given && arguments.kind != "int" && arguments.kind != "double") {
    throw UsageError("--null serves int and double only");
  }
  const Conversion convert = Conversions().at(arguments.kind);
  context.Print(convert(ParseArgument(arguments.value), arguments.null_number));
  return kDone;
}

}  // namespace

void AddConversionCommand(CLI::App& parent, Context& context) {
  const auto arguments = std::make_shared<ConversionArguments>();
  const auto null_is_given = std::make_shared<bool>(false);
  CLI::App& command = AddCommand(
      parent, context, "convert", "Convert a value as one that was fetched",
      "  sabrel convert string \" a b \"              a b: blanks around it go\n"
      "  sabrel convert int --null -1 null          -1: null has no number of its own\n"
      "  sabrel convert double text:2.5\n"
      "  sabrel convert date text:2024-03-09\n"
      "  sabrel convert boolean Y                   true; anything else is false",
      [arguments, null_is_given](Context& c) { return Convert(c, *arguments, *null_is_given); });
  std::vector<std::string> kinds;
  for (const auto& [kind, convert] : Conversions()) kinds.push_back(kind);
  command.add_option("KIND", arguments->kind, "string id int double date boolean")
      ->required()
      ->check(CLI::IsMember(kinds));
  command.add_option("VALUE", arguments->value, std::string(kArgumentHelp))->required();
  command
      .add_option_function<std::int32_t>(
          "--null",
          [arguments, null_is_given](std::int32_t number) {
            arguments->null_number = number;
            *null_is_given = true;
          },
          "What null is (int and double; default: 0)")
      ->type_name("INT");
}

}  // namespace sabrel::cli
