#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <thread>

#include "sabrel/core/gsabrel.h"
#include "sabrel/core/session.h"
#include "sabrel/platform/module_state.h"
#include "tests/platform/failures.h"
#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using testing::ScriptedPlatform;

std::atomic<int> live_states = 0;
bool note_endings = false;
std::vector<std::string> ended;

struct First {
  First() { ++live_states; }
  ~First() {
    --live_states;
    if (note_endings) ended.push_back("first");
  }
};
struct Second {
  ~Second() {
    // May still use an earlier state and the platform, and end the thread once more.
    static_cast<void>(ModuleState<First>());
    ended.push_back("second, under " + CurrentPlatform().application->ProductName());
    UnloadThread();
  }
};

TEST(ThreadState, BelongsToItsThreadAndEndsWithIt) {
  const ScriptedPlatform platform;
  First& own = ModuleState<First>();
  std::vector<std::thread> threads;
  for (int i = 0; i < 16; ++i) {
    threads.emplace_back([&own] {
      for (int round = 0; round < 20; ++round) {
        EXPECT_EQ(GSabrel::SabrelErrorObject()->Number(), 0);
        EXPECT_NE(&own, &ModuleState<First>());
        if (round % 4 != 3) UnloadThread();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(&own, &ModuleState<First>());
  EXPECT_EQ(live_states, 1) << "the other threads' went with them";
  UnloadThread();
  EXPECT_EQ(live_states, 0);
}

TEST(ThreadState, EndsInReverseOrderWithThePlatformLast) {
  ScriptedPlatform platform;
  static_cast<void>(ModuleState<First>());
  static_cast<void>(ModuleState<Second>());
  static_cast<void>(CurrentPlatform());
  note_endings = true;
  UnloadThread();
  note_endings = false;
  EXPECT_THAT(ended, ::testing::ElementsAre("second, under Norvasta", "first"));
  EXPECT_EQ(live_states, 0);
  EXPECT_THAT(platform.Conversation(), ::testing::HasSubstr("shut down\n"));
}

// The component used by a host's thread-local object after the thread's end has run.
struct UsesLate {
  ~UsesLate() {
    MSabrel::SabrelErrorObject()->Reset(RuntimeError(77, "late", "use"));
    EXPECT_EQ(&ModuleState<First>(), &ModuleState<First>());
  }
};

TEST(ThreadState, OfALateUseNeverReachesAnotherThread) {
  ScriptedPlatform platform;
  for (int i = 0; i < 20; ++i) {  // ids of ended threads are given again
    std::thread([] {
      static thread_local UsesLate late;
      static_cast<void>(late);
      EXPECT_EQ(GSabrel::SabrelErrorObject()->Number(), 0);
    }).join();
  }
}

TEST(ThreadState, AFactoryMayUseTheComponentWhenItEndsAndAMissingOneIsNamed) {
  struct Guard {
    ~Guard() { InstallPlatform({}); }
  };
  InstallPlatform([guard = std::make_shared<Guard>()] { return Platform{}; });
  InstallPlatform({});
  EXPECT_EQ(GSabrel::SabrelErrorObject()->Number(), 0) << "needs no platform yet";
  for (const PlatformFactory& factory :
       {PlatformFactory{}, PlatformFactory([] { return Platform{}; })}) {
    InstallPlatform(factory);
    // Also those that answer every other failure themselves.
    const std::function<void()> operations[] = {
        [] { GSabrel::ExecuteRequest("X"); },
        [] { static_cast<void>(GSabrel::DoesTableExist("T")); },
        [] { static_cast<void>(GSabrel::DoesDbObjectExist("T")); },
        [] { static_cast<void>(GSabrel::GetProcedureLength("P", "F")); },
        [] { static_cast<void>(GSabrel::IsClientServerCompatible()); },
        [] { static_cast<void>(GSabrel::IsLucentVersionSupported("R17")); },
        [] { static_cast<void>(GFeatureManager::FeatureManager()); },
        [] { static_cast<void>(CConnection().InitializeConnectionFeatures()); },
        [] { GSabrel::GetNHighAttemptsValue(); },
        [] { static_cast<void>(GSabrel::EmailEnabled()); },
        [] { static_cast<void>(MSabrel::ProductProperty("TimeSlices")); },
        [] { static_cast<void>(GSabrel::IsLengthyReport(1)); },
        [] { static_cast<void>(GSabrel::IsCspNeeded(1)); },
        [] { static_cast<void>(GSabrel::EA_Remove_Common_Entity(1)); },
        [] { static_cast<void>(GSabrel::ClearEATempRecords(1, Date())); },
        [] { static_cast<void>(GSabrel::JobReportsTooBigForXL("1")); },
        [] {
          std::int32_t hour = 0;
          static_cast<void>(GSabrel::GetStartEndHour(1, 1, 0, 9, hour, hour, true));
        },
    };
    for (int round = 0; round < 2; ++round) {
      for (const auto& operation : operations) {
        const RuntimeError failure = testing::FailureIn([&] { return operation(), 0; });
        EXPECT_EQ(failure.Number(), 91) << &operation - operations;
        EXPECT_THAT(failure.Description(), ::testing::HasSubstr("InstallPlatform"));
      }
    }
  }
  InstallPlatform({});
  UnloadThread();
}

}  // namespace
}  // namespace sabrel
