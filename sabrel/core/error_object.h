// The last failure, classified and told in words that a user can act on.
//
// `Reset` captures a failure: of a database error it also keeps what the server said, from which it
// tells the kind (unique constraint, parent key not found, child record found). Whether a number is
// a database or a connection error is asked of the platform at every question. One such object per
// thread holds the last failure of the component.
//
//   if (CheckConnectionError()) Show(SabrelErrorObject()->ConnectionErrorDescription());
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "sabrel/core/error_codes.h"
#include "sabrel/platform/error_handler.h"
#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/variant.h"

namespace sabrel {

class CErrorObject {
 public:
  /// Captures the exception being handled, if any.
  CErrorObject() { Reset(); }
  explicit CErrorObject(const RuntimeError& failure) { Reset(failure); }

  /// Forgets the failure. `DBOriginator` and `DBData` stay as they are. Errors: none
  void Clear() noexcept;

  /// Captures the exception being handled on this thread; none gives number 0 and empty texts.
  void Reset();
  void Reset(const RuntimeError& failure);

  // Texts of the failure: valid until the next Reset or Clear. Copy what has to last longer.
  [[nodiscard]] std::int32_t Number() const noexcept { return failure_.Number(); }
  [[nodiscard]] const std::string& Source() const noexcept { return failure_.Source(); }
  [[nodiscard]] const std::string& Description() const noexcept { return failure_.Description(); }
  /// Always empty.
  [[nodiscard]] const std::string& DBData() const noexcept { return db_data_; }
  /// Of the last database error; later failures of other kinds leave it.
  [[nodiscard]] const std::string& DBOriginator() const noexcept { return db_originator_; }
  [[nodiscard]] const std::string& HelpFile() const noexcept { return failure_.HelpFile(); }
  [[nodiscard]] std::int32_t HelpContext() const noexcept { return failure_.HelpContext(); }
  /// The native number (1 for ORA-00001); 0 when the failure is no database error.
  [[nodiscard]] std::int32_t DBNumber() const noexcept { return db_number_; }
  /// "source (originator)"
  [[nodiscard]] const std::string& DBSource() const noexcept { return db_source_; }
  /// "message (detail)"
  [[nodiscard]] const std::string& DBDescription() const noexcept { return db_description_; }
  /// Always empty.
  [[nodiscard]] const std::string& DBHelpFile() const noexcept { return db_help_file_; }
  /// Always 0.
  [[nodiscard]] std::int32_t DBHelpContext() const noexcept { return db_help_context_; }
  [[nodiscard]] EDBErrorType DBErrorType() const noexcept { return db_error_type_; }

  /// The text shown to users: number, description, source and details of a database error; what to
  /// do about a connection error; a fixed sentence for anything else. Lines end in CR LF.
  /// `vDetails` is shown with a database error only: an IdentifiedObject as three lines, any other
  /// value as text, empty and null not at all.
  /// Errors: 13 or 91 for details that have no text, when they are to be shown
  [[nodiscard]] std::string Text(const Variant& vDetails = {}) const;

  /// Cost: none; asks the application object
  [[nodiscard]] bool IsDBError() const;
  /// Whether the connection was refused, lost, unknown or too slow. Cost: none; asks the
  /// data-access layer
  [[nodiscard]] bool IsConnectionError() const;
  /// Cause and remedy of a connection error; empty when the failure is none.
  [[nodiscard]] std::string ConnectionErrorDescription() const;

  /// Throws the captured failure again, its description followed directly by `sDetails`.
  /// Errors: the captured one; 5 when nothing was captured
  [[noreturn]] void Raise(std::string_view sDetails = {}) const;

 private:
  void CaptureDatabaseError();
  [[nodiscard]] std::string DatabaseText(const Variant& details) const;
  [[nodiscard]] std::int32_t ConnectionCode() const;

  RuntimeError failure_{0, {}, {}};
  std::int32_t db_number_ = 0;
  std::string db_source_;
  std::string db_description_;
  std::string db_originator_;
  std::string db_data_;
  std::string db_help_file_;
  std::int32_t db_help_context_ = 0;
  EDBErrorType db_error_type_ = dbeNone;
};

namespace MSabrel {

/// This thread's error object, made on first use.
[[nodiscard]] std::shared_ptr<CErrorObject> SabrelErrorObject();
/// This thread's error handler with the component's messages, made on first use.
[[nodiscard]] std::shared_ptr<ErrorHandler> SabrelErrorHandler();
/// Forgets the failure in the error object, of whatever kind it is.
void ClearConnectionError();
/// Whether the failure in the error object is a connection error.
[[nodiscard]] bool CheckConnectionError();

}  // namespace MSabrel

}  // namespace sabrel
