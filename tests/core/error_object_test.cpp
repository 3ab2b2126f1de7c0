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

class ErrorObject : public ::testing::Test {
 protected:
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
      {942, dbeUnknown},
      {-2292, dbeUnknown},
  };
  for (const auto& [native, type] : rows) {
    const auto error = After(Refuse(native));
    EXPECT_EQ(error->DBErrorType(), type) << native;
    EXPECT_TRUE(error->IsDBError() && !error->IsConnectionError());
  }
}

TEST_F(ErrorObject, TellsADatabaseErrorInIndentedLines) {
  EXPECT_EQ(After(Refuse(1, "D"))->Text(),
            "Error: 1\r\nDescription: D (detail)\r\nSource: Oracle (server)");
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
  const struct {
    std::int32_t code;
    const char* start;
    std::size_t size;
  } rows[] = {{23, "The connection to the Data Server has taken longer", 274},
              {24, "The Data Server request has taken longer", 265},
              {30, "The connection to the Data Server has been refused/severed", 366},
              {31, "The connection to the Data Server has failed", 445},
              {33, "The connection to the Data Server has failed", 445}};
  for (const auto& row : rows) {
    const auto error = After(ConnectionRefusal(row.code));
    EXPECT_TRUE(error->IsConnectionError() && CheckConnectionError()) << row.code;
    EXPECT_THAT(error->ConnectionErrorDescription(), ::testing::StartsWith(row.start));
    EXPECT_EQ(error->ConnectionErrorDescription().size(), row.size) << row.code;
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
  EXPECT_EQ(error->DBDescription() + error->DBSource() + error->Description(), "");
  EXPECT_EQ(error->DBOriginator(), "server");
}

TEST_F(ErrorObject, CapturesTheExceptionBeingHandledAndNothingElse) {
  CErrorObject error;
  const auto captured = [&error](auto&& thrown) {
    try {
      throw thrown;
    } catch (...) {
      error.Reset();
    }
    return std::pair(error.Number(), error.Description());
  };
  EXPECT_EQ(captured(RuntimeError(6, "S", "D", "H", 3)), std::pair(6, std::string("D")));
  EXPECT_EQ(error.Source() + error.HelpFile() + std::to_string(error.HelpContext()), "SH3");
  EXPECT_EQ(captured(std::bad_alloc()), std::pair(7, std::string("Out of memory")));
  EXPECT_EQ(captured(std::logic_error("odd")), std::pair(51, std::string("odd")));
  error.Reset();
  EXPECT_EQ(error.Number(), 0);
}

TEST_F(ErrorObject, RaisesWhatItHoldsWithDetailsAppended) {
  const CErrorObject error(RuntimeError(77, "S", "Bad", "H", 3));
  const RuntimeError raised = FailureIn([&] { return error.Raise("x"), 0; });
  EXPECT_EQ(raised.Number(), 77);
  EXPECT_EQ(raised.Source() + raised.Description() + raised.HelpFile(), "SBadxH");
  EXPECT_EQ(raised.HelpContext(), 3);
  EXPECT_EQ(FailureIn([] { return CErrorObject().Raise(), 0; }).Number(), 5);
}

TEST_F(ErrorObject, HandlerKnowsTheMessageOfEveryCode) {
  const char* messages[] = {
      "Unable to find product installation (X$1).",
      "Connection Profile not found.",
      "Login cancelled.",
      "Unable to load MachineId from database.",
      "Unable to login using current Connection Profile.",
      "Query returned no records.",
      "System Options Not Set\r\nPlease setup your System Options first or contact your System "
      "Administrator.",
      "User Not an Enterprise Remote User.",
      "User Not a Data Admin User.",
      "DSMonitor initialization failed.",
      "Unable to obtain OutputServicePort from DataServer.",
      "Property 'X$1' missing from PM_PRODUCT_INFO",
  };
  std::int32_t code = 0;
  for (const char* message : messages) {
    ++code;
    const RuntimeError failure =
        FailureIn([code] { return SabrelErrorHandler()->Raise(code, "MSabrel", "P", {"X$1"}), 0; });
    EXPECT_EQ(CarriedCode(failure.Number()), code);
    EXPECT_EQ(failure.Source() + failure.Description(), "Sabrel" + std::string(message));
  }
}

}  // namespace
}  // namespace sabrel
