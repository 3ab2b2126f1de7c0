// Asking a person for a password without showing it.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace sabrel {

/// Shows `prompt` and reads one line from the terminal behind descriptor `input` with its echo off.
/// The echo comes back whatever happens: on return, on an exception, and on SIGINT, SIGTERM,
/// SIGHUP, SIGQUIT and SIGTSTP, which then act as they would have without the prompt. After a
/// suspension by any signal the prompt is shown again. Errors: 75 when `input` is no terminal,
/// at the end of the input, and when a signal that did not end the program interrupted the prompt.
/// One prompt at a time
[[nodiscard]] std::string PromptWithoutEcho(std::string_view prompt, int input = 0,
                                            std::FILE* output = stderr);

}  // namespace sabrel
