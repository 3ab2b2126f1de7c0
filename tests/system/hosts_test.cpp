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

// What a host does first; true when it ended with a usable session.
bool StartsUp() {
  try {
    GSabrel::LoadMachineId();
    GSabrel::InitializeProductInfo();
    GSabrel::LoadOtherInfo();
    return GSabrel::MachineId() > 0 && GSabrel::DoesTableExist("PM_EMAIL") &&
           !GSabrel::DoesFieldExist("PM_EMAIL", "NOSUCH") &&
           GSabrel::SystemValueExists("StartOfWeek", "1") &&
           GSabrel::SystemFirstDayOfWeek() == "2" &&
           GSabrel::DBColumnLength("PM_StringTable", "StringData") == 4000 &&
           GSabrel::DoesDbObjectExist("LENGTHYREPORT", "PACKAGE") &&
           GSabrel::GetProcedureLength("EA_CLIENT", "ADD_COMMON_ENTITY") == 2 &&
           GSabrel::ModuleNameMaxLength() > 0;
  } catch (const RuntimeError& failure) {
    ADD_FAILURE() << failure.Description();
    return false;
  }
}

TEST_F(Hosts, ASecondStartOnTheSameMachineInsertsNothing) {
  EXPECT_TRUE(StartsUp());
  const std::int32_t id = GSabrel::MachineId();
  UnloadThread();
  EXPECT_TRUE(StartsUp());
  EXPECT_EQ(GSabrel::MachineId(), id);
  EXPECT_EQ(MachineRows(), 1);
}

TEST_F(Hosts, SixteenThreadsHaveSessionsOfTheirOwn) {
  EXPECT_TRUE(StartsUp());
  std::vector<std::thread> threads;
  std::atomic<int> usable = 0;
  for (int i = 0; i < 16; ++i) {
    threads.emplace_back([&, i] {
      GSabrel::DBConnectionName("thread " + std::to_string(i));
      if (StartsUp() && GSabrel::DBConnectionName() == "thread " + std::to_string(i)) ++usable;
      if (i % 2 == 0) UnloadThread();
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(usable, 16);
  EXPECT_EQ(sessions, 17);
  EXPECT_EQ(MachineRows(), 1);
}

TEST_F(Hosts, TwoProcessesStartingTogetherBothEndUsable) {
  int gate[2];
  ASSERT_EQ(pipe(gate), 0);
  pid_t children[2];
  for (pid_t& child : children) {
    child = fork();
    if (child == 0) {
      close(gate[1]);
      char go = 0;
      static_cast<void>(read(gate[0], &go, 1));  // both pass when the parent closes its end
      _exit(StartsUp() ? 0 : 1);
    }
  }
  close(gate[0]);
  close(gate[1]);
  for (const pid_t child : children) {
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
  }
  EXPECT_GE(MachineRows(), 1);
}

}  // namespace
}  // namespace sabrel::testing
