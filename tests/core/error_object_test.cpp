#include "sabrel/core/error_object.h"

#include <gmock/gmock.h>

#include <new>
#include <stdexcept>

#include "sabrel/core/query_execution.h"
#include "sabrel/platform/identified_object.h"
#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using namespace MSabrel;
using testing::ConnectionRefusal;
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
    EXPECT_EQ(error->DBNumber(), native);
    EXPECT_TRUE(error->IsDBError());
    EXPECT_FALSE(error->IsConnectionError());
  }
}

TEST_F(ErrorObject, TellsADatabaseErrorInIndentedLines) {
  EXPECT_EQ(After(Refuse(1, "D"))->Text(),
            "Error: 1\r\nDescription: D (detail)\r\nSource: Oracle (server)");
  const auto error = After(Refuse(1, "A\r\nB"));
  const std::string text =
      "Error: 1\r\nDescription: \r\n    A\r\n    B (detail)\r\nSource: Oracle (server)";
  EXPECT_EQ(error->Text(), text);
  EXPECT_EQ(error->Text(Variant("")), text);
  EXPECT_EQ(error->Text(Variant(Null{})), text);
  EXPECT_EQ(error->Text(Variant(12)), text + "\r\nDetails: 12");
  EXPECT_EQ(error->Text(Variant(ObjectRef(std::make_shared<Entity>()))),
            text + "\r\nDetails: \r\n    ID=7\r\n    CLASSNAME=CEntity\r\n    DATA=a\r\n    b");
  EXPECT_THROW(static_cast<void>(error->Text(Variant(std::vector<Variant>{}))), RuntimeError);
  EXPECT_EQ(After(Refuse(0))->Text(), "An unexpected error occurred");
}

TEST_F(ErrorObject, TellsConnectionErrorsByTheirCodeOnly) {
  const std::string failed =
      "The connection to the Data Server has failed.  This may be due to an invalid Data Server "
      "Host/Port \r\n"
      "in your Connection Profile or a network failure.  If you are trying to start the "
      "application for \r\n"
      "the first time, you may have entered invalid information in your Connection Profile.  \r\n"
      "Use the Connection Manager to verify your connection information is valid and check that "
      "\r\n"
      "your network cable is plugged in and that your network is working.";
  const std::pair<std::int32_t, std::string> rows[] = {
      {23,
       "The connection to the Data Server has taken longer than the maximum time allowed.\r\n"
       "This can be caused by a low 'Connect Timeout' value in your Connection\r\n"
       "Profile, or a Data Server failure.  Try increasing your 'Connect Timeout' using\r\n"
       "the Connection Manager, and try again."},
      {24,
       "The Data Server request has taken longer than the maximum time allowed.  This can be\r\n"
       "caused by a low 'Receive Timeout' value in your Connection Profile, or a\r\n"
       "Data Server failure.  Try increasing your 'Receive Timeout' using the Connection\r\n"
       "Manager, and try again."},
      {30,
       "The connection to the Data Server has been refused/severed.  This can be caused by\r\n"
       "an invalid Connection Profile, or a Data Server failure, respectively.  If you are\r\n"
       "trying to start the application for the first time, you may have entered invalid\r\n"
       "information in your Connection Profile.  Use the Connection Manager to verify your\r\n"
       "connection information is valid."},
      {31, failed},
      {33, failed},
  };
  for (const auto& [code, text] : rows) {
    const auto error = After(ConnectionRefusal(code));
    EXPECT_TRUE(error->IsConnectionError()) << code;
    EXPECT_TRUE(CheckConnectionError());
    EXPECT_EQ(error->ConnectionErrorDescription(), text);
    EXPECT_EQ(error->Text(Variant("details")), text);
  }
  for (const std::int32_t code : {22, 25, 26, 27, 28, 29, 32, 34}) {
    const auto error = After(ConnectionRefusal(code));
    EXPECT_FALSE(error->IsConnectionError()) << code;
    EXPECT_EQ(error->ConnectionErrorDescription(), "");
    EXPECT_EQ(error->Text(), "An unexpected error occurred");
  }
}

TEST_F(ErrorObject, ClearKeepsTheOriginator) {
  const auto error = After(Refuse(2292));
  ClearConnectionError();
  EXPECT_EQ(error->Number(), 0);
  EXPECT_EQ(error->DBNumber(), 0);
  EXPECT_EQ(error->DBErrorType(), dbeNone);
  EXPECT_EQ(error->DBDescription() + error->DBSource() + error->Description(), "");
  EXPECT_EQ(error->DBOriginator(), "server");
  EXPECT_FALSE(error->IsDBError() || error->IsConnectionError());
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
  EXPECT_EQ(error.Text(), "An unexpected error occurred");
}

TEST_F(ErrorObject, RaisesWhatItHoldsWithDetailsAppended) {
  const CErrorObject error(RuntimeError(77, "S", "Bad", "H", 3));
  try {
    error.Raise("x");
  } catch (const RuntimeError& failure) {
    EXPECT_EQ(failure.Number(), 77);
    EXPECT_EQ(failure.Source() + failure.Description() + failure.HelpFile(), "SBadxH");
    EXPECT_EQ(failure.HelpContext(), 3);
  }
  try {
    CErrorObject().Raise();
  } catch (const RuntimeError& failure) {
    EXPECT_EQ(failure.Number(), 5);
  }
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
    try {
      SabrelErrorHandler()->Raise(code, "MSabrel", "P", {"X$1"});
    } catch (const RuntimeError& failure) {
      EXPECT_EQ(CarriedCode(failure.Number()), code);
      EXPECT_EQ(failure.Source() + failure.Module() + failure.Procedure(), "SabrelMSabrelP");
      EXPECT_EQ(failure.Description(), message);
    }
  }
}

}  // namespace
}  // namespace sabrel
