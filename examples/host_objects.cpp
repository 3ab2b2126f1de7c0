// What needs a host: objects that reload themselves after a login, the names of the connection that
// other tools ask for, and failures in words. Asks a site that `sabrel site create site.db` made.
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "adapters/console/console_platform.h"
#include "adapters/sqlite/sqlite_rowlink.h"
#include "sabrel/core/gsabrel.h"

namespace {

using namespace sabrel;

// The host's own copy of something in the database.
class ActiveGroups final : public IDBObjectInitializer {
 public:
  void Initialize() override {
    names_.clear();
    const auto rows = GSabrel::ExecuteQuery(
        "SELECT Group_Name FROM PM_Groups WHERE Group_Active = 'Y' ORDER BY Group_Id");
    if (!rows) return;  // told in a message box already
    for (; !rows->EndOfFile(); rows->MoveNext()) {
      names_.push_back(GSabrel::CVString(rows->Fields().Item("Group_Name").Value()));
    }
    rows->Close();
  }
  [[nodiscard]] std::size_t Count() const { return names_.size(); }

 private:
  std::vector<std::string> names_;
};

void LogIn(const std::string& site) {
  GSabrel::DBConnectionName(site);
  GSabrel::DBConnectionUID("ana");
  GSabrel::DBObjectInitializers()->Initialize();
}

void TellFailure() {
  const auto failure = GSabrel::SabrelErrorObject();
  std::cout << "number of the server: " << failure->DBNumber() << '\n' << failure->Text() << '\n';
  GSabrel::ClearConnectionError();
}

}  // namespace

int main(int argc, char** argv) {
  const std::string site = argc > 1 ? argv[1] : "site.db";
  InstallPlatform(ConsolePlatform([site] { return OpenSite(site); }));

  const auto groups = std::make_shared<ActiveGroups>();
  GSabrel::RegisterDBObjectInitializer(groups);
  LogIn(site);
  std::cout << GSabrel::DBConnectionUID() << " works with " << GSabrel::DBConnectionName() << ": "
            << groups->Count() << " groups are active\n";

  if (!GSabrel::ExecuteQuery("SELECT nothing FROM PM_Groups")) TellFailure();
  GSabrel::ShutdownDBConnection();
  return groups->Count() > 0 ? 0 : 1;
}
