// The record of a conversation: text is refused with 321 or read as entries that are the same when
// they are written and read again, and so are entries with values of every kind that a server
// gives.
#include "adapters/shared/conversation.h"

#include <sstream>

#include "fuzz/target.h"

namespace sabrel::fuzz {
namespace {

std::string Written(const std::vector<ConversationEntry>& entries) {
  std::string text;
  for (const ConversationEntry& entry : entries) text += EntryLine(entry);
  return text;
}

std::optional<std::vector<ConversationEntry>> Read(std::string_view text) {
  std::optional<std::vector<ConversationEntry>> entries;
  std::istringstream in{std::string(text)};
  DoneOr({RuntimeErrorNumber::kInvalidFileFormat}, [&] { entries = ReadEntries(in); });
  return entries;
}

/// A value of a kind that servers give.
Variant TakeServerValue(Input& input) {
  while (!input.AtEnd()) {
    Variant value = input.Value();
    switch (value.kind()) {
      case VariantKind::kEmpty:
      case VariantKind::kNull:
      case VariantKind::kInt32:
      case VariantKind::kDouble:
      case VariantKind::kDecimal:
      case VariantKind::kString: return value;
      case VariantKind::kDate:
        if (DoneOr({RuntimeErrorNumber::kOverflow},
                   [&] { static_cast<void>(value.Get<Date>().ToCivil()); })) {
          return value;
        }
        break;
      default: break;
    }
  }
  return {};
}

bool SameRows(const ConversationEntry& a, const ConversationEntry& b) {
  if (a.rows.size() != b.rows.size()) return false;
  for (std::size_t i = 0; i < a.rows.size(); ++i) {
    if (a.rows[i].size() != b.rows[i].size()) return false;
    for (std::size_t j = 0; j < a.rows[i].size(); ++j) {
      const Variant& before = a.rows[i][j];
      const Variant& after = b.rows[i][j];
      Require(Same(before, after), "a value comes back", Shown(before) + ", " + Shown(after));
    }
  }
  return true;
}

void CheckEntry(Input input) {
  ConversationEntry entry;
  entry.id = static_cast<std::int64_t>(input.Bits(4)) + 1;
  entry.statement = input.Text();
  entry.address.host = input.Text();
  entry.columns = {std::string(input.Text())};
  entry.end = ConversationEntry::End::kDone;
  while (!input.AtEnd()) entry.rows.push_back({TakeServerValue(input)});
  const auto entries = Read(Written({entry}));
  Require(entries && entries->size() == 1, "an entry comes back");
  const ConversationEntry& again = entries->front();
  Require(again.id == entry.id && again.statement == entry.statement &&
              again.address.host == entry.address.host && again.columns == entry.columns &&
              SameRows(entry, again),
          "an entry comes back as it was", entry.statement);
}

}  // namespace

void Check(std::string_view bytes) {
  if (!bytes.starts_with('{')) return CheckEntry(Input(bytes));
  const auto entries = Read(bytes);
  if (!entries) return;
  const std::string text = Written(*entries);
  const auto again = Read(text);
  Require(again && Written(*again) == text, "entries come back as they were", text);
}

}  // namespace sabrel::fuzz
