#include "adapters/odbc/connection_text.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::odbc {
namespace {

constexpr std::int32_t kHighestPort = 65535;
constexpr std::size_t kMostDriverBytes = 255;
constexpr std::size_t kMostBytes = 2000;

[[noreturn]] void Refuse(std::string_view setting, std::string_view reason) {
  throw RuntimeError(
      RuntimeErrorNumber::kInvalidCall,
      "Setting " + std::string(setting) + " of the connection profile " + std::string(reason));
}

/// No driver is given a line's end: what a log or a trace would cut in two is no setting. Nor one
/// that is too long: driver managers have fixed room for a driver's name, and count a whole string
/// in 16 bits.
void RequirePlainText(std::string_view setting, std::string_view value, std::size_t most_bytes) {
  if (value.size() > most_bytes) {
    Refuse(setting, "is too long; give at most " + std::to_string(most_bytes) + " bytes");
  }
  if (!IsSendableText(value)) Refuse(setting, "is not valid UTF-8 text; save the file as UTF-8");
  if (value.find_first_of("\r\n") != std::string_view::npos) {
    Refuse(setting, "holds a line's end; remove it");
  }
}

void RequireSettings(const ConnectionProfile& profile) {
  RequirePlainText("Driver", profile.Driver, kMostDriverBytes);
  RequirePlainText("Host", profile.Host, kMostBytes);
  RequirePlainText("Database", profile.Database, kMostBytes);
  RequirePlainText("UserName", profile.UserName, kMostBytes);
  RequirePlainText("Password", profile.Password, kMostBytes);
  if (profile.Driver.empty())
    Refuse("Driver", "is missing; give the name that odbcinst -q -d shows");
  if (profile.Port < 0 || profile.Port > kHighestPort) {
    Refuse("Port", "is not between 1 and 65535; correct it, or 0 for the usual port");
  }
}

/// `value` in braces, with "}" doubled.
std::string Braced(std::string_view value) { return "{" + ReplaceAll(value, "}", "}}") + "}"; }

/// Braces only where the rule of connection strings asks for them.
std::string BracedWhereDue(std::string_view value) {
  const bool due = value.find_first_of("[]{}(),;?*=!@") != std::string_view::npos ||
                   TrimBlanks(value).size() != value.size();
  return due ? Braced(value) : std::string(value);
}

/// " name='value'" as libpq reads it; nothing for an empty value, for which libpq has its own.
std::string LibpqSetting(std::string_view name, std::string_view value) {
  if (value.empty()) return {};
  const std::string escaped = ReplaceAll(ReplaceAll(value, "\\", "\\\\"), "'", "\\'");
  return " " + std::string(name) + "='" + escaped + "'";
}

/// What the driver has no keyword for, beside SSLmode, with which libpq connects by TLS or not at
/// all. GSSAPI, which it would prefer, is another encryption, without the server's certificate.
std::string TlsSettings(const SectionSettings& section) {
  if (section.SslMode.empty()) return {};
  RequirePlainText("SslRootCert", section.SslRootCert, kMostBytes);
  return LibpqSetting("sslrootcert", section.SslRootCert) + LibpqSetting("gssencmode", "disable");
}

/// The parts of "//host:port/service" have no quoting of their own.
void RequireAddressPart(std::string_view setting, std::string_view value) {
  const bool plain = std::all_of(value.begin(), value.end(), [](char c) {
    return static_cast<unsigned char>(c) >= 0x80 || (c >= '0' && c <= '9') ||
           (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
           std::string_view(".-_:%$#").find(c) != std::string_view::npos;
  });
  if (!plain) {
    Refuse(setting,
           "holds a character that an address of Oracle cannot have; leave Host empty and give an "
           "alias of tnsnames.ora in Database");
  }
}

/// "//host:port/service"; without a host, Database is an alias or a descriptor.
std::string OracleAddress(const ConnectionProfile& profile) {
  if (profile.Host.empty()) return profile.Database;
  constexpr std::int32_t kOraclePort = 1521;
  std::string host(WithoutBrackets(profile.Host));
  RequireAddressPart("Host", host);
  RequireAddressPart("Database", profile.Database);
  if (host.find(':') != std::string::npos) host = "[" + host + "]";
  const std::int32_t port = profile.Port == 0 ? kOraclePort : profile.Port;
  return "//" + host + ":" + std::to_string(port) + "/" + profile.Database;
}

/// What the connection relies on, whatever the machine's settings of the driver say. Rows come in
/// blocks from a cursor; a failure rolls back the transaction that the driver opened for it (with
/// "-0" every later statement fails with 25P02); text keeps its line ends; nothing is logged, since
/// the driver's logs hold passwords.
constexpr std::string_view kPostgresqlOptions =
    ";Protocol=7.4-1;ReadOnly=0;UseDeclareFetch=1;Fetch=500;UseServerSidePrepare=0"
    ";Parse=0;UpdatableCursors=0;RowVersioning=0;BoolsAsChar=0;TrueIsMinus1=0;TextAsLongVarchar=1"
    ";UnknownsAsLongVarchar=0;ByteaAsLongVarBinary=1;UnknownSizes=0;MaxVarcharSize=32767"
    ";MaxLongVarcharSize=1073741823;LFConversion=0;LowerCaseIdentifier=0;IgnoreTimeout=0;Debug=0"
    ";CommLog=0;KeepaliveTime=60;KeepaliveInterval=10;";

/// Text as UTF-16, large objects written too. No silent failover: a session that the server lost is
/// reported.
constexpr std::string_view kOracleOptions = ";FWC=T;LOB=T;FEN=F;";

}  // namespace

std::string_view WithoutBrackets(std::string_view host) noexcept {
  const bool has_brackets = host.size() >= 2 && host.front() == '[' && host.back() == ']';
  return has_brackets ? host.substr(1, host.size() - 2) : host;
}

std::string PostgresqlConnectionText(const ConnectionProfile& profile,
                                     const SectionSettings& section) {
  RequireSettings(profile);
  const std::string_view host = WithoutBrackets(profile.Host);
  // The driver takes braces off PWD and pqopt only: a name with ";" or a leading "{" fits into no
  // other keyword, and names longer than 255 bytes are cut there. libpq's own settings carry all.
  std::string address = LibpqSetting("host", host);
  if (profile.Port != 0) address += LibpqSetting("port", std::to_string(profile.Port));
  address += LibpqSetting("dbname", profile.Database);
  address += LibpqSetting("user", profile.UserName);
  address += TlsSettings(section);
  std::string text = "DRIVER=" + Braced(profile.Driver);
  if (!profile.Password.empty()) text += ";PWD=" + Braced(profile.Password);
  if (!address.empty()) text += ";pqopt=" + Braced(std::string_view(address).substr(1));
  // Encrypted where the server can, also where that is not demanded.
  text += ";SSLmode=" + (section.SslMode.empty() ? "prefer" : section.SslMode);
  text += kPostgresqlOptions;
  return text;
}

std::string OracleConnectionText(const ConnectionProfile& profile) {
  RequireSettings(profile);
  std::string text = "DRIVER=" + Braced(profile.Driver);
  text += ";DBQ=" + BracedWhereDue(OracleAddress(profile));
  text += ";UID=" + BracedWhereDue(profile.UserName);
  text += ";PWD=" + BracedWhereDue(profile.Password);
  text += kOracleOptions;
  return text;
}

}  // namespace sabrel::odbc
