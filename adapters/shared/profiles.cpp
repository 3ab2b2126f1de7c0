#include "adapters/shared/profiles.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <utility>

#include "adapters/shared/private_file.h"
#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/utf8.h"

namespace sabrel {
namespace {

[[noreturn]] void Refuse(const std::string& text) {
  throw RuntimeError(RuntimeErrorNumber::kInvalidCall, text);
}

struct TextSetting {
  std::string_view name;
  std::string ConnectionProfile::*member;
};
constexpr TextSetting kTextSettings[] = {
    {"Name", &ConnectionProfile::Name},         {"Driver", &ConnectionProfile::Driver},
    {"Host", &ConnectionProfile::Host},         {"Database", &ConnectionProfile::Database},
    {"UserName", &ConnectionProfile::UserName}, {"Password", &ConnectionProfile::Password},
};

struct SectionSetting {
  std::string_view name;
  std::string SectionSettings::*member;
};
constexpr SectionSetting kSectionSettings[] = {{"SslMode", &SectionSettings::SslMode},
                                               {"SslRootCert", &SectionSettings::SslRootCert},
                                               {"DateFormat", &SectionSettings::DateFormat}};

struct NumberSetting {
  std::string_view name;
  std::int32_t ConnectionProfile::*member;
  std::int32_t most;
};
constexpr NumberSetting kNumberSettings[] = {
    {"Port", &ConnectionProfile::Port, 65535},
    {"ConnectTimeout", &ConnectionProfile::ConnectTimeout, 1000000},
    {"ReceiveTimeout", &ConnectionProfile::ReceiveTimeout, 1000000},
};

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kSpace = " \t\r";
  const std::size_t first = text.find_first_not_of(kSpace);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

class FileReader {
 public:
  FileReader(const std::string& path, std::int32_t receive_timeout_s)
      : path_(path), receive_timeout_s_(receive_timeout_s) {}

  ProfileSet Read(std::string_view text) {
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    while (!text.empty()) {
      ++line_;
      const std::size_t end = std::min(text.find('\n'), text.size());
      TakeLine(Trimmed(text.substr(0, end)));
      text.remove_prefix(std::min(end + 1, text.size()));
    }
    if (profiles_.empty()) {
      Refuse(path_ + ": no profile in it; start one with a line \"[name]\".");
    }
    EndProfile();
    ProfileSet read(std::move(profiles_.front()), std::move(sections_.front()));
    for (std::size_t i = 1; i < profiles_.size(); ++i) {
      read.Add(std::move(profiles_[i]), std::move(sections_[i]));
    }
    return read;
  }

 private:
  // Nothing of the line goes into a message: any part of it may be a password.
  [[noreturn]] void Fail(const std::string& what) const { FailAt(line_, what); }
  [[noreturn]] void FailAt(int line, const std::string& what) const {
    Refuse(path_ + ":" + std::to_string(line) + ": " + what);
  }

  void TakeLine(std::string_view line) {
    if (line.empty() || line.front() == '#' || line.front() == ';') return;
    if (!IsSendableText(line)) Fail("this is not UTF-8 text; save the file as UTF-8.");
    if (line.front() == '[') {
      StartProfile(line);
      return;
    }
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) {
      Fail("neither \"[name]\" nor \"Setting = value\"; put a \"#\" before a comment.");
    }
    if (profiles_.empty()) Fail("a setting before the first \"[name]\"; name the profile first.");
    TakeSetting(Trimmed(line.substr(0, equals)), Trimmed(line.substr(equals + 1)));
  }

  void StartProfile(std::string_view line) {
    if (line.back() != ']') Fail("the profile's name does not end; close it with \"]\".");
    const std::string_view name = Trimmed(line.substr(1, line.size() - 2));
    if (name.empty()) Fail("a profile without a name; write it between \"[\" and \"]\".");
    RequireNewName(name, profiles_.size());
    if (!profiles_.empty()) EndProfile();
    profiles_.emplace_back().Name = name;
    profiles_.back().ReceiveTimeout = receive_timeout_s_;
    sections_.emplace_back();
    given_.clear();
    tls_line_ = 0;
  }

