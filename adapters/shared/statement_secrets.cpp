#include "adapters/shared/statement_secrets.h"

#include <algorithm>

#include "sabrel/platform/utf8.h"

namespace sabrel {
namespace {

constexpr std::string_view kHidden = "***";
constexpr std::string_view kSpace = " \t\r\n\f\v";

bool IsWordByte(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= 'a' && byte <= 'z') || byte == '_' || byte == '$' || byte == '#' || byte >= 0x80;
}

class PasswordHider {
 public:
  explicit PasswordHider(std::string_view text) : text_(text) {}

  std::string Run() {
    while (at_ < text_.size()) {
      const std::string_view word = WordAt(at_);
      const std::size_t after = at_ + std::max<std::size_t>(word.size(), 1);
      if (EqualIgnoringCase(word, "IDENTIFIED")) {
        HideAfterBy(after);
      } else if (EqualIgnoringCase(word, "PASSWORD") && IsQuote(SkipSpace(after), '\'')) {
        Hide(SkipSpace(after));
      } else {
        KeepTo(after);
      }
    }
    return std::move(kept_);
  }

 private:
  [[nodiscard]] std::string_view WordAt(std::size_t from) const {
    std::size_t end = from;
    while (end < text_.size() && IsWordByte(text_[end])) ++end;
    return text_.substr(from, end - from);
  }
  [[nodiscard]] bool IsQuote(std::size_t at, char quote) const {
    return at < text_.size() && text_[at] == quote;
  }

  // Comments count as space.
  [[nodiscard]] std::size_t SkipSpace(std::size_t from) const {
    while (from < text_.size()) {
      const std::string_view rest = text_.substr(from);
      const bool is_comment = rest.starts_with("/*") || rest.starts_with("--");
      if (!is_comment && kSpace.find(rest.front()) == std::string_view::npos) return from;
      if (!is_comment) {
        ++from;
        continue;
      }
      const std::string_view close = rest.starts_with("/*") ? "*/" : "\n";
      const std::size_t end = rest.find(close, 2);
      from = end == std::string_view::npos ? text_.size() : from + end + close.size();
    }
    return from;
  }

  void HideAfterBy(std::size_t after) {
    std::size_t next = SkipSpace(after);
    if (!EqualIgnoringCase(WordAt(next), "BY")) return KeepTo(after);
    next = SkipSpace(next + 2);
    if (EqualIgnoringCase(WordAt(next), "VALUES")) next = SkipSpace(next + 6);
    Hide(next);
    next = SkipSpace(at_);
    if (EqualIgnoringCase(WordAt(next), "REPLACE")) Hide(SkipSpace(next + 7));
  }

  void KeepTo(std::size_t end) {
    kept_.append(text_.substr(at_, end - at_));
    at_ = end;
  }

  void Hide(std::size_t from) {
    KeepTo(from);
    if (from >= text_.size()) return;
    kept_.append(kHidden);
    at_ = EndOfSecret(from);
  }

  // Quotes within a constant are doubled once for each constant around it: the secret ends where as
  // many quotes stand as it starts with, unless they are its own, doubled.
  [[nodiscard]] std::size_t EndOfSecret(std::size_t from) const {
    const char quote = text_[from];
    if (quote != '\'' && quote != '"') {
      return std::min(text_.find_first_of(" \t\r\n\f\v;'\"", from), text_.size());
    }
    const auto run_at = [&](std::size_t at) {
      return std::min(text_.find_first_not_of(quote, at), text_.size()) - at;
    };
    const std::size_t opening = run_at(from);
    std::size_t at = from + opening;
    while ((at = text_.find(quote, at)) != std::string_view::npos) {
      const std::size_t run = run_at(at);
      if (run >= opening && run != 2 * opening) return at + opening;
      at += run;
    }
    return text_.size();
  }

  std::string_view text_;
  std::size_t at_ = 0;
  std::string kept_;
};

}  // namespace

std::string WithoutDeclaredPasswords(std::string_view text) {
  if (!ContainsIgnoringCase(text, "identified") && !ContainsIgnoringCase(text, "password")) {
    return std::string(text);
  }
  return PasswordHider(text).Run();
}

}  // namespace sabrel
