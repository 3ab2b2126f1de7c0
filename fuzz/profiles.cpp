// Connection profiles: refused with 5 and without a value in the message, or profiles of which
// each address finds one.
#include "adapters/shared/profiles.h"

#include <fstream>

#include "fuzz/target.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::fuzz {
namespace {

constexpr std::string_view kSecret = "Zq7xWv2T";

void CheckProfiles(const ProfileSet& profiles) {
  Require(!profiles.All().empty() && &profiles.Session() == profiles.All().data(),
          "the first profile is the session's");
  for (const ConnectionProfile& profile : profiles.All()) {
    const ResolvedTarget target = profiles.Resolve(
        {profile.Host, profile.Port, profile.UserName, profile.Password, profile.ReceiveTimeout});
    Require(!target.address_replaced || profile.Host.empty(), "an address finds its profile",
            profile.Name);
    Require(profile.UserName.empty() || target.profile.UserName == profile.UserName,
            "an address keeps its user", profile.UserName);
    for (const std::int32_t number :
         {profile.Port, profile.ConnectTimeout, profile.ReceiveTimeout}) {
      Require(number >= 0 && number <= 1000000, "a number is in its range", profile.Name);
    }
    Require(IsSendableText(profile.Password) && profile.Password.find('\n') == std::string::npos,
            "a setting is a line of UTF-8", profile.Name);
    ProfileSet session = profiles;
    session.UseForSession(profile.Name);
    Require(EqualIgnoringCase(session.Session().Name, profile.Name), "a name finds its profile",
            profile.Name);
  }
}

/// `text` with a secret in front of each value; names of profiles are none.
std::string WithSecrets(std::string_view text) {
  std::string planted;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    const std::size_t value = line.find('=') + 1;  // 0 where there is none
    const bool is_name = ContainsIgnoringCase(line.substr(0, value), "name") ||
                         line.find('[') < line.find_first_not_of(" \t\r[");
    planted.append(line.substr(0, value));
    if (value > 0 && !is_name) planted.append(kSecret);
    planted.append(line.substr(value)).append("\n");
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
  return planted;
}

void CheckFile(std::string_view text) {
  static const std::string path = TemporaryPath("profiles");
  std::ofstream(path, std::ios::binary)
      .write(text.data(), static_cast<std::streamsize>(text.size()));
  std::string said;
  try {
    const ProfileFile file = ReadProfileFile(path);
    CheckProfiles(file.profiles);
    for (const std::string& warning : file.warnings) said += warning;
  } catch (const RuntimeError& failure) {
    Require(failure.Number() == static_cast<std::int32_t>(RuntimeErrorNumber::kInvalidCall) &&
                failure.Description().starts_with(path),
            "is refused naming the file", failure.Description());
    said = failure.Description();
  }
  Require(said.find(kSecret) == std::string::npos, "no message shows a value", said);
}

}  // namespace

void Check(std::string_view input) {
  if (input.find(kSecret) != std::string_view::npos) return;
  CheckFile(input);
  CheckFile(WithSecrets(input));
}

}  // namespace sabrel::fuzz
