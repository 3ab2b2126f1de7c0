#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "sabrel/core/gsabrel.h"
#include "sabrel/platform/module_state.h"
#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using testing::ScriptedPlatform;

std::atomic<int> live_states = 0;
std::vector<std::string> ended;

struct First {
  First() { ++live_states; }
  First(const First&) = delete;
  First& operator=(const First&) = delete;
  ~First() { --live_states; }
};
struct Second {
  ~Second() {
    // A state that ends may still use an earlier one and the platform.
    static_cast<void>(ModuleState<First>());
    ended.push_back("second ends before the platform: " +
                    CurrentPlatform().application->ProductName());
  }
};

TEST(ThreadState, BelongsToItsThreadAndEndsWithIt) {
  const ScriptedPlatform platform;
  First& own = ModuleState<First>();
  EXPECT_EQ(&own, &ModuleState<First>());
  std::thread([&own] { EXPECT_NE(&own, &ModuleState<First>()); }).join();
  EXPECT_EQ(live_states, 1) << "the other thread's went with it";
  UnloadThread();
  EXPECT_EQ(live_states, 0);
}

TEST(ThreadState, EndsInReverseOrderWithThePlatformLast) {
  const ScriptedPlatform platform;
  static_cast<void>(ModuleState<First>());
  static_cast<void>(ModuleState<Second>());
  UnloadThread();
  EXPECT_THAT(ended, ::testing::ElementsAre("second ends before the platform: Norvasta"));
  EXPECT_EQ(live_states, 0);
}

TEST(ThreadState, WithoutAPlatformTheFirstUseNamesTheMissingCall) {
  UnloadThread();
  InstallPlatform({});
  EXPECT_EQ(GSabrel::SabrelErrorObject()->Number(), 0) << "needs no platform yet";
  for (const PlatformFactory& factory :
       {PlatformFactory{}, PlatformFactory([] { return Platform{}; })}) {
    InstallPlatform(factory);
    try {
      GSabrel::ExecuteRequest("X");
      ADD_FAILURE() << "used without a platform";
    } catch (const RuntimeError& failure) {
      EXPECT_EQ(failure.Number(), 91);
      EXPECT_THAT(failure.Description(), ::testing::HasSubstr("InstallPlatform"));
    }
  }
  UnloadThread();
  InstallPlatform({});
}

TEST(ThreadState, ManyThreadsComeAndGo) {
  const ScriptedPlatform platform;
  std::vector<std::thread> threads;
  for (int i = 0; i < 16; ++i) {
    threads.emplace_back([] {
      for (int round = 0; round < 20; ++round) {
        EXPECT_EQ(GSabrel::SabrelErrorObject()->Number(), 0);
        static_cast<void>(ModuleState<First>());
        UnloadThread();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(live_states, 0);
}

}  // namespace
}  // namespace sabrel
