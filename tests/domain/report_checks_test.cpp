// Lengthy reports and their dialogue, spreadsheet limits, plans and scopes that a group needs.
#include <gmock/gmock.h>

#include <functional>

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

const std::string kAddress = " host= port=0 user= password= timeout=";

Rows Found() { return {{"object_name"}, {{Variant("LENGTHYREPORT")}}}; }
RoutineOutcome Reason(Variant reason) { return {Variant("ignored"), {std::move(reason)}}; }

class ReportChecks : public ::testing::Test {
 protected:
  // A thread that knows what TASK_FILENAME has.
  void KnowColumns(bool sizes, bool limit) {
    UnloadThread();
    for (const auto& [column, there] : {std::pair("SIZEINROWS", sizes), {"LIMIT", limit}}) {
      platform.Answer(Rows{{"C"}, {{Variant(there ? 1 : 0)}}});
      EXPECT_EQ(GSabrel::DoesFieldExist("TASK_FILENAME", column), there);
    }
    static_cast<void>(platform.Conversation());
  }
  ScriptedPlatform platform;
};

TEST_F(ReportChecks, AskTheUserAboutLengthyReportsOnly) {
  const std::string report =
      "When this report is run it may be time consuming and/or may place an unusual load on the "
      "server. \r\nDo you wish to continue?\n";
  const std::string group =
      "When the above report(s) are run they may be time consuming and/or may place an unusual "
      "load on the server.\r\nDo you wish to continue?\n";
  // What speaks against it, the answer, whether that declines, the lines of the question.
  const std::tuple<Variant, std::int32_t, bool, std::string> rows[] = {
      {Variant(Null{}), kAnswerNo, false, ""},
      {Variant(" A|B "), kAnswerOk, false, "A\r\nB\r\n\r\n"},
      {Variant("A| B|"), kAnswerNo, true, "A\r\n B\r\n\r\n\r\n"},
  };
  platform.Answer(Found());
  for (const auto& [reason, answer, declined, lines] : rows) {
    platform.box_answer = answer;
    platform.Answer(Reason(reason));
    EXPECT_EQ(GSabrel::IsLengthyReport(5), declined) << lines;
    platform.Answer(Reason(reason));
    EXPECT_EQ(GSabrel::IsLengthyReportGroup(5), declined) << lines;
    const std::string box = "box 292 [Lengthy/Complex Report Warning] " + lines;
    const std::string told = platform.Conversation();
    EXPECT_EQ(Has(told, box + report), !lines.empty()) << told;
    EXPECT_EQ(Has(told, box + group), !lines.empty()) << told;
  }
  platform.trace = true;
  EXPECT_FALSE(GSabrel::IsLengthyReport(-5) || GSabrel::IsLengthyReportGroup(7));
  const std::string traced = "trace switch\ntrace Checking expression.\r\nQuery: BEGIN ";
  const std::string call = " ; END;\nmake procedure call\ncall ";
  EXPECT_EQ(platform.Conversation(),
            traced + "LengthyReport.Reason( -5 )" + call + "[LengthyReport.Reason]" + kAddress +
                "0 (,string,) (-5,integer,) (,integer,)\n" + traced +
                "LengthyReport.LengthyReports( 7 )" + call + "[LengthyReport.LengthyReports]" +
                kAddress + "0 (,string,) (7,integer,)\n");
}

TEST_F(ReportChecks, LookForTheOptionalPackageOnce) {
  for (const bool refused : {true, false}) {
    UnloadThread();
    if (refused) platform.Answer(Refuse(942));
    EXPECT_FALSE(GSabrel::LengthyReportsConfigured());
    EXPECT_THAT(platform.Conversation(),
                HasSubstr("query [Select object_name, object_type From user_objects Where "
                          "object_name='LENGTHYREPORT' And object_type='PACKAGE']" +
                          kAddress + "0\n"));
    EXPECT_FALSE(GSabrel::IsLengthyReport(5) || GSabrel::IsLengthyReportGroup(5));
    EXPECT_EQ(platform.Conversation(), "") << "nor is anything called";
  }
}

TEST_F(ReportChecks, LetTheReportRunWhateverFails) {
  platform.box_answer = kAnswerNo;
  platform.trace = true;
  const std::function<bool()> checks[] = {
      [] { return GSabrel::IsLengthyReport(5); }, [] { return GSabrel::IsLengthyReportGroup(5); },
      [] { return GSabrel::IsCspNeeded(5); }, [] { return GSabrel::IsDtsNeeded(5); }};
  for (std::size_t i = 0; i < std::size(checks); ++i) {
    bool reached_end = false;
    for (int n = 1; !reached_end && n < 100; ++n) {
      UnloadThread();
      platform.DropAnswers();
      platform.Answer(Found());
      if (i < 2) {
        EXPECT_TRUE(GSabrel::LengthyReportsConfigured());
        platform.Answer(Reason(Variant("A")));
      }
      platform.FailAtCall(n);
      const bool answer = checks[i]();
      reached_end = !platform.FaultMet();
      platform.FailAtCall(0);
      EXPECT_EQ(answer, reached_end) << "check " << i << ", call " << n;
      EXPECT_EQ(platform.OpenCursors(), 0);
    }
    EXPECT_TRUE(reached_end) << i;
  }
}

