#include "adapters/shared/profiles.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <iterator>
#include <optional>
#include <utility>

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
  explicit FileReader(const std::string& path) : path_(path) {}

  std::vector<ConnectionProfile> Read(std::string_view text) {
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
    return std::move(profiles_);
  }

 private:
  [[noreturn]] void Fail(const std::string& what) const {
    Refuse(path_ + ":" + std::to_string(line_) + ": " + what);
  }

  void TakeLine(std::string_view line) {
    if (line.empty() || line.front() == '#' || line.front() == ';') return;
    // Never the line itself in a message: it may hold a password.
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
    profiles_.emplace_back().Name = name;
    given_.clear();
  }

  void RequireNewName(std::string_view name, std::size_t own) const {
    for (std::size_t i = 0; i < profiles_.size(); ++i) {
      if (i != own && EqualIgnoringCase(profiles_[i].Name, name)) {
        Fail("a second profile \"" + std::string(name) + "\"; rename one of them.");
      }
    }
  }

  void TakeSetting(std::string_view name, std::string_view value) {
    for (const std::string& given : given_) {
      if (EqualIgnoringCase(given, name)) {
        Fail("the setting " + given + " for the second time; remove one of them.");
      }
    }
    given_.emplace_back(name);
    for (const TextSetting& setting : kTextSettings) {
      if (!EqualIgnoringCase(name, setting.name)) continue;
      if (setting.name == "Name") RequireNewName(value, profiles_.size() - 1);
      profiles_.back().*setting.member = value;
      return;
    }
    for (const NumberSetting& setting : kNumberSettings) {
      if (!EqualIgnoringCase(name, setting.name)) continue;
      profiles_.back().*setting.member = NumberIn(value, setting);
      return;
    }
    Fail("no setting is called \"" + std::string(name) +
         "\"; there are Name, Driver, Host, Port, Database, UserName, Password, ConnectTimeout "
         "and ReceiveTimeout.");
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
  std::vector<ConnectionProfile> profiles_;
  std::vector<std::string> given_;
  int line_ = 0;
};

}  // namespace

void ProfileSet::Add(ConnectionProfile profile) {
  for (const ConnectionProfile& known : profiles_) {
    if (EqualIgnoringCase(known.Name, profile.Name)) {
      Refuse("There is a connection profile \"" + known.Name + "\" already.");
    }
  }
  profiles_.push_back(std::move(profile));
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

ResolvedTarget ProfileSet::Resolve(const DataServerAddress& address) const {
  ResolvedTarget target;
  const auto has_address = [&address](const ConnectionProfile& profile) {
    return EqualIgnoringCase(profile.Host, address.host) &&
           (address.port == 0 || profile.Port == address.port) &&
           (address.user.empty() || profile.UserName == address.user);
  };
  const ConnectionProfile* chosen = &Session();
  if (!address.host.empty() && !has_address(*chosen)) {
    const auto found = std::find_if(profiles_.begin(), profiles_.end(), has_address);
    target.address_replaced = found == profiles_.end();
    if (!target.address_replaced) chosen = &*found;
  }
  ConnectionProfile& profile = target.profile;
  profile = *chosen;
  if (!address.host.empty()) profile.Host = address.host;
  if (address.port != 0) profile.Port = address.port;
  if (!address.user.empty()) {
    if (address.user != profile.UserName) profile.Password.clear();
    profile.UserName = address.user;
  }
  if (!address.password.empty()) profile.Password = address.password;
  if (address.timeout_s > 0) profile.ReceiveTimeout = address.timeout_s;
  return target;
}

ProfileFile ReadProfileFile(const std::string& path) {
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
  std::vector<ConnectionProfile> profiles = FileReader(path).Read(text);
  const bool has_password = std::any_of(profiles.begin(), profiles.end(),
                                        [](const auto& one) { return !one.Password.empty(); });
  ProfileFile result{ProfileSet(profiles.front()), {}};
  for (std::size_t i = 1; i < profiles.size(); ++i) result.profiles.Add(std::move(profiles[i]));
  if (has_password && (facts.st_mode & (S_IRGRP | S_IROTH)) != 0) {
    result.warnings.push_back("Other users can read the passwords in " + path +
                              "; run: chmod 600 " + path);
  }
  return result;
}

}  // namespace sabrel
