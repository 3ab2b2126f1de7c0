// Connection strings from hostile settings, wide text, and why an address does not answer.
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "adapters/odbc/connection_text.h"
#include "adapters/odbc/reachability.h"
#include "adapters/odbc/wide_text.h"
#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::odbc {
namespace {

/// What a profile becomes, or number and text of the refusal.
std::string Composed(std::string (*compose)(const ConnectionProfile&), const char* host, int port,
                     const char* database, const char* user, const std::string& password) {
  const ConnectionProfile profile{"p", "D}r;v", host, port, database, user, password, 0, 0};
  std::string text;
  const auto failure = FailureIn([&] { text = compose(profile); });
  return failure ? std::to_string(failure->Number()) + " " + failure->Description() : text;
}

TEST(OdbcConnectionText, HostileSettingsStayInTheirPlaceOrAreRefused) {
  const auto pg = [](const ConnectionProfile& p) { return PostgresqlConnectionText(p, {}); };
  const auto tls = [](const ConnectionProfile& p) {
    return PostgresqlConnectionText(p, {"verify-full", "/a'b}"});
  };
  const auto oracle = OracleConnectionText;
  const std::pair<std::string, const char*> rows[] = {
      {Composed(pg, "h", 1, "d b", "ü", "};UID=x;{%41 "),
       "DRIVER={D}}r;v};PWD={}};UID=x;{%41 };pqopt={host='h' port='1' dbname='d b' user='ü'};SSL"},
      {Composed(pg, "/run", 0, "a'b\\", "}", ""),
       "DRIVER={D}}r;v};pqopt={host='/run' dbname='a\\'b\\\\' user='}}'};"},
      {Composed(pg, "[::1]", 0, "", "", "p"), "DRIVER={D}}r;v};PWD={p};pqopt={host='::1'};SSL"},
      {Composed(tls, "h", 0, "", "", ""),
       "DRIVER={D}}r;v};pqopt={host='h' sslrootcert='/a\\'b}}' "
       "gssencmode='disable'};SSLmode=verify-full;Protocol"},
      {Composed(oracle, "h", 0, "xe", "u", "p"), "DRIVER={D}}r;v};DBQ=//h:1521/xe;UID=u;PWD=p;FWC"},
      {Composed(oracle, "::1", 7, "xe", " u", "};p"),
       "DRIVER={D}}r;v};DBQ={//[::1]:7/xe};UID={ u};PWD={}};p};"},
      {Composed(oracle, "", 0, "(A=B)", "u", "p"), "DRIVER={D}}r;v};DBQ={(A=B)};UID=u;"},
      {Composed(pg, "h", 0, "d", "u", "secret\n"), "5 Setting Password"},
      {Composed(oracle, "h", 0, "d", "u", std::string("secret\0", 7)), "5 Setting Password"},
      {Composed(pg, "h", 0, "d", "u", "secret\xFF"), "5 Setting Password"},
      {Composed(pg, "h", 0, "d", "secret\r", "p"), "5 Setting UserName"},
      {Composed(pg, "h", 0, "d", "u", "secret" + std::string(1995, 'x')), "5 Setting Password"},
      {Composed(oracle, "h", 65536, "d", "u", "secret"), "5 Setting Port"},
      {Composed(oracle, "h/secret", 0, "d", "u", "p"), "5 Setting Host"},
      {Composed(oracle, "h", 0, "d?secret", "u", "p"), "5 Setting Database"}};
  for (const auto& [text, start] : rows) {
    EXPECT_THAT(text, ::testing::StartsWith(start));
    EXPECT_THAT(text, ::testing::Not(::testing::HasSubstr("secret")));
  }
}

TEST(OdbcWideText, EveryCodePointGoesBothWays) {
  std::string text;
  for (char32_t code_point = 1; code_point < 0x110000; ++code_point) {
    if (code_point == 0xD800) code_point = 0xE000;
    sabrel::AppendUtf8(text, code_point);
    text.append(code_point % 19, 'x');  // so that runs of ASCII start and end everywhere
  }
  EXPECT_TRUE(ToUtf8(ToWide(text)) == text);
  EXPECT_EQ(ToWide("aé€😀"), u"aé€😀");
  EXPECT_EQ(ToUtf8(std::u16string{0xDE00, 0xD83D, u'b', 0xD83D}), "\uFFFD\uFFFDb\uFFFD");
}

TEST(OdbcReachability, SaysWhyAnAddressDoesNotAnswer) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  auto* const place = static_cast<sockaddr*>(static_cast<void*>(&address));
  socklen_t size = sizeof address;
  const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
  ASSERT_TRUE(::bind(listener, place, size) == 0 && ::listen(listener, 0) == 0 &&
              ::getsockname(listener, place, &size) == 0);
  const auto ask = [port = ntohs(address.sin_port)](const char* host, int milliseconds) {
    const std::chrono::milliseconds limit(milliseconds);
    return ReachabilityOf(host, port, std::chrono::steady_clock::now() + limit);
  };
  EXPECT_EQ(ask("127.0.0.1", 5000), std::nullopt);
  EXPECT_EQ(ask("no-such-host.invalid", 5000), ConnectionFailure::kHostUnknown);
  EXPECT_EQ(ReachabilityOfSocket("/no/such/file", {}), ConnectionFailure::kRefusedOrSevered);
  // The kernel lets a connection or two into the queue that nobody empties; then all is silent.
  std::optional<ConnectionFailure> silent;
  for (int i = 0; i < 8 && !silent; ++i) silent = ask("127.0.0.1", 50);
  EXPECT_EQ(silent, ConnectionFailure::kConnectTimeOut);
  ::close(listener);
  EXPECT_EQ(ask("[127.0.0.1]", 5000), ConnectionFailure::kRefusedOrSevered);
  EXPECT_EQ(::dup(0), listener) << "a descriptor was left open";
  ::close(listener);
}

}  // namespace
}  // namespace sabrel::odbc
