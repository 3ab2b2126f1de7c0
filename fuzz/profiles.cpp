// Connection profiles: refused with 5 and without a word of the file in the message, or profiles of
// which each address finds one.
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
  CheckFile(ReplaceAll(input, "=", "=" + std::string(kSecret)));
  CheckFile(ReplaceAll(input, "\n", "\n" + std::string(kSecret)));
}

}  // namespace sabrel::fuzz
