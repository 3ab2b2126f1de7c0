#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <thread>

#include "adapters/console/console_services.h"
#include "adapters/console/environment_locale.h"
#include "adapters/console/password_prompt.h"
#include "adapters/console/registry_file.h"
#include "tests/platform/failures.h"
#include "tests/support/pseudo_terminal.h"
#include "tests/support/sample_site_copy.h"

namespace sabrel {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using testing::TemporaryFolder;

template <class Call>
std::string FailureOfCall(const Call& call) {
  const RuntimeError failure = testing::FailureIn([&] { return call(), 0; });
  return std::to_string(failure.Number()) + " " + failure.Description();
}

std::string Contents(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

// A terminal whose person waits for the end of each prompt and then types the next answer.
class Terminal {
 public:
  Terminal() {
    if (::openpty(&person_, &program_, nullptr, nullptr, nullptr) != 0) std::abort();
    file_ = ::fdopen(::dup(program_), "r+");
  }
  ~Terminal() {
    std::fclose(file_);
    ::close(program_);
    ::close(person_);
  }
  [[nodiscard]] std::FILE* File() const { return file_; }
  [[nodiscard]] int Descriptor() const { return program_; }
  [[nodiscard]] bool Echoes() const { return (State().c_lflag & ECHO) != 0; }
  // The echo of what is typed ahead would arrive between any two lines.
  void Hush() const {
    termios state = State();
    state.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    ::tcsetattr(program_, TCSANOW, &state);
  }
  // What the terminal showed up to and with `awaited`.
  std::string ReadTo(std::string_view awaited) {
    std::string seen;
    for (char c = 0; !seen.ends_with(awaited) && ::read(person_, &c, 1) == 1;) seen += c;
    return seen;
  }
  void Type(std::string_view text) { EXPECT_GT(::write(person_, text.data(), text.size()), 0); }

 private:
  [[nodiscard]] termios State() const {
    termios state{};
    ::tcgetattr(program_, &state);
    return state;
  }
  int person_ = -1;
  int program_ = -1;
  std::FILE* file_ = nullptr;
};

// Registry text

constexpr std::string_view kHeader = "Windows Registry Editor Version 5.00\r\n";

std::string Utf16(std::u16string_view text) {
  std::string bytes = "\xFF\xFE";
  for (const char16_t unit : text) {
    bytes += static_cast<char>(unit & 0xFF);
    bytes += static_cast<char>(unit >> 8);
  }
  return bytes;
}
std::string Utf16OfAscii(std::string_view text) {
  return Utf16(std::u16string(text.begin(), text.end()));
}

std::string ReadSetting(std::string_view bytes, std::string_view name) {
  const auto key = RegistryFile::FromBytes(bytes, "s.reg").OpenKey("\\HKEY_LOCAL_MACHINE\\A\\b");
  return !key ? "no key" : key->ReadString(name, key->ReadBoolean(name, false) ? "true" : "-");
}

TEST(RegistryFile, ReadsValuesAndNamesTheLineThatIsWrong) {
  // Lines, of which "v" of the key A\B is read.
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"LF only, comments, blanks", ";c\n\n [hklm\\a\\b] ; c\n \"v\" = \"x;y\" ;c\n", "x;y"},
      {"escapes", "[HKLM\\A\\B]\n\"v\"=\"C:\\\\Q \\\"x\\\"\"\n", "C:\\Q \"x\""},
      {"dword", "[HKLM\\A\\B]\n\"v\"=dword:0000002A\n", "true"},
      {"qword", "[HKLM\\A\\B]\n\"v\"=hex(b):00,00,00,00,00,00,00,80\n", "true"},
      {"UTF-16 over lines", "[HKLM\\A\\B]\n\"v\"=hex(2):25,00,\\\r\n  41,00,00,00\n", "%A"},
      {"value removed", "[HKLM\\A\\B]\n\"v\"=\"x\"\n\"V\"=-\n", "-"},
      {"key removed", "[HKLM\\A\\B\\C]\n[-HKLM\\a\\b]\n[-HKLM\\x\\y]\n", "no key"},
      {"unknown hive", "[HKEY\\A]\n", "line 2: the key does not start"},
      {"value under removed", "[-HKLM\\A]\n\"v\"=-\n", "line 3: the value stands under no key"},
      {"single backslash", "[HKLM\\A]\n\"v\"=\"C:\\x\"\n", "line 3: a backslash"},
      {"text open", "[HKLM\\A]\n\"v\"=\"x\n\n", "line 3: the text is not closed"},
      {"odd type", "[HKLM\\A]\n\"v\"=hex(g):00\n", "line 3: the type of the value is not known"},
      {"short dword", "[HKLM\\A]\n\"v\"=dword:0000002\n", "line 3: a number of 8 hex"},
      {"half character", "[HKLM\\A]\n\"v\"=hex(1):41\n", "line 3: the text ends in half"},
      {"garbage", "[HKLM\\A]\nv=1\n", "line 3: this is neither a key"},
      {"cut behind a value", "[HKLM\\A]\n\"v\"=\"x\"",
       "line 3: the file ends without a line break"},
      {"cut list", "[HKLM\\A]\n\"v\"=hex(2):41,00,\\\n", "line 4: the list of bytes ends with a"},
  };
  for (const auto& [name, lines, expected] : rows) {
    SCOPED_TRACE(name);
    const std::string text = std::string(kHeader) + lines;
    for (const std::string& bytes : {text, "\xEF\xBB\xBF" + text, Utf16OfAscii(text)}) {
      std::string read;
      const std::string failure = FailureOfCall([&] { read = ReadSetting(bytes, "v"); });
      if (failure == "0 ") {
        EXPECT_EQ(read, expected);
      } else {
        EXPECT_THAT(failure, HasSubstr(expected));
        EXPECT_THAT(failure, HasSubstr("321 The settings file \"s.reg\" is not usable, line "));
      }
    }
  }
}

