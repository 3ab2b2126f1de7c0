#include "sabrel/platform/xml_fragment.h"

namespace sabrel {
namespace {

void AppendEscaped(std::string& out, std::string_view text) {
  for (const char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '\'': out += "&apos;"; break;
      case '"': out += "&quot;"; break;
      default: out += c;
    }
  }
}

}  // namespace

std::string NamedValueFragment(std::string_view name, std::string_view value) {
  std::string out = "<PARAM Name='";
  AppendEscaped(out, name);
  out += "' Value='";
  AppendEscaped(out, value);
  out += "'/>";
  return out;
}

}  // namespace sabrel
