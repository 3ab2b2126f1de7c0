#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "adapters/console/console_platform.h"
#include "adapters/sqlite/sqlite_rowlink.h"
#include "sabrel/core/gsabrel.h"
#include "tests/support/sample_site_copy.h"

namespace sabrel::testing {
namespace {

class Hosts : public ::testing::Test {
 protected:
  void SetUp() override {
    CopySampleSite(SiteRelease::kCurrent, folder.Path("site"));
    ConsolePlatformOptions options;
    options.services.answer = AnswerMode::kNo;
    options.services.log.path = folder.Path("log");
    options.application.machine_name = "BRAND-NEW";
    options.application.domain_name = "TEST";
    InstallPlatform(ConsolePlatform(
        [this] {
          ++sessions;
          return OpenSite(folder.Path("site"));
        },
        options));
  }
  void TearDown() override {
    UnloadThread();
    InstallPlatform({});
  }
  [[nodiscard]] static std::int32_t MachineRows() {
    return GSabrel::ExecuteQueryReturningLong(
        "SELECT COUNT(*) FROM PM_ClientMachine WHERE MachineName = 'BRAND-NEW'");
  }
  TemporaryFolder folder;
  std::atomic<int> sessions = 0;
};

// What a host does first; true when it ended with a usable session. A failure ends the process.
bool StartsUp() noexcept {
  GSabrel::LoadMachineId();
  GSabrel::InitializeProductInfo();
  GSabrel::LoadOtherInfo();
  return GSabrel::MachineId() > 0 && GSabrel::DoesTableExist("PM_EMAIL") &&
         GSabrel::SystemFirstDayOfWeek() == "2" &&
         GSabrel::DBColumnLength("PM_StringTable", "StringData") == 4000;
}

TEST_F(Hosts, SixteenThreadsHaveSessionsOfTheirOwnOnAMachineEnteredOnce) {
  EXPECT_TRUE(StartsUp());
  const std::int32_t id = GSabrel::MachineId();
  std::vector<std::thread> threads;
  for (int i = 0; i < 16; ++i) {
    threads.emplace_back([i, id] {
      const std::string name = "thread " + std::to_string(i);
      GSabrel::DBConnectionName(name);
      EXPECT_TRUE(StartsUp());
      EXPECT_EQ(GSabrel::DBConnectionName(), name);
      EXPECT_EQ(GSabrel::MachineId(), id);
      if (i % 2 == 0) UnloadThread();
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(sessions, 17);
  EXPECT_EQ(MachineRows(), 1);
}

TEST_F(Hosts, TwoProcessesStartingTogetherBothEndUsable) {
  int gate[2];
  ASSERT_EQ(pipe(gate), 0);
  pid_t children[2];
  for (pid_t& child : children) {
    child = fork();
    if (child != 0) continue;
    close(gate[1]);
    char go = 0;
    static_cast<void>(read(gate[0], &go, 1));  // both pass when the parent closes its end
    _exit(StartsUp() ? 0 : 1);
  }
  for (const int end : gate) close(end);
  for (const pid_t child : children) {
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
  }
  EXPECT_GE(MachineRows(), 1);
}

}  // namespace
}  // namespace sabrel::testing
