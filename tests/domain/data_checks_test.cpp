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

class DataChecks : public ::testing::Test {
 protected:
  ScriptedPlatform platform;
};

TEST_F(DataChecks, ListsAreCurrentWhileTheDatabaseHasNoLaterTime) {
  const double noon = 45360.5;
  constexpr double kSecond = 1.0 / 86400;
  const struct {
    const char* name;
    std::variant<Rows, testing::Refusal> noted, now;
    bool current;
  } rows[] = {
      {"the same", One(Variant(Date(noon))), One(Variant(Date(noon))), true},
      {"a second later", One(Variant(Date(noon))), One(Variant(Date(noon + kSecond))), false},
      {"less than half a second later", One(Variant(Date(noon))),
       One(Variant(Date(noon + 0.4 * kSecond))), true},
      {"earlier", One(Variant(Date(noon))), One(Variant(Date(noon - 1))), true},
      {"both null", One(Variant(Null{})), One(Variant(Null{})), true},
      {"null first", One(Variant(Null{})), One(Variant(Date(noon))), false},
      {"centuries apart", One(Variant(Date(-600000.0))), One(Variant(Date(2900000.0))), false},
      {"centuries back", One(Variant(Date(2900000.0))), One(Variant(Date(-600000.0))), true},
      {"a time as text", One(Variant("2024-03-09 12:00:00")), One(Variant(Date(noon))), true},
      {"a number is no date", One(Variant(noon)), One(Variant(Date(1.0))), false},
      {"no row", Rows{{"X"}, {}}, One(Variant(Date(1.0))), false},
      {"noted in vain", Refuse(942), One(Variant(Date(1.0))), false},
      {"asked in vain", One(Variant(Date(noon))), Refuse(942), true},
  };
  for (const bool fields : {false, true}) {
    for (const auto& row : rows) {
      UnloadThread();
      static_cast<void>(platform.Conversation());
      platform.Answer(One(Variant(Date(99999.0))));
      fields ? GSabrel::LastFieldUpdate() : GSabrel::LastEntityUpdate();
      std::visit([&](const auto& answer) { platform.Answer(answer); }, row.noted);
      fields ? GSabrel::LastFieldUpdate() : GSabrel::LastEntityUpdate();
      std::visit([&](const auto& answer) { platform.Answer(answer); }, row.now);
      EXPECT_EQ(fields ? GSabrel::FieldsCurrent() : GSabrel::EntitiesCurrent(), row.current)
          << row.name;
      const std::string told = platform.Conversation();
      EXPECT_EQ(Has(told, "box"), row.noted.index() + row.now.index() > 0) << row.name;
      EXPECT_THAT(told, HasSubstr(std::string("query [SELECT ") +
                                  (fields ? "Last_Field_Update" : "Ea_Last_Entity_Update") +
                                  "() FROM DUAL] host= port=0 user= password= timeout=60\n"));
      EXPECT_EQ(platform.OpenCursors(), 0);
    }
  }
  UnloadThread();
  platform.Answer(One(Variant(Date(noon))));
  EXPECT_FALSE(GSabrel::EntitiesCurrent()) << "before anything was noted";
}

TEST_F(DataChecks, AnEntityHasEquivalentsWhereTheSiteCannotTell) {
  platform.Answer(One(Variant(0)));
  EXPECT_TRUE(GSabrel::EntityHasEQV(7));
  EXPECT_THAT(platform.Conversation(), HasSubstr("package_name = 'EA_CLIENT' AND object_name = "
                                                 "'ENTITY_HAS_EQUIV'"));
  EXPECT_TRUE(GSabrel::EntityHasEQV(8));
  EXPECT_EQ(platform.Conversation(), "");
  UnloadThread();
  platform.Answer(One(Variant(1)));
  const std::pair<Variant, bool> rows[] = {{Variant(1), true},
                                           {Variant(12), true},
                                           {Variant(0), false},
                                           {Variant(-1), false},
                                           {Variant(Null{}), false}};
  for (const auto& [count, has] : rows) {
    platform.Answer(One(count));
    EXPECT_EQ(GSabrel::EntityHasEQV(-7), has);
    EXPECT_THAT(platform.Conversation(),
                HasSubstr("query [SELECT EA_Client.Entity_Has_Equiv(-7) FROM DUAL]"));
  }
  platform.Answer(Refuse(942));
  EXPECT_FALSE(GSabrel::EntityHasEQV(7));
}