TEST(RegistryFile, TakesOrRefusesEncodings) {
  const std::u16string start = u"Windows Registry Editor Version 5.00\n[HKLM\\A\\B]\n\"v\"=\"";
  const std::u16string halves = {u'é', 0xD83D, 0xDE00, u'x', 0xD83D, u'y', 0xDE00, u'"', u'\n'};
  EXPECT_EQ(ReadSetting(Utf16(start + halves), "v"), "é😀x\uFFFDy\uFFFD");
  const std::string ansi = "REGEDIT4\n[HKLM\\A\\B]\n\"v\"=hex(2):41,";
  EXPECT_EQ(ReadSetting(ansi + "42,00\n", "v"), "AB");

  std::string deep = "REGEDIT4\n[HKLM";
  for (int i = 0; i < 600; ++i) deep += "\\k";
  const std::pair<std::string, const char*> refused[] = {
      {ansi + "E9\n", "line 3: the text is not UTF-8"},
      {"REGEDIT4\n;\xE9\n", "line 2: the text is neither UTF-8"},
      {"\xFE\xFF" + std::string(kHeader), "big-endian"},
      {Utf16(start).substr(2), "byte-order mark"},
      {Utf16(start) + "x", "line 3: the file ends inside a character"},
      {deep + "]\n", "line 2: the key is nested too deeply"}};
  for (const auto& [bytes, told] : refused) {
    EXPECT_THAT(FailureOfCall([&, &text = bytes] { (void)ReadSetting(text, "v"); }),
                HasSubstr(told));
  }
}

TEST(RegistryFile, OpensKeysThatOutliveIt) {
  auto registry = std::make_unique<RegistryFile>(
      RegistryFile::FromBytes("REGEDIT4\n[HKLM\\A\\B\\C]\n@=\"x\"\n", "s.reg"));
  EXPECT_EQ(registry->OpenKey("\\HKEY_LOCAL_MACHINE\\A\\X"), nullptr);
  const auto key = registry->OpenKey("\\hkey_local_machine\\a");
  registry.reset();
  EXPECT_EQ(key->OpenSubkey("C"), nullptr);
  EXPECT_EQ(key->OpenSubkey("b\\c")->ReadString("", "d"), "x");
  EXPECT_THAT(FailureOfCall([] { RegistryFile("/"); }),
              ::testing::ContainsRegex("75 .*Is a directory"));
}

// Message boxes

TEST(ConsoleServices, AnswersBoxesByModeAndStyleWhereNobodyCanBeAsked) {
  const std::tuple<AnswerMode, std::int32_t, std::int32_t, const char*> rows[] = {
      {AnswerMode::kYes, 52, 6, "[exclamation] C d\n  a\n  b\\x07\n  Yes or No? Yes\n"},
      {AnswerMode::kNo, 20, 7, "[critical] C d\n  a\n  b\\x07\n  Yes or No? No\n"},
      {AnswerMode::kAsk, 292, 7, "[question] C d\n  a\n  b\\x07\n  Yes or No? No\n"},
      {AnswerMode::kAsk, 0, 1, "[message] C d\n  a\n  b\\x07\n"},
  };
  const TemporaryFolder folder;
  for (const auto& [mode, style, answer, shown] : rows) {
    ConsoleServicesOptions options;
    options.answer = mode;
    options.terminal = std::fopen(folder.Path("box").c_str(), "w");
    EXPECT_EQ(ConsoleServices(options).ShowMessage("a\r\nb\a", style, "C\r\nd"), answer);
    std::fclose(options.terminal);
    EXPECT_EQ(Contents(folder.Path("box")), shown);
  }
}

