// Text on its way to and from the driver manager's wide functions: UTF-8 here, UTF-16 there.
#pragma once

#include <string>
#include <string_view>

namespace sabrel::odbc {

/// `text` is valid UTF-8. Cost: linear
[[nodiscard]] std::u16string ToWide(std::string_view text);
/// Appends to `out`; an unpaired surrogate becomes U+FFFD.
void AppendUtf8(std::u16string_view wide, std::string& out);
[[nodiscard]] std::string ToUtf8(std::u16string_view wide);

}  // namespace sabrel::odbc
