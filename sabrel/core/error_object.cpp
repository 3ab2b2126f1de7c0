#include "sabrel/core/error_object.h"

#include <exception>

#include "sabrel/platform/conversions.h"
#include "sabrel/platform/identified_object.h"
#include "sabrel/platform/module_state.h"
#include "sabrel/platform/platform.h"
#include "sabrel/platform/utf8.h"

namespace sabrel {
namespace {

constexpr std::string_view kLineBreak = "\r\n";

EDBErrorType Classify(std::int32_t native_number) {
  switch (native_number) {
    case 0: return dbeNone;
    case 1: return dbeUniqueConstraintViolated;
    case 2291: return dbeIntegrityConstraintViolated_ParentKeyNotFound;
    case 2292: return dbeIntegrityConstraintViolated_ChildRecordFound;
    default: return dbeUnknown;
  }
}

// Empty for a code that is no connection error: 25 to 29, 32 and whatever else a server may send.
std::string_view ConnectionText(std::int32_t code) {
  switch (code) {
    case 23:
      return "The connection to the Data Server has taken longer than the maximum time allowed.\r\n"
             "This can be caused by a low 'Connect Timeout' value in your Connection\r\n"
             "Profile, or a Data Server failure.  Try increasing your 'Connect Timeout' using\r\n"
             "the Connection Manager, and try again.";
    case 24:
      return "The Data Server request has taken longer than the maximum time allowed.  This can "
             "be\r\n"
             "caused by a low 'Receive Timeout' value in your Connection Profile, or a\r\n"
             "Data Server failure.  Try increasing your 'Receive Timeout' using the Connection\r\n"
             "Manager, and try again.";
    case 30:
      return "The connection to the Data Server has been refused/severed.  This can be caused "
             "by\r\n"
             "an invalid Connection Profile, or a Data Server failure, respectively.  If you "
             "are\r\n"
             "trying to start the application for the first time, you may have entered invalid\r\n"
             "information in your Connection Profile.  Use the Connection Manager to verify "
             "your\r\n"
             "connection information is valid.";
    case 31:
    case 33:
      return "The connection to the Data Server has failed.  This may be due to an invalid Data "
             "Server Host/Port \r\n"
             "in your Connection Profile or a network failure.  If you are trying to start the "
             "application for \r\n"
             "the first time, you may have entered invalid information in your Connection "
             "Profile.  \r\n"
             "Use the Connection Manager to verify your connection information is valid and check "
             "that \r\n"
             "your network cable is plugged in and that your network is working.";
    default: return {};
  }
}

std::string Indented(const std::string& text) {
  if (text.find(kLineBreak) == std::string::npos) return text;
  return "\r\n    " + ReplaceAll(text, kLineBreak, "\r\n    ");
}

std::string DetailsText(const Variant& details) {
  if (details.IsEmpty() || details.IsNull()) return {};
  if (const ObjectRef* object = details.GetIf<ObjectRef>()) {
    if (const auto* identified = dynamic_cast<const IdentifiedObject*>(object->get())) {
      return "ID=" + identified->Identifier() + "\r\nCLASSNAME=" + identified->ClassName() +
             "\r\nDATA=" + identified->DataText();
    }
  }
  return ToText(details);
}

}  // namespace

void CErrorObject::Clear() noexcept {
  failure_ = RuntimeError(0, {}, {});
  db_number_ = 0;
  db_source_.clear();
  db_description_.clear();
  db_help_file_.clear();
  db_help_context_ = 0;
  db_error_type_ = dbeNone;
}

void CErrorObject::Reset() {
  const std::exception_ptr handled = std::current_exception();
  Reset(handled ? FailureOf(handled) : RuntimeError(0, {}, {}));
}

void CErrorObject::Reset(const RuntimeError& failure) {
  Clear();
  failure_ = failure;
  RaisingRuntimeErrors([&] { CaptureDatabaseError(); });
}

void CErrorObject::CaptureDatabaseError() {
  if (!IsDBError()) return;
  DatabaseError error = CurrentPlatform().rowlink->LastDatabaseError();
  std::string source = error.source + " (" + error.originator + ")";
  db_description_ = error.message + " (" + error.detail + ")";
  db_source_ = std::move(source);
  db_originator_ = std::move(error.originator);
  db_number_ = error.native_number;
  db_error_type_ = Classify(db_number_);
}

bool CErrorObject::IsDBError() const {
  return Number() != 0 && RaisingRuntimeErrors([&] {
           return CurrentPlatform().application->ErrorCodeOf(Number()) == kDatabaseErrorCode;
         });
}

std::int32_t CErrorObject::ConnectionCode() const {
  if (Number() == 0 || IsDBError()) return 0;
  return RaisingRuntimeErrors(
      [&] { return CurrentPlatform().rowlink->ConnectionErrorCode(Number()); });
}

bool CErrorObject::IsConnectionError() const { return !ConnectionText(ConnectionCode()).empty(); }

std::string CErrorObject::ConnectionErrorDescription() const {
  return RaisingRuntimeErrors([&] { return std::string(ConnectionText(ConnectionCode())); });
}

std::string CErrorObject::Text(const Variant& vDetails) const {
  return RaisingRuntimeErrors([&] {
    if (IsDBError() && db_number_ != 0) return DatabaseText(vDetails);
    std::string connection = ConnectionErrorDescription();
    return connection.empty() ? "An unexpected error occurred" : connection;
  });
}

std::string CErrorObject::DatabaseText(const Variant& details) const {
  std::string text =
      "Error: " + std::to_string(db_number_) + "\r\nDescription: " + Indented(db_description_);
  if (!db_source_.empty()) text += "\r\nSource: " + db_source_;
  const std::string shown = DetailsText(details);
  if (!shown.empty()) text += "\r\nDetails: " + Indented(shown);
  return text;
}

void CErrorObject::Raise(std::string_view sDetails) const {
  if (Number() == 0) throw RuntimeError(RuntimeErrorNumber::kInvalidCall);
  throw RaisingRuntimeErrors([&] {
    return RuntimeError(Number(), Source(), Description() + std::string(sDetails), HelpFile(),
                        HelpContext());
  });
}

namespace MSabrel {
namespace {

std::shared_ptr<ErrorHandler> MakeErrorHandler() {
  auto handler = std::make_shared<ErrorHandler>();
  handler->Source("Sabrel");
  handler->Register(sabProductInstallationError, "Unable to find product installation ($1).");
  handler->Register(sabConnectionProfileError, "Connection Profile not found.");
  handler->Register(sabLoginCancelledError, "Login cancelled.");
  handler->Register(sabMachineIdError, "Unable to load MachineId from database.");
  handler->Register(sabAutoLoginError, "Unable to login using current Connection Profile.");
  handler->Register(sabNoDataError, "Query returned no records.");
  handler->Register(sabNoSystemOptions,
                    "System Options Not Set\r\n"
                    "Please setup your System Options first or contact your System Administrator.");
  handler->Register(sabEARemoteUserError, "User Not an Enterprise Remote User.");
  handler->Register(sabEADataAdminUserError, "User Not a Data Admin User.");
  handler->Register(sabDSMonitorError, "DSMonitor initialization failed.");
  handler->Register(sabOutputServicePortError,
                    "Unable to obtain OutputServicePort from DataServer.");
  handler->Register(sabProductInfoError, "Property '$1' missing from PM_PRODUCT_INFO");
  return handler;
}

struct ErrorState {
  std::shared_ptr<CErrorObject> object;
  std::shared_ptr<ErrorHandler> handler;
};

}  // namespace

std::shared_ptr<CErrorObject> SabrelErrorObject() {
  auto& state = ModuleState<ErrorState>();
  // As when the component is loaded: what the host is handling just now is not this component's
  // failure.
  if (!state.object) state.object = std::make_shared<CErrorObject>(RuntimeError(0, {}, {}));
  return state.object;
}

std::shared_ptr<ErrorHandler> SabrelErrorHandler() {
  auto& state = ModuleState<ErrorState>();
  if (!state.handler) state.handler = MakeErrorHandler();
  return state.handler;
}

void ClearConnectionError() { SabrelErrorObject()->Clear(); }

bool CheckConnectionError() { return SabrelErrorObject()->IsConnectionError(); }

}  // namespace MSabrel
}  // namespace sabrel
