#include "adapters/console/terminal.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>

#include "adapters/console/access_failure.h"
#include "sabrel/platform/utf8.h"

namespace sabrel {
namespace {

std::string Hexadecimal(std::uint32_t value, int digits) {
  std::string text;
  for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) {
    text += "0123456789ABCDEF"[(value >> static_cast<unsigned>(shift)) & 0xFU];
  }
  return text;
}

// Only two- and three-byte sequences can hold a character that steers, so longer ones decode to 0.
std::uint32_t SteeringCandidate(std::string_view sequence) {
  const auto bits = [&](std::size_t i) { return static_cast<unsigned char>(sequence[i]) & 0x3FU; };
  if (sequence.size() == 2) return (bits(0) & 0x1FU) << 6U | bits(1);
  if (sequence.size() == 3) return (bits(0) & 0x0FU) << 12U | bits(1) << 6U | bits(2);
  return 0;
}

// C1 controls, which some terminals obey, and the characters that reorder or hide what stands
// beside them.
bool Steers(std::uint32_t code_point) {
  const auto between = [&](std::uint32_t low, std::uint32_t high) {
    return code_point >= low && code_point <= high;
  };
  return between(0x80, 0x9F) || code_point == 0x061C || between(0x200B, 0x200F) ||
         between(0x2028, 0x202E) || between(0x2066, 0x2069) || code_point == 0xFEFF;
}

}  // namespace

std::string VisibleText(std::string_view text, std::string_view line_break) {
  std::string visible;
  visible.reserve(text.size());
  while (!text.empty()) {
    const auto byte = static_cast<unsigned char>(text.front());
    std::size_t length = FirstCharacterLength(text);
    if (byte == '\r' || byte == '\n') {
      visible += line_break;
      if (text.starts_with("\r\n")) length = 2;
    } else if (byte < 0x80 && (byte >= 0x20 || byte == '\t') && byte != 0x7F) {
      visible += text.front();
    } else if (length == 1) {
      visible += "\\x" + Hexadecimal(byte, 2);
    } else if (const std::uint32_t point = SteeringCandidate(text.substr(0, length));
               Steers(point)) {
      visible += "\\u" + Hexadecimal(point, 4);
    } else {
      visible += text.substr(0, length);
    }
    text.remove_prefix(length);
  }
  return visible;
}

std::optional<std::string> ReadTerminalLine(int descriptor) {
  // A terminal hands out at most one line per read, so nothing of the next line is taken.
  std::string line;
  std::array<char, 512> buffer{};
  while (!line.ends_with('\n')) {
    const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
    if (count <= 0) return std::nullopt;
    line.append(buffer.data(), static_cast<std::size_t>(count));
  }
  line.pop_back();
  return line;
}

void TerminalOutput::Put(std::string_view text) {
  // The C library locks the file for the length of the fwrite: no other thread's text comes
  // between.
  errno = 0;
  if (std::fwrite(text.data(), 1, text.size(), file_) != text.size() || std::fflush(file_) != 0) {
    const int reason = errno;
    std::clearerr(file_);
    throw AccessFailure("The terminal output cannot be written", reason);
  }
}

bool TerminalOutput::IsTerminal() const {
  const int descriptor = ::fileno(file_);
  return descriptor >= 0 && ::isatty(descriptor) == 1;
}

}  // namespace sabrel