  // What depends on several settings, which may come in any order.
  void EndProfile() const {
    const std::string obstacle = ObstacleToTls(profiles_.back(), sections_.back());
    if (!obstacle.empty()) FailAt(tls_line_, obstacle);
  }

  void RequireNewName(std::string_view name, std::size_t own) const {
    for (std::size_t i = 0; i < profiles_.size(); ++i) {
      if (i != own && EqualIgnoringCase(profiles_[i].Name, name)) {
        Fail("a second profile with this name; rename one of them.");
      }
    }
  }

  void TakeSetting(std::string_view name, std::string_view value) {
    for (const TextSetting& setting : kTextSettings) {
      if (!IsFirst(name, setting.name)) continue;
      if (setting.name == "Name") RequireNewName(value, profiles_.size() - 1);
      profiles_.back().*setting.member = value;
      return;
    }
    for (const NumberSetting& setting : kNumberSettings) {
      if (!IsFirst(name, setting.name)) continue;
      profiles_.back().*setting.member = NumberIn(value, setting);
      return;
    }
    for (const SectionSetting& setting : kSectionSettings) {
      if (!IsFirst(name, setting.name)) continue;
      TakeSectionSetting(setting, value);
      return;
    }
    Fail(
        "no setting has this name; there are Name, Driver, Host, Port, Database, UserName, "
        "Password, ConnectTimeout, ReceiveTimeout, SslMode, SslRootCert and DateFormat.");
  }

  // Whether `name` is that of the setting `known`, which a profile has once.
  bool IsFirst(std::string_view name, std::string_view known) {
    if (!EqualIgnoringCase(name, known)) return false;
    if (std::find(given_.begin(), given_.end(), known) != given_.end()) {
      Fail("the setting " + std::string(known) + " for the second time; remove one of them.");
    }
    given_.push_back(known);
    return true;
  }

  void TakeSectionSetting(const SectionSetting& setting, std::string_view value) {
    constexpr std::size_t kMostDateFormatBytes = 255;
    const std::string name(setting.name);
    if (value.empty()) Fail(name + " has no value; give one or remove the line.");
    std::string& member = sections_.back().*setting.member;
    member = value;
    if (setting.member == &SectionSettings::DateFormat) {
      if (value.size() > kMostDateFormatBytes) {
        Fail(name + " is too long; give at most " + std::to_string(kMostDateFormatBytes) +
             " bytes.");
      }
      return;
    }
    tls_line_ = line_;
    if (setting.member == &SectionSettings::SslRootCert) {
      member = std::filesystem::absolute(std::filesystem::path(path_).parent_path() / member);
      errno = 0;
      if (std::ifstream file(member); !file || file.peek() == std::ifstream::traits_type::eof()) {
        Fail(name + " names no file that can be read" +
             (errno != 0 ? std::string(" (") + std::strerror(errno) + ")" : "") +
             "; it is looked for from this file's folder.");
      }
    }
  }

  std::int32_t NumberIn(std::string_view value, const NumberSetting& setting) const {
    std::int32_t number = 0;
    const auto read = std::from_chars(value.data(), value.data() + value.size(), number);
    if (read.ec != std::errc{} || read.ptr != value.data() + value.size() || number < 0 ||
        number > setting.most) {
      Fail(std::string(setting.name) + " wants a whole number from 0 to " +
           std::to_string(setting.most) + ".");
    }
    return number;
  }

  std::string path_;
  std::int32_t receive_timeout_s_;
  std::vector<ConnectionProfile> profiles_;
  std::vector<SectionSettings> sections_;  // of each profile
  std::vector<std::string_view> given_;
  int line_ = 0;
  int tls_line_ = 0;  // of the last setting about TLS
};

}  // namespace

