// Passwords that a statement's own text declares.
#pragma once

#include <string>
#include <string_view>

namespace sabrel {

/// `text` with "***" for the word, name or constant after IDENTIFIED BY [VALUES], after the REPLACE
/// that may follow it, and for a constant after PASSWORD; also inside constants, where a block
/// keeps the statements that it runs. A quote that never closes hides the rest. Errors: none Cost:
/// one pass; a copy
[[nodiscard]] std::string WithoutDeclaredPasswords(std::string_view text);

}  // namespace sabrel