TEST(ConsoleServices, AsksThePersonAtTheTerminal) {
  if (!testing::HasPseudoTerminal()) GTEST_SKIP() << "no pseudo-terminal";
  const std::tuple<const char*, std::int32_t, std::int32_t> rows[] = {
      {"YES\n", 292, 6}, {" no \n", 52, 7}, {"\n", 292, 7},
      {"\n", 52, 6},     {"\x04", 52, 7},   {"what\ny\n", 292, 6}};
  for (const auto& [typed, style, answer] : rows) {
    SCOPED_TRACE(typed);
    Terminal terminal;
    terminal.Hush();
    ConsoleServicesOptions options;
    options.terminal = terminal.File();
    options.answers_from = terminal.Descriptor();
    ConsoleServices services(options);
    terminal.Type(typed);
    EXPECT_EQ(services.ShowMessage("text", style, "caption"), answer);
    terminal.ReadTo("] ");
    EXPECT_EQ(terminal.ReadTo("] "), std::string("caption\r\n  text\r\n  Yes or No? ") +
                                         (style == 292 ? "[y/N] " : "[Y/n] "));
  }
}

TEST(VisibleText, ShowsWhatCouldSteerATerminal) {
  EXPECT_EQ(VisibleText("\t é€😀 a\r\nb\nc\rd\n\re", "|"), "\t é€😀 a|b|c|d||e");
  EXPECT_EQ(VisibleText(std::string("\x1B[31m\x7F\0b", 8), "|"), "\\x1B[31m\\x7F\\x00b");
  EXPECT_EQ(VisibleText("\u009B\u00A0\u202E\u2028", "|"), "\\u009B\u00A0\\u202E\\u2028");
  EXPECT_EQ(VisibleText("\x9B\xC3(\xE2\x82", "|"), "\\x9B\\xC3(\\xE2\\x82");
}

// Trace and log

ConsoleServicesOptions LogTo(const std::string& path, std::size_t bytes = 1 << 20) {
  ConsoleServicesOptions options;
  options.log = {path, bytes, 2};
  return options;
}

TEST(ConsoleServices, WritesOneEntryPerLineWithItsContinuationsIndented) {
  const TemporaryFolder folder;
  std::ofstream(folder.Path("s.log")) << "2024-03-09 17:05:00.123 [42] log: torn";
  ConsoleServices services(LogTo(folder.Path("s.log")));
  services.WriteTrace("dropped");
  services.TraceSwitch(true);
  services.WriteTrace("caption\r\nQuery: CREATE USER a IDENTIFIED BY s3cret \x1B");
  services.Assertion(true, "S", "M", "P", "dropped");
  services.Assertion(false, "S", "M", "P", "m");
  const std::string at = "\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} \\[\\d+\\] ";
  const std::regex expected(
      at + "log: torn\n" + at +
      "trace: caption\n    Query: CREATE USER a IDENTIFIED BY \\*{3} \\\\x1B\n" + at +
      "log: Assertion failed in S, M\\.P: m\n");
  EXPECT_TRUE(std::regex_match(Contents(folder.Path("s.log")), expected))
      << Contents(folder.Path("s.log"));
}

TEST(ConsoleServices, PutsFullLogsAsideAndKeepsTheLastOnes) {
  const TemporaryFolder folder;
  ConsoleServices services(LogTo(folder.Path("s.log"), 100));
  ConsoleServices others(LogTo(folder.Path("s.log"), 100));
  for (const char* entry : {"first", "second", "third", "fourth"}) {
    (*entry == 's' ? services : others).WriteLog(entry + std::string(60, '.'));
  }
  EXPECT_THAT(Contents(folder.Path("s.log")), HasSubstr("fourth"));
  EXPECT_THAT(Contents(folder.Path("s.1.log")), HasSubstr("third"));
  EXPECT_THAT(Contents(folder.Path("s.2.log")), HasSubstr("second"));
  EXPECT_FALSE(fs::exists(folder.Path("s.3.log")));
}

