// A remembered answer costs no allocation and no time that grows with their number.
#include <gmock/gmock.h>

#include <cstdlib>
#include <new>

#include "sabrel/core/gsabrel.h"
#include "tests/support/scripted_platform.h"

namespace {
thread_local std::size_t allocations = 0;
}

void* operator new(std::size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace sabrel {
namespace {

TEST(RememberedAnswers, AreFoundWithoutAllocation) {
  testing::ScriptedPlatform platform;
  const std::string long_name(60, 'T');
  const auto ask = [&] {
    static_cast<void>(GSabrel::DoesTableExist(long_name, "host", 5001));
    static_cast<void>(GSabrel::DoesFieldExist(long_name, long_name));
    static_cast<void>(GSabrel::DoesThisProcedureExist(long_name, "P"));
    static_cast<void>(GSabrel::SystemValueExists(long_name, long_name, "host", 5000));
    static_cast<void>(GSabrel::DBColumnLength(long_name, long_name));
    static_cast<void>(GFeatureManager::FeatureManager()->IsFeatureEnabled(long_name));
  };
  for (int i = 0; i < 6; ++i) platform.Answer(testing::Rows{{"C"}, {{Variant(1)}}});
  ask();
  static_cast<void>(platform.Conversation());
  const std::size_t before = allocations;
  ask();
  EXPECT_EQ(allocations, before);
  EXPECT_EQ(platform.Conversation(), "");
}

// With a look-up that is linear in the entries this would take minutes.
TEST(RememberedAnswers, StayQuickToFindAmongHundredThousand) {
  testing::ScriptedPlatform platform;
  for (int round = 0; round < 2; ++round) {
    for (int i = 0; i < 100'000; ++i) {
      static_cast<void>(GSabrel::DoesFieldExist("TABLE", std::to_string(i)));
      if (i % 10'000 == 0) static_cast<void>(platform.Conversation());
    }
  }
  static_cast<void>(platform.Conversation());
  EXPECT_FALSE(GSabrel::DoesFieldExist("table", "99999"));
  EXPECT_EQ(platform.Conversation(), "");
}

}  // namespace
}  // namespace sabrel
