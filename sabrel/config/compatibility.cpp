#include "sabrel/config/compatibility.h"

#include <memory>
#include <vector>

#include "sabrel/core/query_execution.h"
#include "sabrel/platform/conversions.h"
#include "sabrel/platform/keyed_collection.h"
#include "sabrel/platform/module_state.h"
#include "sabrel/platform/platform.h"
#include "sabrel/platform/release_comparison.h"
#include "sabrel/platform/utf8.h"
#include "sabrel/sql/schema_probes.h"

namespace sabrel::MSabrel {
namespace {

// Major and minor number of this component's version.
constexpr std::string_view kClientRelease = SABREL_RELEASE;

// Searched as they stand, so that a part of an entry is found too.
constexpr std::string_view kIncompatibleReleases = "5.0,4.0";
constexpr std::string_view kCompatibleReleases = "8.0,7.3,7.2,7.1,7.0,6.0,5.3,5.2";

std::string ServerRelease() {
  const RecordsetRef rows = ExecuteQuery(
      "Select b.Value from ZR_System_Variable a, ZR_System_Value b "
      "Where a.name = 'ClientCompatability' and a.ID = b.Variable_ID",
      true);
  if (!rows) return "0";
  const CloseAtEnd closing(rows);
  std::string release = ToText(rows->Fields().Item("Value").Value());
  if (release.empty()) throw RuntimeError(RuntimeErrorNumber::kSubscript);
  return release;
}

std::int32_t Show(const std::string& text, std::int32_t style) {
  const auto services = CurrentPlatform().services;
  return services->ShowMessage(text, style, "Norvasta - Check Server Compatability");
}

bool UserGoesOn(const std::string& text) {
  return Show(text +
                  "\r\n\r\nIf you continue, some Client features may not function fully. "
                  "Do you wish to continue?",
              kBoxExclamationYesNo) == kAnswerYes;
}

bool Refuse(const std::string& text) {
  Show(text, kBoxCritical);
  return false;
}

std::string IncompatibleText(const std::string& server, const std::string& client) {
  return "Client-Server Incompatible.\r\n\r\nThis version of the Server (Version " + server +
         ") is not supported by\r\nThis version of the Client (Version " + client +
         ") or vice versa.\r\n"
         "Please Contact your Support Help Desk or your System Administrator.";
}

std::string NoResponseText(const std::string& client) {
  return "Potential Server Incompatability.\r\n\r\n"
         "The Server did not respond to compatability check.\r\n"
         "This Server might not be supported by this version of the Client (Version " +
         client + ") or vice versa.";
}

std::string InvalidVersionText(const std::string& server) {
  return "Potential Server Incompatability.\r\n\r\n"
         " The Server has responded with an invalid version(Version " +
         server +
         ").\r\n"
         "Please Contact your Support Help Desk or your System Administrator.";
}

std::string ClientOlderText(const std::string& server, const std::string& client) {
  return "Potential Client Incompatability.\r\n\r\n"
         "Client is of an older version than Server.\r\n"
         "This Client is Version: " +
         client + "\r\nThe Server is Version: " + server +
         "\r\nA more current Client is available. "
         "Please Contact your Support Help Desk or System Administrator.";
}

std::string ServerOlderText(const std::string& server, const std::string& client) {
  return "Potential Server Incompatability.\r\n\r\n"
         "Server is of an older version than Client.\r\n"
         "This Server is Version: " +
         server + "\r\nThe Client is Version: " + client;
}

// The first rule that applies decides. A padded column's blanks do not count where the release is
// compared; the texts show it as it is stored. Blanks alone are an invalid release.
bool FitTogether(const std::string& server) {
  constexpr int kPartsCompared = 2;
  constexpr int kInvalid = -2;
  const std::string client(kClientRelease);
  if (server.empty()) return UserGoesOn(NoResponseText(client));
  const std::string_view release = TrimBlanks(server);
  if (!release.empty() && ContainsIgnoringCase(kIncompatibleReleases, release)) {
    return Refuse(IncompatibleText(server, client));
  }
  if (!release.empty() && ContainsIgnoringCase(kCompatibleReleases, release)) return true;
  const int comparison = CompareReleases(release, client, kPartsCompared);
  if (comparison > 0) return UserGoesOn(ClientOlderText(server, client));
  if (comparison == kInvalid) return Refuse(InvalidVersionText(server));
  if (comparison == 0) return true;
  return UserGoesOn(ServerOlderText(server, client));
}

using Releases = KeyedCollection<std::int32_t>;

struct SupportedReleases {
  std::shared_ptr<Releases> releases;
};

void Fill(Releases& releases) {
  if (!DoesTableExist("luc_ent_system")) return;
  const RecordsetRef rows = ExecuteQuery(
      "SELECT b.Value FROM ZR_System_Variable a, ZR_System_Value b "
      "Where a.name like 'LucentVersionR%' and a.ID = b.Variable_ID");
  const CloseAtEnd closing(rows);
  if (!rows || rows->RecordCount() < 1) return;
  // All are read before the first is added: one that is no number leaves none.
  std::vector<std::int32_t> numbers;
  for (; !rows->EndOfFile(); rows->MoveNext()) {
    numbers.push_back(ToInt32(rows->Fields().Item("Value").Value()));
  }
  rows->Close();
  for (const std::int32_t number : numbers) releases.Add(number, "R" + std::to_string(number));
}

}  // namespace

bool IsClientServerCompatible() {
  RequirePlatform();
  try {
    return FitTogether(ServerRelease());
  } catch (...) {
    return false;
  }
}

bool IsLucentVersionSupported(std::string_view sVersion) {
  RequirePlatform();
  const std::string version(sVersion);  // a failed query's box may take the caller's text away
  auto releases = ModuleState<SupportedReleases>().releases;
  if (!releases) {
    releases = std::make_shared<Releases>();
    ModuleState<SupportedReleases>().releases = releases;
    try {
      Fill(*releases);
    } catch (...) {
      // What was added before a repeated number stays.
    }
  }
  return releases->Find(version) != nullptr;
}

std::string GetModuleVersionName(std::int32_t ordModule, std::int32_t ordVersion) {
  const RecordsetRef rows = ExecuteQuery(
      "Select Version_Name From EA_Module_Version Where Module_ID = " + std::to_string(ordModule) +
          " and Version_ID = " + std::to_string(ordVersion),
      true);
  if (!rows) return {};
  const CloseAtEnd closing(rows);
  return ToText(rows->Fields().Item("Version_Name").Value());
}

}  // namespace sabrel::MSabrel
