#include "sabrel/sql/stored_text.h"

#include "sabrel/core/query_execution.h"
#include "sabrel/core/trace.h"
#include "sabrel/platform/conversions.h"
#include "sabrel/platform/module_state.h"
#include "sabrel/platform/platform.h"
#include "sabrel/platform/row_text.h"
#include "sabrel/platform/utf8.h"
#include "sabrel/platform/xml_fragment.h"
#include "sabrel/sql/literals.h"
#include "sabrel/sql/schema_probes.h"

namespace sabrel {
namespace {

// More pieces than these go out in one request.
constexpr std::int64_t kMostInserts = 10;

struct StoredTexts {
  std::int32_t chunk = 0;
};

// The declared length of a row's text in characters; asked for until it is known.
std::int32_t ChunkSize() {
  if (const std::int32_t known = ModuleState<StoredTexts>().chunk; known != 0) return known;
  const std::int32_t length = MSabrel::DBColumnLength("PM_StringTable", "StringData");
  ModuleState<StoredTexts>().chunk = length;
  return length;
}

std::string_view FirstCharacters(std::string_view text, std::int32_t count) {
  if (count < 0) throw RuntimeError(RuntimeErrorNumber::kInvalidCall);
  return text.substr(0, ByteLengthOf(text, static_cast<std::size_t>(count)));
}

std::string_view WithoutLastCharacter(std::string_view text) {
  const std::size_t count = CharacterCount(text);
  return count == 0 ? text : text.substr(0, ByteLengthOf(text, count - 1));
}

void DeleteRows(std::int32_t id) {
  MSabrel::ExecuteRequest("DELETE FROM PM_StringTable WHERE Id = " + std::to_string(id));
}

void InsertRow(std::int32_t id, std::int32_t ordinal, std::string_view piece) {
  MSabrel::ExecuteRequest(
      "INSERT INTO PM_StringTable ("
      "Id, Ordinal, StringData"
      ") VALUES (" +
      std::to_string(id) + "," + std::to_string(ordinal) + "," + MSabrel::DBStr(piece).Value() +
      ")");
}

// The rows of one text, sent in one request.
class RowSetOfText {
 public:
  explicit RowSetOfText(std::int32_t id) : id_(std::to_string(id)) {
    const auto rowlink = CurrentPlatform().rowlink;
    writer_ = rowlink->MakeRowSetWriter();
    Deref(writer_).Table("PM_StringTable");
    writer_->DeclareColumn("Id", "INT");
    writer_->DeclareColumn("Ordinal", "INT");
    writer_->DeclareColumn("StringData", "STRING");
  }
  void Add(std::int32_t ordinal, std::string_view piece) {
    writer_->AddRow(id_ + "|" + std::to_string(ordinal) + "|" + EncodePiece(piece));
  }
  void Submit() { writer_->Submit(); }

