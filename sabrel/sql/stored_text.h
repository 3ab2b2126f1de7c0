// Texts of any length, kept as numbered rows of PM_StringTable.
//
// A text is cut into pieces as long as the column StringData, in characters. Up to ten pieces go
// out as inserts of their own; more of them in one request. An empty text is one row with a null. A
// text in line mode has a row a line: it is written in one request and read back with the delimiter
// after every line. Nothing here is rolled back: a save that fails half-way leaves what was
// written.
//
//   CDBString text;  text.Text("SELECT ...");  text.Save();  Remember(text.Id());
//   const std::string again = GDBString::LoadDBString(id)->Text();
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "sabrel/platform/named_values.h"
#include "sabrel/platform/narrowing.h"
#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/text_string.h"

namespace sabrel {

using TextStringRef = std::shared_ptr<TextString>;

class CDBString {
 public:
  CDBString() = default;
  CDBString(const CDBString&) = delete;  // a copy would share the text
  CDBString& operator=(const CDBString&) = delete;

  /// In PM_StringTable; below 1 there are no rows.
  [[nodiscard]] std::int32_t Id() const noexcept { return id_; }
  void Id(std::int32_t value) noexcept { id_ = value; }
  template <WiderThan32Bits Wide>
  void Id(Wide value) = delete;
  [[nodiscard]] bool IsValid() const noexcept { return id_ >= 1; }

  [[nodiscard]] const std::string& Text() const noexcept { return text_->Text(); }
  void Text(std::string value) { text_->Text(std::move(value)); }
  /// The object that holds the text, shared with whoever set it.
  [[nodiscard]] const TextStringRef& TextString() const noexcept { return text_; }
  /// Null is ignored.
  void TextString(TextStringRef value);

  /// Whether each row is one line. Written in this mode, a text that does not end with the
  /// delimiter loses its last character, and empty lines are lost.
  [[nodiscard]] bool UseRowAsLine() const noexcept { return use_row_as_line_; }
  void UseRowAsLine(bool value) noexcept { use_row_as_line_ = value; }
  /// CR LF unless set; an empty one separates nothing.
  [[nodiscard]] const std::string& RowDelimiter() const noexcept { return row_delimiter_; }
  void RowDelimiter(std::string_view value) { AssignText(row_delimiter_, value); }

  void ClearText() noexcept { text_->Clear(); }

  // An `ordString` above 0 becomes the Id first.

  /// Reads the text; nothing happens below Id 1. Without rows the text is empty.
  /// Errors: 91 when the query fails, the text being empty then; the server's on the way, the text
  /// holding what was read so far. Cost: one round trip
  void Load(std::int32_t ordString = 0);
  template <WiderThan32Bits Wide>
  void Load(Wide ordString) = delete;
  /// Replaces the rows, or makes the text below Id 1. When a later step fails the old rows are
  /// gone. Errors: of the requests; 11 when the length of the column cannot be learned (in line
  /// mode the lines are stored empty then). Cost: two to eleven round trips, one more once a thread
  void Save(std::int32_t ordString = 0);
  template <WiderThan32Bits Wide>
  void Save(Wide ordString) = delete;
  /// Draws a new Id, 0 when that fails, and writes the rows. Errors and cost: as Save
  void Create();
  /// Replaces the rows; nothing happens below Id 1. Errors and cost: as Save
  void Update();
  /// Deletes the rows; nothing happens below Id 1. Id and text stay. Errors: of the request. Cost:
  /// one round trip
  void Delete();

  /// Asks for the text's select statement in an XML envelope: "" below Id 1. The envelope takes the
  /// place of an Id, which it cannot be: always fails from Id 1 on. Errors: 13; 91 for a value that
  /// is no object. Cost: no round trip
  std::string ExecuteXMLQuery(std::int32_t ordString = 0,
                              const NamedValues* nmvsArguments = nullptr);

 private:
  static TextStringRef NewText();
  void ReadRows();
  void WriteRows(std::int32_t id) const;
  static void InsertPieces(std::int32_t id, const std::string& text, std::int64_t length,
                           std::int32_t chunk);
  static void WritePieces(std::int32_t id, std::string_view text, std::int32_t chunk);
  static void WriteLines(std::int32_t id, std::string_view text, std::string_view delimiter,
                         std::int32_t chunk);
  [[nodiscard]] std::string SelectText() const;

  std::int32_t id_ = 0;
  TextStringRef text_ = NewText();
  bool use_row_as_line_ = false;
  std::string row_delimiter_ = "\r\n";
};

/// The same in one call.
namespace GDBString {

/// A text that is neither read nor written yet.
[[nodiscard]] std::shared_ptr<CDBString> DBString(const TextStringRef& sText, std::int32_t ord = 0,
                                                  bool fUseRowAsLine = false,
                                                  std::string_view sRowDelimiter = "\r\n");
/// Returns the new Id. Errors and cost: as CDBString::Create
std::int32_t CreateDBString(std::string sText, bool fUseRowAsLine = false,
                            std::string_view sRowDelimiter = "\r\n");
/// Errors and cost: as CDBString::Save
void UpdateDBString(std::int32_t ordString, std::string sText, bool fUseRowAsLine = false,
                    std::string_view sRowDelimiter = "\r\n");
/// Errors and cost: as CDBString::Load
[[nodiscard]] TextStringRef LoadDBString(std::int32_t ordString, bool fUseRowAsLine = false,
                                         std::string_view sRowDelimiter = "\r\n");

// Wider ids do not compile.
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void DBString(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void UpdateDBString(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void LoadDBString(Arguments&&...) = delete;

}  // namespace GDBString
}  // namespace sabrel
