#include "sabrel/platform/template_text.h"

#include <algorithm>

namespace sabrel {
namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

std::string FillTemplate(std::string_view text, std::span<const std::string> arguments) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const std::size_t place = std::min(text.find('$'), text.size());
    out += text.substr(0, place);
    text.remove_prefix(place);
    if (text.empty()) break;
    text.remove_prefix(1);
    if (text.empty() || !IsDigit(text.front())) {
      out += '$';
      continue;
    }
    std::size_t number = 0;
    for (; !text.empty() && IsDigit(text.front()); text.remove_prefix(1)) {
      // Stays above every argument once it is, however many digits follow.
      number = std::min(number * 10 + static_cast<std::size_t>(text.front() - '0'),
                        arguments.size() + 1);
    }
    if (number >= 1 && number <= arguments.size()) out += arguments[number - 1];
  }
  return out;
}

}  // namespace sabrel
