#include "cli/text_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>

#include "adapters/console/access_failure.h"
#include "adapters/console/terminal.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::cli {
namespace {

constexpr std::size_t kStepBytes = std::size_t{1} << 20U;
constexpr std::size_t kSliceBytes = std::size_t{64} << 10U;
constexpr unsigned kFirstNonAscii = 0x80;

class Descriptor {
 public:
  Descriptor(int descriptor, const std::string& what) : descriptor_(descriptor) {
    if (descriptor < 0) throw AccessFailure(what, errno);
  }
  ~Descriptor() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  [[nodiscard]] int Get() const noexcept { return descriptor_; }
  /// Some file systems tell only here that the disk is full.
  void Close(const std::string& what) {
    if (::close(std::exchange(descriptor_, -1)) != 0) throw AccessFailure(what, errno);
  }

 private:
  int descriptor_;
};

std::string ReadAll(Context& context, int descriptor, const std::string& what) {
  struct stat facts {};
  const bool has_size = ::fstat(descriptor, &facts) == 0 && S_ISREG(facts.st_mode);
  const auto total = has_size ? static_cast<std::size_t>(facts.st_size) : 0;
  if (::isatty(descriptor) == 1) context.StopProgress();
  std::string text;
  text.reserve(total + kStepBytes);
  std::size_t have = 0;
  while (true) {
    if (!context.Signals().WaitForInput(descriptor)) throw OutputCancelled();
    text.resize(have + kStepBytes);
    const ssize_t got = ::read(descriptor, text.data() + have, kStepBytes);
    if (got < 0 && errno != EINTR) throw AccessFailure(what, errno);
    if (got > 0) have += static_cast<std::size_t>(got);
    text.resize(have);
    if (got == 0) return text;
    context.Advance("reading", have, total);
  }
}

std::string HexByte(char byte) {
  std::array<char, 3> text{};
  std::snprintf(text.data(), text.size(), "%02X", unsigned{static_cast<unsigned char>(byte)});
  return text.data();
}

void RequireSendable(std::string_view text, const std::string& path) {
  const auto fault = FirstUnsendable(text);
  if (!fault) return;
  const bool is_input = path == "-";
  const std::string source = is_input ? "standard input" : path;
  const std::string where = "byte " + std::to_string(*fault + 1);
  const bool has_mark = text.starts_with("\xff\xfe") || text.starts_with("\xfe\xff");
  const std::string problem = text[*fault] == '\0'
                                  ? where + " is U+0000, which no Data Server takes"
                                  : where + " (hex " + HexByte(text[*fault]) + ") is no UTF-8";
  const std::string remedy =
      text[*fault] == '\0'
          ? "tr -d '\\000'"
          : std::string("iconv -f ") + (has_mark ? "UTF-16" : "ISO-8859-1") + " -t UTF-8";
  throw RuntimeError(RuntimeErrorNumber::kInvalidFileFormat,
                     "The text from " + source + " cannot be stored: " + problem +
                         ". Nothing was sent; convert the text first, for example with " + remedy +
                         (is_input ? "" : " < " + path));
}

// What was named by mistake must not be lost.
void RequireReplaceable(const Context& context, int descriptor, const std::string& what,
                        bool replace) {
  struct stat facts {};
  if (::fstat(descriptor, &facts) != 0) throw AccessFailure(what, errno);
  context.Reserved().RequireOther(facts, what);
  if (!replace && S_ISREG(facts.st_mode) && facts.st_size > 0) {
    throw RuntimeError(RuntimeErrorNumber::kAccessFailure,
                       what + " is not empty; name another file, or add --replace");
  }
  if (S_ISREG(facts.st_mode) && ::ftruncate(descriptor, 0) != 0) throw AccessFailure(what, errno);
}

void WriteSlices(Context& context, Output& out, std::string_view text) {
  for (std::size_t done = 0; done < text.size(); done += kSliceBytes) {
    if (context.Signals().Cancelled()) throw OutputCancelled();
    context.Advance("writing", done, text.size());
    out.Write(text.substr(done, kSliceBytes));
  }
  out.Flush();
}

}  // namespace

std::optional<std::size_t> FirstUnsendable(std::string_view text) noexcept {
  if (IsSendableText(text)) return std::nullopt;
  std::size_t at = 0;
  while (at < text.size()) {
    const std::size_t length = FirstCharacterLength(text.substr(at));
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte == 0 || (length == 1 && byte >= kFirstNonAscii)) break;
    at += length;
  }
  return at;
}

std::string ReadText(Context& context, const std::string& path) {
  std::string text;
  if (path == "-") {
    if (context.session) {
      throw UsageError("Inside the shell a text comes from a file: standard input has its lines");
    }
    text = ReadAll(context, STDIN_FILENO, "Standard input cannot be read");
  } else {
    const std::string what = "The file " + path;
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC), what);
    text = ReadAll(context, file.Get(), what);
  }
  RequireSendable(text, path);
  return text;
}

void WriteText(Context& context, std::string_view text, const std::string& path, bool replace) {
  if (!path.empty()) {
    const std::string what = "The file " + path;
    context.Reserved().RequireOther(path, what);
    constexpr int kMode = 0666;
    Descriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, kMode), what);
    RequireReplaceable(context, file.Get(), what, replace);
    Output out(file.Get(), what);
    WriteSlices(context, out, text);
    file.Close(what);
  } else if (context.Out().IsTerminal()) {
    context.StopProgress();
    context.Out().Write(VisibleText(text, "\n"));
  } else {
    WriteSlices(context, context.Out(), text);
  }
}

}  // namespace sabrel::cli
