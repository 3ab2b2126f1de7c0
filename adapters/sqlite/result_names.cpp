#include "adapters/sqlite/result_names.h"

#include <cctype>
#include <charconv>
#include <utility>
#include <vector>

#include "adapters/shared/dialect/token.h"
#include "adapters/sqlite/functions.h"
#include "adapters/sqlite/server.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::sqlite {
namespace {

bool IsWordCharacter(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '$' || c == '#' ||
         static_cast<unsigned char>(c) >= 0x80;
}

// Reads an expression from left to right; each function leaves `rest_` behind what it has read.
class NameReader {
 public:
  NameReader(std::string_view text, const std::vector<dialect::Constant>& constants)
      : rest_(text), constants_(&constants) {}

  // Up to the end, or to a "," or ")" that belongs to the caller.
  std::string Expression() {
    std::string out;
    while (!rest_.empty() && rest_.front() != ',' && rest_.front() != ')') {
      const char c = rest_.front();
      if (c == ' ') {
        Blank(out);
      } else if (c == '\'' || c == '"') {
        out += Quotation(c);
      } else if (c == '?') {
        out += LiftedConstant();
      } else if (c == '(') {
        out += "(" + Arguments() + ")";
      } else if (IsWordCharacter(c)) {
        out += WordOrCall();
      } else {
        out += Take(1);
      }
    }
    return out;
  }
  [[nodiscard]] bool AtEnd() const { return rest_.empty(); }

 private:
  std::string_view Take(std::size_t length) {
    const std::string_view taken = rest_.substr(0, length);
    rest_.remove_prefix(taken.size());
    return taken;
  }

  // A blank stays only where it parts two words.
  void Blank(std::string& out) {
    while (!rest_.empty() && rest_.front() == ' ') rest_.remove_prefix(1);
    if (!out.empty() && !rest_.empty() && IsWordCharacter(out.back()) &&
        IsWordCharacter(rest_.front())) {
      out += ' ';
    }
  }

  std::string_view Quotation(char quote) {
    const std::size_t end = rest_.find(quote, 1);
    return Take(end == std::string_view::npos ? rest_.size() : end + 1);
  }

  std::string LiftedConstant() {
    Take(1);
    std::size_t number = 0;
    const auto end = std::from_chars(rest_.data(), rest_.data() + rest_.size(), number).ptr;
    Take(static_cast<std::size_t>(end - rest_.data()));
    if (number == 0 || number > constants_->size()) return "?";
    const dialect::Constant& constant = (*constants_)[number - 1];
    const bool is_text = constant.kind == dialect::Constant::Kind::kText;
    return is_text ? dialect::TextConstant(constant.text) : TextOf(ValueOf(constant));
  }

  // The list in parentheses that starts here, joined by commas.
  std::string Arguments() {
    std::string joined;
    for (const std::string& argument : ArgumentList()) {
      joined += (joined.empty() ? "" : ",") + argument;
    }
    return joined;
  }

  std::vector<std::string> ArgumentList() {
    std::vector<std::string> arguments;
    do {
      Take(1);
      arguments.push_back(Expression());
    } while (!rest_.empty() && rest_.front() == ',');
    Take(1);
    return arguments;
  }

  std::string WordOrCall() {
    std::size_t length = 0;
    while (length < rest_.size() && IsWordCharacter(rest_[length])) ++length;
    const std::string word(Take(length));
    if (!word.starts_with("sabrel_") || rest_.empty() || rest_.front() != '(') return word;
    return OwnFunction(word, ArgumentList());
  }

  // A call of one of this server's functions, as the statement had it.
  static std::string OwnFunction(const std::string& name, std::vector<std::string> arguments) {
    constexpr std::pair<std::string_view, std::string_view> kOperators[] = {
        {"sabrel_add", "+"}, {"sabrel_sub", "-"}, {"sabrel_div", "/"}, {"sabrel_concat", "||"}};
    for (const auto& [function, sign] : kOperators) {
      if (name == function && arguments.size() == 2) {
        return arguments[0] + std::string(sign) + arguments[1];
      }
    }
    if (name == "sabrel_sysdate") return "SYSDATE";
    if (name == "sabrel_nextval") return "NEXTVAL";
    if (name == "sabrel_currval") return "CURRVAL";
    std::string routine = arguments.front();
    if (routine.size() >= 2) routine = routine.substr(1, routine.size() - 2);
    arguments.erase(arguments.begin());
    std::string call = routine + "(";
    for (std::size_t i = 0; i < arguments.size(); ++i) call += (i > 0 ? "," : "") + arguments[i];
    return call + ")";
  }

  std::string_view rest_;
  const std::vector<dialect::Constant>* constants_;
};

}  // namespace

std::string ResultName(std::string_view engine_name, const dialect::Rewritten& rewritten) {
  const std::string name(engine_name);
  if (rewritten.text.find("\"" + name + "\"") != std::string::npos) return name;
  NameReader reader(engine_name, rewritten.constants);
  std::string written = reader.Expression();
  return UpperCase(reader.AtEnd() ? written : name);
}

}  // namespace sabrel::sqlite
