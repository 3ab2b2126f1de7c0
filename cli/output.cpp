#include "cli/output.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <utility>

#include "adapters/console/access_failure.h"
#include "cli/exit_status.h"

namespace sabrel::cli {
namespace {

constexpr std::size_t kBufferBytes = std::size_t{64} << 10U;
constexpr std::size_t kLeastWidth = 20;

bool WantsNoStyles() {
  const char* no_color = std::getenv("NO_COLOR");
  const char* terminal = std::getenv("TERM");
  return (no_color != nullptr && *no_color != '\0') || terminal == nullptr ||
         std::string_view(terminal) == "dumb";
}

}  // namespace

Output::Output(int descriptor, std::string name)
    : descriptor_(descriptor),
      name_(std::move(name)),
      is_terminal_(::isatty(descriptor) == 1),
      uses_styles_(is_terminal_ && !WantsNoStyles()) {}

void Output::Write(std::string_view text) {
  buffer_.append(text);
  if (buffer_.size() >= kBufferBytes) Flush();
}

void Output::Flush() {
  const std::string pending = std::exchange(buffer_, {});
  std::string_view rest = pending;
  while (!rest.empty()) {
    const ssize_t written = ::write(descriptor_, rest.data(), rest.size());
    if (written >= 0) {
      rest.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EPIPE) {
      throw OutputClosed();
    } else if (errno != EINTR) {
      throw AccessFailure(name_ + " cannot be written", errno);
    }
  }
}

std::optional<std::size_t> Output::Width() const {
  if (!is_terminal_) return std::nullopt;
  winsize size{};
  if (::ioctl(descriptor_, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
    return std::max<std::size_t>(size.ws_col, kLeastWidth);
  }
  const char* columns = std::getenv("COLUMNS");
  const long width = columns == nullptr ? 0 : std::strtol(columns, nullptr, 10);
  return width > 0 ? std::max(static_cast<std::size_t>(width), kLeastWidth) : kUsualWidth;
}

}  // namespace sabrel::cli
