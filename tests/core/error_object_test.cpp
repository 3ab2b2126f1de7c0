#include "sabrel/core/error_object.h"

#include <gmock/gmock.h>

#include <new>
#include <stdexcept>

#include "sabrel/core/query_execution.h"
#include "sabrel/platform/identified_object.h"
#include "tests/platform/failures.h"
#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using namespace MSabrel;
using testing::ConnectionRefusal;
using testing::FailureIn;
using testing::Refuse;
using testing::ScriptedPlatform;

struct ErrorObject : ::testing::Test {
  // Lets the server refuse one request, which the error object then holds.
  std::shared_ptr<CErrorObject> After(testing::Refusal refusal) {
    platform.Answer(std::move(refusal));
    EXPECT_THROW(ExecuteRequest("X"), RuntimeError);
    return SabrelErrorObject();
  }
  ScriptedPlatform platform;
};

struct Entity final : IdentifiedObject {
  std::string Identifier() const override { return "7"; }
  std::string ClassName() const override { return "CEntity"; }
  std::string DataText() const override { return "a\r\nb"; }
};

TEST_F(ErrorObject, ClassifiesDatabaseErrorsByTheirNativeNumber) {
  const std::pair<std::int32_t, EDBErrorType> rows[] = {
      {0, dbeNone},
      {1, dbeUniqueConstraintViolated},
      {2291, dbeIntegrityConstraintViolated_ParentKeyNotFound},
      {2292, dbeIntegrityConstraintViolated_ChildRecordFound},
      {942, dbeUnknown}};
  for (const auto& [native, type] : rows) {
    const auto error = After(Refuse(native));
    EXPECT_EQ(error->DBErrorType(), type) << native;
    EXPECT_TRUE(error->IsDBError() && !error->IsConnectionError());
  }
}

TEST_F(ErrorObject, TellsADatabaseErrorInIndentedLines) {
  const auto error = After(Refuse(1, "A\r\nB"));
  const std::string text =
      "Error: 1\r\nDescription: \r\n    A\r\n    B (detail)\r\nSource: Oracle (server)";
  EXPECT_EQ(error->Text(), text);
  for (const Variant& none : {Variant(""), Variant(Null{})}) EXPECT_EQ(error->Text(none), text);
  EXPECT_EQ(error->Text(Variant(12)), text + "\r\nDetails: 12");
  EXPECT_EQ(error->Text(Variant(ObjectRef(std::make_shared<Entity>()))),
            text + "\r\nDetails: \r\n    ID=7\r\n    CLASSNAME=CEntity\r\n    DATA=a\r\n    b");
  EXPECT_EQ(After(Refuse(0))->Text(), "An unexpected error occurred");
}

TEST_F(ErrorObject, TellsConnectionErrorsByTheirCodeOnly) {
  // The length tells the four texts apart.
  const std::pair<std::int32_t, std::size_t> rows[] = {
      {23, 274}, {24, 265}, {30, 366}, {31, 445}, {33, 445}};
  for (const auto& [code, size] : rows) {
    const auto error = After(ConnectionRefusal(code));
    EXPECT_TRUE(error->IsConnectionError() && CheckConnectionError()) << code;
    EXPECT_EQ(error->ConnectionErrorDescription().size(), size) << code;
    EXPECT_EQ(error->Text(Variant("details")), error->ConnectionErrorDescription());
  }
  for (const std::int32_t code : {22, 25, 26, 27, 28, 29, 32, 34}) {
    const auto error = After(ConnectionRefusal(code));
    EXPECT_FALSE(error->IsConnectionError()) << code;
    EXPECT_EQ(error->Text(), "An unexpected error occurred");
  }
}

TEST_F(ErrorObject, ClearKeepsTheOriginator) {
  const auto error = After(Refuse(2292));
  ClearConnectionError();
  EXPECT_EQ(error->Number() + error->DBNumber() + error->DBErrorType(), 0);
  EXPECT_EQ(error->DBDescription() + error->DBSource() + error->DBOriginator(), "server");
}

TEST_F(ErrorObject, CapturesTheExceptionBeingHandledAndNothingElse) {
  CErrorObject error;
  const auto captured = [&error](auto&& thrown) {
    try {
      throw thrown;
    } catch (...) {
      error.Reset();
    }
    return std::to_string(error.Number()) + error.Source() + error.Description() +
           error.HelpFile() + std::to_string(error.HelpContext());
  };
  EXPECT_EQ(captured(RuntimeError(6, "S", "D", "H", 3)), "6SDH3");
  EXPECT_EQ(captured(std::bad_alloc()), "7SabrelOut of memory0");
  EXPECT_EQ(captured(std::logic_error("odd")), "51Sabrelodd0");
  error.Reset();
  EXPECT_EQ(error.Number(), 0);
}

TEST_F(ErrorObject, RaisesWhatItHoldsWithDetailsAppended) {
  const CErrorObject error(RuntimeError(77, "S", "Bad", "H", 3));
  const RuntimeError raised = FailureIn([&] { return error.Raise("x"), 0; });
  EXPECT_EQ(raised.Source() + raised.Description() + raised.HelpFile(), "SBadxH");
  EXPECT_EQ(raised.Number() + raised.HelpContext(), 80);
  EXPECT_EQ(FailureIn([] { return CErrorObject().Raise(), 0; }).Number(), 5);
}

}  // namespace
}  // namespace sabrel