 private:
  std::string id_;
  std::shared_ptr<RowSetWriter> writer_;
};

}  // namespace

TextStringRef CDBString::NewText() {
  return RaisingRuntimeErrors([] { return std::make_shared<sabrel::TextString>(); });
}

void CDBString::TextString(TextStringRef value) {
  if (value) text_ = std::move(value);
}

std::string CDBString::SelectText() const {
  return "SELECT StringData FROM PM_StringTable "
         "WHERE Id = " +
         std::to_string(id_) + " ORDER BY Ordinal";
}

void CDBString::Load(std::int32_t ordString) {
  if (ordString > 0) id_ = ordString;
  if (IsValid()) RaisingRuntimeErrors([&] { ReadRows(); });
}

void CDBString::ReadRows() {
  const RecordsetRef rows = MSabrel::ExecuteQuery(SelectText());
  const CloseAtEnd closing(rows);
  text_->Clear();
  for (Recordset& row = Deref(rows); !row.EndOfFile(); row.MoveNext()) {
    text_->Append(row.Fields().Item("StringData").Value());
    if (use_row_as_line_) text_->Append(row_delimiter_);
  }
  rows->Close();
  MSabrel::TraceWhenOn([&] { return Text(); });
}

void CDBString::Save(std::int32_t ordString) {
  if (ordString > 0) id_ = ordString;
  IsValid() ? Update() : Create();
}

void CDBString::Create() {
  RaisingRuntimeErrors([&] {
    id_ = MSabrel::GetNextInSequence("PM_StringTable_SQ");
    WriteRows(id_);
  });
}

void CDBString::Update() {
  if (!IsValid()) return;
  RaisingRuntimeErrors([&, id = id_] {
    DeleteRows(id);
    WriteRows(id);
  });
}

void CDBString::Delete() {
  if (IsValid()) RaisingRuntimeErrors([&] { DeleteRows(id_); });
}

// The host's code runs while statements go out, and may give this object another text, Id or mode.
void CDBString::WriteRows(std::int32_t id) const {
  if (text_->Text().empty()) return InsertRow(id, 1, {});
  const std::int32_t chunk = ChunkSize();
  if (use_row_as_line_) return WriteLines(id, text_->Text(), row_delimiter_, chunk);
  if (chunk == 0) throw RuntimeError(RuntimeErrorNumber::kDivisionByZero);
  const std::int64_t length = text_->Length();
  const std::int64_t pieces = (length - 1) / chunk + 1;
  pieces <= kMostInserts ? InsertPieces(id, text_->Text(), length, chunk)
                         : WritePieces(id, text_->Text(), chunk);
}

void CDBString::InsertPieces(std::int32_t id, const std::string& text, std::int64_t length,
                             std::int32_t chunk) {
  const std::string own = text;
  std::string_view rest = own;
  std::int32_t ordinal = 1;
  for (; length > chunk; length -= chunk) {
    const std::string_view piece = FirstCharacters(rest, chunk);
    InsertRow(id, ordinal++, piece);
    rest.remove_prefix(piece.size());
  }
  InsertRow(id, ordinal, rest);
}

// Nothing of the host runs before all rows are gathered.
void CDBString::WritePieces(std::int32_t id, std::string_view text, std::int32_t chunk) {
  RowSetOfText rows(id);
  for (std::int32_t ordinal = 1; !text.empty(); ++ordinal) {
    const std::string_view piece = FirstCharacters(text, chunk);
    rows.Add(ordinal, piece);
    text.remove_prefix(piece.size());
  }
  rows.Submit();
}

void CDBString::WriteLines(std::int32_t id, std::string_view text, std::string_view delimiter,
                           std::int32_t chunk) {
  RowSetOfText rows(id);
  std::int32_t ordinal = 1;
  const auto add = [&](std::string_view line) {
    if (!line.empty()) rows.Add(ordinal, FirstCharacters(line, chunk));
  };
  const auto next = [&] {
    return delimiter.empty() ? std::string_view::npos : text.find(delimiter);
  };
  for (std::size_t at = next(); at != std::string_view::npos; at = next()) {
    add(text.substr(0, at));
    text.remove_prefix(at + delimiter.size());
    ++ordinal;
  }
  // A last line without a delimiter has always been stored one character short; hosts know.
  add(WithoutLastCharacter(text));
  rows.Submit();
}

std::string CDBString::ExecuteXMLQuery(std::int32_t ordString, const NamedValues* nmvsArguments) {
  if (ordString > 0) id_ = ordString;
  if (!IsValid()) return {};
  const std::int32_t id = RaisingRuntimeErrors([&] {
    std::string envelope = "<QUERY Type='DB' RerunQuery='yes'  ForwardSetValues='yes'>";
    if (nmvsArguments != nullptr) {
      for (const NamedValues::Entry& argument : *nmvsArguments) {
        envelope += NamedValueFragment(argument.name, ToJoinedText(argument.value));
      }
    }
    envelope += "<SQL Query='" + SelectText() + "'/>";
    envelope += "</QUERY>";
    return ToInt32(Variant(envelope));
  });
  return ExecuteXMLQuery(id);
}

namespace GDBString {
namespace {

std::shared_ptr<CDBString> WithSettings(bool fUseRowAsLine, std::string_view sRowDelimiter) {
  auto text = RaisingRuntimeErrors([] { return std::make_shared<CDBString>(); });
  text->UseRowAsLine(fUseRowAsLine);
  text->RowDelimiter(sRowDelimiter);
  return text;
}

}  // namespace

std::shared_ptr<CDBString> DBString(const TextStringRef& sText, std::int32_t ord,
                                    bool fUseRowAsLine, std::string_view sRowDelimiter) {
  auto text = WithSettings(fUseRowAsLine, sRowDelimiter);
  text->TextString(sText);
  text->Id(ord);
  return text;
}

std::int32_t CreateDBString(std::string sText, bool fUseRowAsLine, std::string_view sRowDelimiter) {
  const auto text = WithSettings(fUseRowAsLine, sRowDelimiter);
  text->Text(std::move(sText));
  text->Create();
  return text->Id();
}

void UpdateDBString(std::int32_t ordString, std::string sText, bool fUseRowAsLine,
                    std::string_view sRowDelimiter) {
  const auto text = WithSettings(fUseRowAsLine, sRowDelimiter);
  text->Text(std::move(sText));
  text->Save(ordString);
}

TextStringRef LoadDBString(std::int32_t ordString, bool fUseRowAsLine,
                           std::string_view sRowDelimiter) {
  const auto text = WithSettings(fUseRowAsLine, sRowDelimiter);
  text->Load(ordString);
  return text->TextString();
}

}  // namespace GDBString
}  // namespace sabrel