TEST_F(DataChecks, TheDataSpansWhatTheDatabaseSaysElseADefault) {
  const Date some = Date::FromCivil({2024, 3, 9, 23, 0, 0});
  for (const bool latest : {false, true}) {
    const auto asked = [&] {
      return latest ? GSabrel::GetRecordLatestDate() : GSabrel::GetRecordOldestDate();
    };
    platform.Answer(One(Variant(some)));
    EXPECT_EQ(asked(), some);
    EXPECT_THAT(platform.Conversation(),
                HasSubstr(std::string("query [Select ") + (latest ? "Max" : "Min") +
                          "(TimeStamp) as TimeStamp From ZR_AVAILABLE_DATA] host= port=0 user= "
                          "password= timeout=60\n"));
    platform.Answer(One(Variant(Null{})));
    EXPECT_TRUE(asked().IsZero()) << "null is not the default";
    platform.Answer(One(Variant("never")));
    EXPECT_EQ(OutcomeOf(asked), "raises 13 Type mismatch");
    EXPECT_EQ(platform.OpenCursors(), 0);
    for (const bool refused : {true, false}) {
      refused ? platform.Answer(Refuse(942)) : platform.Answer(Rows{{"TimeStamp"}, {}});
      const Date before = Date::Now();
      const Date answer = asked();
      if (latest) {
        EXPECT_GE(answer.Serial(), before.Serial());
        EXPECT_LE(answer.Serial(), Date::Now().Serial());
      } else {
        EXPECT_EQ(OutcomeOf([&] { return answer; }), "1995-01-01 00:00:00");
      }
      EXPECT_THAT(platform.Conversation(), HasSubstr("box 16")) << "no data is a failure here";
    }
  }
}

class Recorded final : public IDBObjectInitializer {
 public:
  Recorded(std::string& log, char name, std::function<void()> work = {})
      : log_(log), name_(name), work_(std::move(work)) {}
  void Initialize() override {
    log_ += name_;
    if (work_) work_();
  }

 private:
  std::string& log_;
  char name_;
  std::function<void()> work_;
};

TEST_F(DataChecks, RegisteredObjectsAreInitializedInOrder) {
  std::string log;
  GSabrel::DBObjectInitializers()->Initialize();
  EXPECT_EQ(OutcomeOf([] {
              GSabrel::RegisterDBObjectInitializer(nullptr);
              return true;
            }),
            "raises 13 Type mismatch");
  const auto a = std::make_shared<Recorded>(log, 'a');
  bool registered = false;
  const auto b = std::make_shared<Recorded>(log, 'b', [&] {
    if (!std::exchange(registered, true)) {
      for (char late = 'm'; late < 'z'; ++late) {
        GSabrel::RegisterDBObjectInitializer(std::make_shared<Recorded>(log, late));
      }
    }
  });
  for (const auto& object : {a, b, a}) GSabrel::RegisterDBObjectInitializer(object);
  const auto all = GSabrel::DBObjectInitializers();
  EXPECT_EQ(all, GSabrel::DBObjectInitializers());
  all->Initialize();
  EXPECT_EQ(log, "abamnopqrstuvwxy") << "also those that were registered on the way";
  std::size_t walked = 0;
  for (const auto& entry : *all) walked += entry == a ? 1U : 0U;
  EXPECT_EQ(walked, 2U) << "duplicates are kept";

  log.clear();
  GSabrel::RegisterDBObjectInitializer(
      std::make_shared<Recorded>(log, 'X', [] { throw std::domain_error("own"); }));
  GSabrel::RegisterDBObjectInitializer(std::make_shared<Recorded>(log, 'Y'));
  EXPECT_EQ(OutcomeOf([&] { return (all->Initialize(), true); }), "raises 51 own");
  EXPECT_EQ(log, "abamnopqrstuvwxyX") << "the failure ends the walk";
}

TEST_F(DataChecks, AnObjectMayEndTheThreadsUseWhileItIsInitialized) {
  std::string log;
  GSabrel::RegisterDBObjectInitializer(
      std::make_shared<Recorded>(log, 'a', [] { UnloadThread(); }));
  std::weak_ptr<IDBObjectInitializer> held;
  {
    const auto last = std::make_shared<Recorded>(log, 'b');
    held = last;
    GSabrel::RegisterDBObjectInitializer(last);
  }
  GSabrel::DBObjectInitializers()->Initialize();
  EXPECT_EQ(log, "ab") << "the walk goes on";
  EXPECT_TRUE(held.expired()) << "and releases its objects";
  EXPECT_EQ(
      OutcomeOf([] { return GSabrel::DBObjectInitializers()->begin() == std::default_sentinel; }),
      "true");
}

}  // namespace
}  // namespace sabrel