void ProfileSet::Add(ConnectionProfile profile, SectionSettings section) {
  for (const ConnectionProfile& known : profiles_) {
    if (EqualIgnoringCase(known.Name, profile.Name)) {
      Refuse("There is a connection profile \"" + known.Name + "\" already.");
    }
  }
  profiles_.push_back(std::move(profile));
  sections_.push_back(std::move(section));
}

void ProfileSet::UseForSession(std::string_view name) {
  std::string names;
  for (std::size_t i = 0; i < profiles_.size(); ++i) {
    if (EqualIgnoringCase(profiles_[i].Name, name)) {
      session_ = i;
      return;
    }
    names += (i > 0 ? ", " : "") + profiles_[i].Name;
  }
  Refuse("There is no connection profile \"" + std::string(name) + "\"; there are: " + names + ".");
}

void ProfileSet::ReceiveTimeout(std::int32_t seconds) {
  for (ConnectionProfile& profile : profiles_) profile.ReceiveTimeout = seconds;
}

ResolvedTarget ProfileSet::Resolve(const DataServerAddress& address) const {
  ResolvedTarget target;
  const auto has_address = [&address](const ConnectionProfile& profile) {
    return EqualIgnoringCase(profile.Host, address.host) &&
           (address.port == 0 || profile.Port == address.port);
  };
  const auto fits = [&](const ConnectionProfile& profile) {
    return has_address(profile) && (address.user.empty() || profile.UserName == address.user);
  };
  std::size_t chosen = session_;
  if (!address.host.empty() && !fits(Session())) {
    const auto found = std::find_if(profiles_.begin(), profiles_.end(), fits);
    target.address_replaced = found == profiles_.end();
    if (!target.address_replaced) chosen = static_cast<std::size_t>(found - profiles_.begin());
  }
  target.section = sections_[chosen];
  for (std::size_t i = 0; target.address_replaced && i < profiles_.size(); ++i) {
    if (!target.section.SslMode.empty() || !has_address(profiles_[i])) continue;
    target.section.SslMode = sections_[i].SslMode;
    target.section.SslRootCert = sections_[i].SslRootCert;
  }
  ConnectionProfile& profile = target.profile;
  profile = profiles_[chosen];
  if (!address.host.empty()) profile.Host = address.host;
  if (address.port != 0) profile.Port = address.port;
  if (!address.user.empty()) {
    if (address.user != profile.UserName) profile.Password.clear();
    profile.UserName = address.user;
  }
  if (!address.password.empty()) profile.Password = address.password;
  const bool is_shorter = profile.ReceiveTimeout == 0 || address.timeout_s < profile.ReceiveTimeout;
  if (address.timeout_s > 0 && is_shorter) profile.ReceiveTimeout = address.timeout_s;
  return target;
}

ProfileFile ReadProfileFile(const std::string& path, std::int32_t receive_timeout_s) {
  struct stat facts {};
  std::ifstream file(path, std::ios::binary);
  if (!file || ::stat(path.c_str(), &facts) != 0) {
    const int reason = errno;
    Refuse("Cannot read the profile file " + path + ": " + std::strerror(reason) +
           ". Check its name and permissions.");
  }
  if (S_ISDIR(facts.st_mode)) Refuse("The profile file " + path + " is a folder; name a file.");
  constexpr std::size_t kLongestFile = std::size_t{1} << 20U;
  std::string text(kLongestFile + 1, '\0');
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(file.gcount()));
  if (text.size() > kLongestFile) {
    Refuse("The file " + path + " is longer than 1 MiB; name a file of profiles.");
  }
  if (file.bad()) Refuse("Cannot read the profile file " + path + ".");
  ProfileFile result{FileReader(path, receive_timeout_s).Read(text), {}};
  const std::vector<ConnectionProfile>& profiles = result.profiles.All();
  const bool has_password = std::any_of(profiles.begin(), profiles.end(),
                                        [](const auto& one) { return !one.Password.empty(); });
  if (has_password && IsOpenToOthers(path)) {
    result.warnings.push_back("Other users can read or change the passwords in " + path +
                              "; run: chmod 600 " + path);
  }
  return result;
}

}  // namespace sabrel