TEST(ConsoleServices, TellsTheCallerThatTheLogCannotBeWritten) {
  const TemporaryFolder folder;
  EXPECT_THAT(FailureOfCall([&] { ConsoleServices services(LogTo(folder.Path(""))); }),
              ::testing::ContainsRegex("75 The log file.*Is a directory"));
  fs::create_directory(folder.Path("sub"));
  ConsoleServices rotating(LogTo(folder.Path("sub/s.log"), 50));
  rotating.WriteLog(std::string(60, '.'));
  fs::create_directories(folder.Path("sub/s.2.log/in the way"));
  fs::create_directories(folder.Path("sub/s.1.log"));
  EXPECT_THAT(FailureOfCall([&] { rotating.WriteLog("a"); }), HasSubstr("s.1.log\" is no file"));
  fs::remove_all(folder.Path("sub"));
  rotating.WriteLog("works again");
  EXPECT_THAT(Contents(folder.Path("sub/s.log")), HasSubstr("works again"));
}

TEST(ConsoleServices, KeepsEntriesWholeWhenEightThreadsWrite) {
  const TemporaryFolder folder;
  ConsoleServicesOptions options = LogTo(folder.Path("s.log"), 1000);
  options.log.rotated_files = 120;
  {
    ConsoleServices services(options);
    std::vector<std::jthread> threads;
    for (int t = 0; t < 8; ++t) {
      threads.emplace_back([&, t] {
        for (int i = 0; i < 100; ++i) {
          services.TraceSwitch(i % 2 == 0);
          services.WriteLog(std::to_string(t * 100 + i) + "!\n" + std::string(20, 'x'));
        }
      });
    }
  }
  std::string text = Contents(folder.Path("s.log"));
  for (int i = 1; i <= 120; ++i) text += Contents(folder.Path("s." + std::to_string(i) + ".log"));
  const std::regex entry("[-\\d]{10} [:.\\d]{12} \\[\\d+\\] log: (\\d+!)\n    x{20}\n");
  const std::set<std::string> seen(std::sregex_token_iterator(text.begin(), text.end(), entry, 1),
                                   {});
  EXPECT_EQ(seen.size(), 800U);
  EXPECT_EQ(std::regex_replace(text, entry, ""), "");
}

// Locale, prompt

TEST(EnvironmentLocale, DerivesFactsFromPatterns) {
  const char* const rows[][5] = {
      // decimal, thousands, date, time; what comes of them, at last the order of the date
      {",", "\u202F", "%d.%m.%Y", "%H.%M.%S", ", \u202F . . 1"},
      {",", "\xA0", "%d/%m/%Y", "%T", ", \u00A0 / : 1"},  // Latin-1
      {",", ".", "%A, %d/%m/%Y", "%Od:%M", ", . / : 1"},
      {".", ",", "%Y年%m月%d日", "%H時%M分%S秒", ". , / : 2"},
      {"", "", "", "%", ". , / : 0"},
  };
  for (const auto& [decimal, thousands, date, time, expected] : rows) {
    const LocaleFacts f = LocaleFactsOf(decimal, thousands, date, time);
    EXPECT_EQ(f.decimal_separator + " " + f.thousands_separator + " " + f.date_separator + " " +
                  f.time_separator + " " + std::to_string(static_cast<int>(f.date_order)),
              expected);
  }
}

volatile std::sig_atomic_t g_interrupts = 0;

TEST(PromptWithoutEcho, ReadsInSilenceAndGivesTheEchoBack) {
  if (!testing::HasPseudoTerminal()) GTEST_SKIP() << "no pseudo-terminal";
  Terminal terminal;
  const auto prompt = [&](const std::function<void()>& person_does) {
    const std::jthread person([&] {
      terminal.ReadTo("Password: ");
      person_does();
    });
    return PromptWithoutEcho("Password: ", terminal.Descriptor(), terminal.File());
  };
  const auto type = [&] {
    EXPECT_FALSE(terminal.Echoes());
    terminal.Type("s\u00E9cret \n");
  };
  EXPECT_EQ(prompt(type), "s\u00E9cret ");
  EXPECT_TRUE(terminal.Echoes());

  const auto go_on = [&] {
    std::raise(SIGCONT);
    terminal.ReadTo("Password: ");
    type();
  };
  EXPECT_EQ(prompt(go_on), "s\u00E9cret ") << "asked anew after a stop";

  // A signal with a handler of the host's: it runs, on whatever thread, and the prompt ends.
  const auto before = std::signal(SIGINT, [](int) { g_interrupts = g_interrupts + 1; });
  EXPECT_THAT(FailureOfCall([&] { (void)prompt([] { std::raise(SIGINT); }); }),
              HasSubstr("was interrupted"));
  EXPECT_TRUE(terminal.Echoes());
  std::raise(SIGINT);
  EXPECT_EQ(g_interrupts, 2);
  std::signal(SIGINT, before);
}

}  // namespace
}  // namespace sabrel
