// Message templates: places are filled as a second reading of the rules says, arguments are never
// looked into.
#include "sabrel/platform/template_text.h"

#include "fuzz/target.h"

namespace sabrel::fuzz {
namespace {

/// The argument that the digits name; nothing where there is none.
std::string_view Named(std::string_view digits, const std::vector<std::string>& arguments) {
  digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (std::to_string(i + 1) == digits) return arguments[i];
  }
  return {};
}

std::string Filled(std::string_view text, const std::vector<std::string>& arguments) {
  std::string filled;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::size_t end = std::min(text.find_first_not_of("0123456789", i + 1), text.size());
    if (text[i] != '$' || end == i + 1) {
      filled += text[i];
      continue;
    }
    filled += Named(text.substr(i + 1, end - i - 1), arguments);
    i = end - 1;
  }
  return filled;
}

}  // namespace

void Check(std::string_view bytes) {
  Input input(bytes);
  std::vector<std::string> arguments(input.Choice(12));
  for (std::string& argument : arguments) argument = input.Text().substr(0, 20);
  const std::string_view text = input.Rest();
  const std::string filled = FillTemplate(text, arguments);
  Require(filled == Filled(text, arguments), "a template is filled", filled);
  // What looks like a place in an argument is text.
  for (std::string& argument : arguments) argument = "$1$2$999";
  Require(FillTemplate(text, arguments) == Filled(text, arguments),
          "an argument is not looked at again", text);
}

}  // namespace sabrel::fuzz
