// Every operation with every one of its allocations failing: nothing but a RuntimeError comes out,
// nothing is lost, and the next call works.
#include <gmock/gmock.h>

#include <cstdlib>
#include <functional>
#include <iostream>

#include "adapters/sqlite/sqlite_rowlink.h"
#include "sabrel/core/gsabrel.h"
#include "tests/memory/failing_memory.h"
#include "tests/memory/steps.h"
#include "tests/support/sample_site_copy.h"
#include "tests/support/scripted_platform.h"

namespace sabrel::testing {
namespace {

/// A session that outlives its threads' uses, so that each use finds it open.
class KeptSession final : public Rowlink {
 public:
  explicit KeptSession(std::shared_ptr<Rowlink> session) : session_(std::move(session)) {}
  std::shared_ptr<Recordset> MakeRecordset() override { return session_->MakeRecordset(); }
  std::shared_ptr<ProcedureCall> MakeProcedureCall() override {
    return session_->MakeProcedureCall();
  }
  std::shared_ptr<RowSetWriter> MakeRowSetWriter() override { return session_->MakeRowSetWriter(); }
  void ShutDown() override {}
  std::int32_t ConnectionErrorCode(std::int32_t number) const override {
    return session_->ConnectionErrorCode(number);
  }
  DatabaseError LastDatabaseError() const override { return session_->LastDatabaseError(); }
  void Cancel() noexcept override { session_->Cancel(); }

 private:
  std::shared_ptr<Rowlink> session_;
};

std::size_t Stride() {
  const char* asked = std::getenv("SABREL_ALLOCATION_STRIDE");
  return asked == nullptr ? 53 : std::strtoul(asked, nullptr, 10);
}

/// Runs steps again and again on sessions of one kind, each time with another allocation failing.
class Exhaustion {
 public:
  using OpenSession = std::function<std::shared_ptr<Rowlink>()>;
  Exhaustion(OpenSession open_session, std::size_t stride)
      : open_session_(std::move(open_session)), stride_(stride) {}

  ~Exhaustion() {
    std::cout << failed_ << " allocations failed, alone or with all that followed\n";
  }

  void Walk(const std::vector<Step>& steps) {
    for (const Step& step : steps) {
      SCOPED_TRACE(step.name);
      static_cast<void>(Run(step, 0, false));
      const std::string expected = Run(step, 0, false).outcome;
      offset_ = (offset_ + 31) % stride_;
      for (const bool for_good : {false, true}) {
        for (std::size_t n = 1 + offset_; Fail(step, n, for_good, expected); n += stride_)
          ++failed_;
      }
    }
  }

 private:
  /// Whether there was an n-th allocation.
  bool Fail(const Step& step, std::size_t n, bool for_good, const std::string& expected) {
    const std::size_t live = LiveAllocations();
    Attempt attempt = Run(step, n, for_good);
    // What is kept for good is made once; what is lost is lost each time.
    for (int again = 0; again < 3 && LiveAllocations() > live; ++again) {
      const std::size_t kept = LiveAllocations();
      attempt = Run(step, n, for_good);
      if (LiveAllocations() <= kept) break;
      if (again == 2) ADD_FAILURE() << "allocation " << n << " lost memory";
    }
    EXPECT_FALSE(Has(attempt.outcome, "lets out")) << "allocation " << n << " " << attempt.outcome;
    EXPECT_EQ(attempt.next, expected) << "after allocation " << n << ": " << attempt.outcome;
    return attempt.met && !::testing::Test::HasFailure();
  }

  Attempt Run(const Step& step, std::size_t n, bool for_good) {
    ScriptedPlatform platform(open_session_);
    platform.trace = true;
    platform.box_answer = kAnswerYes;
    platform.registry["\\HKEY_LOCAL_MACHINE\\SOFTWARE\\Torvane\\Norvasta\\Setup\\AppRootFolder"] =
        "C:\\Program Files\\Norvasta";
    Attempt attempt = step.run(n, for_good);
    // An answer that failed for want of memory may be remembered until the thread's use ends.
    const std::string next = step.run(0, false).outcome;
    EXPECT_FALSE(Has(next, "raises 7 ")) << n << " " << next;
    UnloadThread();
    attempt.next = step.run(0, false).outcome;
    return attempt;
  }

  OpenSession open_session_;
  std::size_t stride_;
  std::size_t offset_ = 0;
  std::size_t failed_ = 0;
};

TEST(RememberedAnswers, AreFoundWithoutAllocation) {
  ScriptedPlatform platform;
  const std::string long_name(60, 'T');
  const auto ask = [&] {
    static_cast<void>(GSabrel::DoesTableExist(long_name, "host", 5001));
    static_cast<void>(GSabrel::DoesFieldExist(long_name, long_name));
    static_cast<void>(GSabrel::DoesThisProcedureExist(long_name, "P"));
    static_cast<void>(GSabrel::SystemValueExists(long_name, long_name, "host", 5000));
    static_cast<void>(GSabrel::DBColumnLength(long_name, long_name));
    static_cast<void>(GFeatureManager::FeatureManager()->IsFeatureEnabled(long_name));
  };
  for (int i = 0; i < 6; ++i) platform.Answer(Rows{{"C"}, {{Variant(1)}}});
  ask();
  static_cast<void>(platform.Conversation());
  FailAllocations(1, false);
  ask();
  EXPECT_FALSE(StopFailing());
  EXPECT_EQ(platform.Conversation(), "");
}

TEST(Exhaustion, OnTheEmbeddedServerIsAFailureLikeAnyOther) {
  FailDatabaseToo();
  const TemporaryFolder folder;
  CopySampleSite(SiteRelease::kCurrent, folder.Path("site"));
  const auto session = std::make_shared<KeptSession>(OpenSite(folder.Path("site")));
  Exhaustion exhaustion([&] { return session; }, Stride());
  exhaustion.Walk(StatementSteps());
  exhaustion.Walk(ServiceSteps());
  Exhaustion opening([&] { return OpenSite(folder.Path("site")); }, 10 * Stride() + 1);
  opening.Walk({{"opening", [] { return GSabrel::MachineId() > 0; }}});
}

}  // namespace
}  // namespace sabrel::testing