TEST_F(ReportChecks, TheRowLimitGoesByTheSpreadsheetsVersion) {
  const std::pair<const char*, std::int32_t> rows[] = {{" 11.9 ", 65000}, {"12.0", 1048000}};
  platform.locale = {",", ".", ".", ":", DateOrder::kDayMonthYear};
  for (const auto& [version, fits] : rows) {
    platform.spreadsheet_version = version;
    EXPECT_EQ(GSabrel::TestRowLimit(fits), Variant(false)) << version;
    EXPECT_EQ(GSabrel::TestRowLimit(fits + 1), Variant(true)) << version;
    EXPECT_EQ(platform.Conversation(), "start excel.application\nstart excel.application\n");
  }
  for (const char* version : {"", "12.0.1", "12,0"}) {
    platform.spreadsheet_version = version;
    EXPECT_EQ(OutcomeOf([] { return GSabrel::TestRowLimit(1); }), "raises 13 Type mismatch")
        << version;
  }
  platform.FailAtCall(1);
  EXPECT_EQ(OutcomeOf([] { return GSabrel::TestRowLimit(1); }), "raises 1234 injected");
}

TEST_F(ReportChecks, ATaskIsJudgedByItsSizeElseByItsLimit) {
  const auto cells = [](Variant limit, std::optional<Variant> size = {}) {
    Rows rows{{"limit"}, {{std::move(limit)}}};
    if (size) rows.columns.emplace_back("X");
    if (size) rows.rows[0].push_back(*size);
    return rows;
  };
  const std::tuple<const char*, Rows, const char*> rows[] = {
      {"a limit that is set", cells(Variant("-2")), "true"},
      {"none", cells(Variant(0)), "false"},
      {"a letter", cells(Variant("Y")), "false"},
      {"a size beyond", cells(Variant(0), Variant(1048001)), "true"},
      {"a size within", cells(Variant(2000000), Variant(1048000)), "false"},
      {"no size", cells(Variant(1048001), Variant(0)), "true"},
      {"a limit too long", cells(Variant(3e9)),
       "raises 6 OverflowUnexpected error, Task Id:5 ,An unexpected error occurred"},
      {"no row", Rows{{"limit"}, {}},
       "raises code 6 Query returned no records.Report does not exists, Report Id:5 Unexpected "
       "error, Task Id:5 ,An unexpected error occurred"},
  };
  for (const auto& [name, answer, outcome] : rows) {
    const bool sizes = answer.columns.size() == 2;
    KnowColumns(sizes, true);
    platform.Answer(answer);
    EXPECT_EQ(OutcomeOf([] { return GSabrel::ReportTooBigForXL("5 "); }), outcome) << name;
    const std::string told = platform.Conversation();
    EXPECT_THAT(
        told, HasSubstr(std::string("query [SELECT LIMIT") + (sizes ? ", NVL(SIZEINROWS,0)" : "") +
                        " FROM TASK_FILENAME B WHERE B.TASKID= 5 ]" + kAddress + "60\n"));
    EXPECT_EQ(Has(told, "start"), sizes) << name;
    EXPECT_EQ(platform.OpenCursors(), 0) << name;
  }
  KnowColumns(false, false);
  EXPECT_FALSE(GSabrel::ReportTooBigForXL("5"));
  EXPECT_EQ(platform.Conversation(), "") << "a site without limits is not asked";
}

TEST_F(ReportChecks, AJobCountsItsTooBigReportsAndSkipsWhatCannotBeChecked) {
  KnowColumns(false, true);
  platform.Answer(Rows{{"TASK_ID"}, {{Variant(1)}, {Variant(Null{})}, {Variant(3)}, {Variant(4)}}});
  platform.Answer(Rows{{"LIMIT"}, {{Variant(1)}}});
  platform.Answer(Rows{{"LIMIT"}, {}});
  platform.Answer(Rows{{"LIMIT"}, {{Variant(2)}}});
  EXPECT_EQ(GSabrel::JobReportsTooBigForXL("7"), 2);
  EXPECT_THAT(platform.Conversation(),
              HasSubstr("query [select task_id FROM Report_Status_V where Job_ID=7 and "
                        "Spool_Filename IS NOT NULL and status_word='Done' order by task_id]" +
                        kAddress + "60\n"));
  platform.Answer(Refuse(942));
  EXPECT_EQ(GSabrel::JobReportsTooBigForXL("7"), 0) << "no rows to walk";
}

// More rows than are read at first: the failure comes while the walk is on.
TEST_F(ReportChecks, AJobsWalkThatBreaksIsRaised) {
  KnowColumns(false, false);
  Rows tasks{{"task_id"}, {}, 2, RuntimeError(1234, "s", "gone")};
  tasks.rows.resize(3, {Variant(std::string(Recordset::kOpenBytes, '1'))});
  platform.Answer(tasks);
  EXPECT_EQ(OutcomeOf([] { return GSabrel::JobReportsTooBigForXL("7"); }),
            "raises 1234 goneUnexpected error, Job Id:7,An unexpected error occurred");
  EXPECT_EQ(platform.OpenCursors(), 0);
}

}  // namespace
}  // namespace sabrel
