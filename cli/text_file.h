// Texts of any length from files and standard input, and to files and standard output, byte for
// byte.
//
// Read once and moved on, so that a text is in memory only once before it is sent. What a server
// would refuse is refused here, before anything is sent.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "cli/context.h"

namespace sabrel::cli {

/// The file's content; "-" is standard input. Errors: 75; 321 naming the first byte that cannot be
/// stored; UsageError for standard input inside the shell, which reads its lines there;
/// OutputCancelled
[[nodiscard]] std::string ReadText(Context& context, const std::string& path);

/// Writes to the file, with `replace` in the place of what it held, or to standard output when
/// `path` is empty. A terminal gets the text with its control characters made visible. Errors: 75,
/// also for a file that is reserved (Context::Reserved) or, without `replace`, not empty; as
/// Output::Write; OutputCancelled
void WriteText(Context& context, std::string_view text, const std::string& path, bool replace);

/// Where the first character starts that no statement can hold: an invalid byte or U+0000.
[[nodiscard]] std::optional<std::size_t> FirstUnsendable(std::string_view text) noexcept;

}  // namespace sabrel::cli
