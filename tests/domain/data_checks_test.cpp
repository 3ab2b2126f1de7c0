// Are loaded lists current, does an entity have equivalents, what time does the data span; and the
// host's objects that load from the database.
#include <gmock/gmock.h>

#include "sabrel/core/gsabrel.h"
#include "tests/support/outcome.h"
#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using testing::Has;
using ::testing::HasSubstr;
using testing::OutcomeOf;
using testing::Refuse;
using testing::Rows;
using testing::ScriptedPlatform;

Rows One(Variant value) { return {{"TIMESTAMP"}, {{std::move(value)}}}; }

struct DataChecks : ::testing::Test {
  ScriptedPlatform platform;
};

TEST_F(DataChecks, ListsAreCurrentWhileTheDatabaseHasNoLaterTime) {
  const double noon = 45360.5;
  constexpr double kSecond = 1.0 / 86400;
  const auto at = [](double serial) { return One(Variant(Date(serial))); };
  using testing::ScriptedAnswer;
  const std::tuple<const char*, ScriptedAnswer, ScriptedAnswer, bool> rows[] = {
      {"the same", at(noon), at(noon), true},
      {"a second later", at(noon), at(noon + kSecond), false},
      {"less than half a second later", at(noon), at(noon + 0.4 * kSecond), true},
      {"both null", One(Variant(Null{})), One(Variant(Null{})), true},
      {"centuries apart", at(-600000.0), at(2900000.0), false},
      {"a time as text", One(Variant("2024-03-09 12:00:00")), at(noon), true},
      {"a number is no date", One(Variant(noon)), at(1.0), false},
      {"noted in vain", Refuse(942), at(1.0), false},
      {"asked in vain", at(noon), Refuse(942), true},
  };
  for (const bool fields : {false, true}) {
    const auto note = fields ? GSabrel::LastFieldUpdate : GSabrel::LastEntityUpdate;
    const auto current = fields ? GSabrel::FieldsCurrent : GSabrel::EntitiesCurrent;
    const std::string query =
        fields ? "[SELECT Last_Field_Update" : "[SELECT Ea_Last_Entity_Update";
    for (const auto& [name, noted, now, stays] : rows) {
      UnloadThread();
      static_cast<void>(platform.Conversation());
      platform.Answer(at(99999.0));
      note();
      platform.Answer(noted);
      note();
      platform.Answer(now);
      EXPECT_EQ(current(), stays) << name;
      const std::string told = platform.Conversation();
      EXPECT_EQ(Has(told, "box"), noted.index() + now.index() > 0) << name;
      EXPECT_THAT(told, HasSubstr(query + "() FROM DUAL] host= port=0 user= password= timeout=60"));
      EXPECT_EQ(platform.OpenCursors(), 0);
    }
  }
}

TEST_F(DataChecks, AnEntityHasEquivalentsWhereTheSiteCannotTell) {
  platform.Answer(One(Variant(0)));
  EXPECT_TRUE(GSabrel::EntityHasEQV(7));
  EXPECT_THAT(platform.Conversation(),
              HasSubstr("= 'EA_CLIENT' AND object_name = 'ENTITY_HAS_EQUIV'"));
  UnloadThread();
  platform.Answer(One(Variant(1)));
  for (const int count : {12, 1, 0, -1}) {
    platform.Answer(One(Variant(count)));
    EXPECT_EQ(GSabrel::EntityHasEQV(-7), count > 0) << count;
  }
  EXPECT_THAT(platform.Conversation(), HasSubstr("[SELECT EA_Client.Entity_Has_Equiv(-7) FROM"));
}

TEST_F(DataChecks, TheDataSpansWhatTheDatabaseSaysElseADefault) {
  for (const bool latest : {false, true}) {
    const auto asked = latest ? GSabrel::GetRecordLatestDate : GSabrel::GetRecordOldestDate;
    platform.Answer(One(Variant(Null{})));
    EXPECT_TRUE(asked().IsZero()) << "null is not the default";
    const Date earliest = latest ? Date::Now() : Date::FromCivil({1995, 1, 1, 0, 0, 0});
    const Date answer = asked();
    EXPECT_GE(answer.Serial(), earliest.Serial());
    EXPECT_LE(answer.Serial(), (latest ? Date::Now() : earliest).Serial());
    EXPECT_THAT(platform.Conversation(), HasSubstr("box 16")) << "no row is a failure here";
  }
}

class Recorded final : public IDBObjectInitializer {
 public:
  explicit Recorded(std::function<void()> work) : work_(std::move(work)) {}
  void Initialize() override { work_(); }

 private:
  std::function<void()> work_;
};

TEST_F(DataChecks, RegisteredObjectsAreInitializedInOrder) {
  std::string log;
  const auto object = [&](
                          char letter, std::function<void()> work = [] {}) {
    return std::make_shared<Recorded>([&log, letter, work] {
      log += letter;
      work();
    });
  };
  EXPECT_EQ(OutcomeOf([] { return (GSabrel::RegisterDBObjectInitializer(nullptr), true); }),
            "raises 13 Type mismatch");
  const auto a = object('a');
  const auto b = object('b', [&] {
    for (char late = 'm'; late < 'z'; ++late) GSabrel::RegisterDBObjectInitializer(object(late));
    GSabrel::RegisterDBObjectInitializer(object('X', [] { throw std::domain_error("own"); }));
    GSabrel::RegisterDBObjectInitializer(object('Y'));
  });
  for (const auto& entry : {a, b, a}) GSabrel::RegisterDBObjectInitializer(entry);
  const auto all = GSabrel::DBObjectInitializers();
  EXPECT_EQ(OutcomeOf([&] { return (all->Initialize(), true); }), "raises 51 own");
  EXPECT_EQ(log, "abamnopqrstuvwxyX") << "the failure ends the walk";

  UnloadThread();
  log.clear();
  auto last = object('b');
  const std::weak_ptr<IDBObjectInitializer> held = last;
  GSabrel::RegisterDBObjectInitializer(object('a', [] { UnloadThread(); }));
  GSabrel::RegisterDBObjectInitializer(std::exchange(last, nullptr));
  GSabrel::DBObjectInitializers()->Initialize();
  EXPECT_EQ(log, "ab") << "the walk goes on at the end of the thread's use";
  EXPECT_TRUE(held.expired()) << "and releases its objects";
}

}  // namespace
}  // namespace sabrel
