// Records read back. Nothing is taken for granted: a record may be cut, edited, or no record at
// all.
#include <algorithm>
#include <cmath>
#include <istream>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <unordered_map>
#include <utility>

#include "adapters/shared/conversation.h"
#include "sabrel/platform/runtime_error.h"

namespace sabrel {
namespace {

using Json = nlohmann::ordered_json;
using Entry = ConversationEntry;

constexpr std::string_view kLineStart = "{\"id\":";
// A line, an array of rows, a row, a value, the bytes of a text.
constexpr std::size_t kDeepest = 5;
// Of a line with all that an entry can have.
constexpr std::size_t kMostMembers = 16;

[[noreturn]] void Refuse(const std::string& reason) { throw std::invalid_argument(reason); }

// Of a text that may be anything, as much as a message needs.
std::string Quoted(const std::string& text) {
  constexpr std::size_t kMostBytes = 40;
  return "\"" + text.substr(0, kMostBytes) + "\"";
}

/// Builds a line's value while it is parsed: what the parser would accept, or read as something
/// else, is refused on the way, before anything is nested deeply.
class LineBuilder final : public nlohmann::json_sax<Json> {
 public:
  Json Take() { return std::move(root_); }

  bool null() override { return Add(nullptr); }
  bool boolean(bool value) override { return Add(value); }
  bool number_integer(number_integer_t value) override { return Add(value); }
  bool number_unsigned(number_unsigned_t value) override { return Add(value); }
  bool number_float(number_float_t value, const string_t& text) override {
    if (text.find_first_of(".eE") == std::string::npos) Refuse("a number is out of range");
    return Add(value);
  }
  bool string(string_t& value) override { return Add(std::move(value)); }
  bool binary(binary_t&) override { return false; }
  bool start_object(std::size_t) override { return Open(Json::object()); }
  bool key(string_t& name) override {
    if (open_.back()->size() == kMostMembers) Refuse("an object has too many members");
    if (open_.back()->contains(name)) Refuse("the key " + Quoted(name) + " stands twice");
    member_ = &(*open_.back())[name];
    return true;
  }
  bool end_object() override { return Close(); }
  bool start_array(std::size_t) override { return Open(Json::array()); }
  bool end_array() override { return Close(); }
  bool parse_error(std::size_t position, const std::string&,
                   const nlohmann::detail::exception&) override {
    Refuse("its byte " + std::to_string(position) + " is no JSON, or out of range");
  }

 private:
  Json& Place(Json value) {
    if (open_.empty()) return root_ = std::move(value);
    if (open_.back()->is_array()) return open_.back()->emplace_back(std::move(value));
    return *member_ = std::move(value);
  }
  bool Add(Json value) {
    Place(std::move(value));
    return true;
  }
  // What is open does not move: only the innermost container grows.
  bool Open(Json container) {
    if (open_.size() == kDeepest) Refuse("it is nested too deeply");
    open_.push_back(&Place(std::move(container)));
    return true;
  }
  bool Close() {
    open_.pop_back();
    return true;
  }

  Json root_;
  std::vector<Json*> open_;
  Json* member_ = nullptr;
};

/// The members of one object; each is to be taken.
class Members {
 public:
  Members(const Json& json, std::string what) : json_(json), what_(std::move(what)) {
    if (!json.is_object()) Refuse(what_ + " is no object");
  }
  [[nodiscard]] const Json* TakeIfThere(const char* name) {
    const auto found = json_.find(name);
    if (found == json_.end()) return nullptr;
    taken_.push_back(&*found);
    return &*found;
  }
  [[nodiscard]] const Json& Take(const char* name) {
    const Json* member = TakeIfThere(name);
    if (member == nullptr) Refuse(what_ + " has no \"" + name + "\"");
    return *member;
  }
  void RequireAllTaken() const {
    for (const auto& [name, member] : json_.items()) {
      if (std::ranges::find(taken_, &member) == taken_.end()) {
        Refuse(what_ + " has an unknown or misplaced " + Quoted(name));
      }
    }
  }

 private:
  const Json& json_;
  std::string what_;
  std::vector<const Json*> taken_;
};

std::int64_t WholeFrom(const Json& json, std::int64_t least, std::int64_t most, const char* what) {
  if (!json.is_number_integer()) Refuse(std::string(what) + " is no whole number");
  const bool is_huge = json.is_number_unsigned() &&
                       json.get<std::uint64_t>() > std::numeric_limits<std::int64_t>::max();
  const auto value = json.get<std::int64_t>();
  if (is_huge || value < least || value > most) Refuse(std::string(what) + " is out of range");
  return value;
}

std::int32_t Int32From(const Json& json, const char* what) {
  using Limits = std::numeric_limits<std::int32_t>;
  return static_cast<std::int32_t>(WholeFrom(json, Limits::min(), Limits::max(), what));
}

const Json& ArrayFrom(const Json& json, const char* what) {
  if (!json.is_array()) Refuse(std::string(what) + " is no array");
  return json;
}

std::string TextFrom(const Json& json, const char* what) {
  if (json.is_string()) return json.get<std::string>();
  if (!json.is_object()) Refuse(std::string(what) + " is no text");
  Members members(json, what);
  std::string text;
  for (const Json& byte : ArrayFrom(members.Take("bytes"), what)) {
    constexpr std::int64_t kMostByte = 255;
    text += static_cast<char>(WholeFrom(byte, 0, kMostByte, "a byte"));
  }
  members.RequireAllTaken();
  return text;
}

double DoubleFrom(const Json& word) {
  for (const double value :
       {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
        -std::numeric_limits<double>::infinity()}) {
    if (word == (std::isnan(value) ? "nan" : value > 0 ? "inf" : "-inf")) return value;
  }
  Refuse("a double is no number");
}

Date DateFrom(const Json& serial) {
  if (!serial.is_number_float()) Refuse("a date is no number of days");
  const Date date(serial.get<double>());
  // A serial below the first day's may be a time on that day.
  if (FailureIn([&date] { static_cast<void>(date.ToCivil()); })) Refuse("a date is out of range");
  return date;
}

Decimal DecimalFrom(const Json& digits) {
  const std::string text = TextFrom(digits, "a decimal");
  try {
    const Decimal value = Decimal::Parse(text);
    if (value.Text() == text) return value;
  } catch (const RuntimeError&) {  // Refused below.
  }
  Refuse("a decimal is no number");
}

Variant ValueFrom(const Json& json) {
  if (json.is_null()) return Variant(Null{});
  if (json.is_number_integer()) return Variant(Int32From(json, "a value"));
  if (json.is_number_float()) return Variant(json.get<double>());
  if (json.is_string()) return Variant(json.get<std::string>());
  Members members(json, "a value");
  Variant value;
  if (const Json* word = members.TakeIfThere("double")) {
    value = Variant(DoubleFrom(*word));
  } else if (const Json* digits = members.TakeIfThere("decimal")) {
    value = Variant(DecimalFrom(*digits));
  } else if (const Json* serial = members.TakeIfThere("date")) {
    value = Variant(DateFrom(*serial));
  } else if (!json.empty()) {
    return Variant(TextFrom(json, "a value"));
  }
  members.RequireAllTaken();
  return value;
}

/// The element of `all` that has the word `json`.
template <class Element, std::size_t N>
Element FromWord(const Json& json, const char* what, const Element (&all)[N],
                 std::string_view (*word_of)(Element) noexcept) {
  const std::string word = TextFrom(json, what);
  for (const Element element : all) {
    if (word_of(element) == word) return element;
  }
  Refuse(Quoted(word) + " is no " + what);
}

RowSet::Column ColumnFrom(const Json& json) {
  Members column(json, "a column");
  RowSet::Column read{TextFrom(column.Take("name"), "a name"),
                      TextFrom(column.Take("type"), "a type")};
  column.RequireAllTaken();
  return read;
}

RoutineParameter ParameterFrom(const Json& json) {
  Members parameter(json, "a parameter");
  RoutineParameter read{TextFrom(parameter.Take("value"), "a parameter's value"),
                        TextFrom(parameter.Take("type"), "a type"),
                        TextFrom(parameter.Take("name"), "a name")};
  parameter.RequireAllTaken();
  return read;
}

void ReadRequest(Members& line, Entry& entry) {
  using enum Entry::Operation;
  constexpr Entry::Operation kAll[] = {kQuery, kRequest, kCall, kWrite};
  entry.operation = FromWord(line.Take("operation"), "operation", kAll, OperationWord);
  entry.statement = TextFrom(line.Take("statement"), "the statement");
  entry.address.host = TextFrom(line.Take("host"), "the host");
  entry.address.port = Int32From(line.Take("port"), "the port");
  entry.address.user = TextFrom(line.Take("user"), "the user");
  entry.address.timeout_s = Int32From(line.Take("timeout"), "the time-out");
  const Json* parameters = entry.operation == kCall ? line.TakeIfThere("parameters") : nullptr;
  if (parameters != nullptr) {
    for (const Json& parameter : ArrayFrom(*parameters, "\"parameters\"")) {
      entry.parameters.push_back(ParameterFrom(parameter));
    }
  }
  if (entry.operation != kWrite) return;
  entry.row_set.table = entry.statement;
  for (const Json& column : ArrayFrom(line.Take("sent_columns"), "\"sent_columns\"")) {
    entry.row_set.columns.push_back(ColumnFrom(column));
  }
  for (const Json& row : ArrayFrom(line.Take("sent_rows"), "\"sent_rows\"")) {
    entry.row_set.rows.Add(TextFrom(row, "a row that was sent"));
  }
}

// Only queries have rows.
void ReadRows(Members& line, Entry& entry) {
  const bool is_first = entry.columns.empty() && entry.rows.empty();
  if (const Json* columns = is_first ? line.TakeIfThere("columns") : nullptr) {
    for (const Json& name : ArrayFrom(*columns, "\"columns\"")) {
      entry.columns.push_back(TextFrom(name, "a column's name"));
    }
  }
  const Json* rows = line.TakeIfThere("rows");
  if (rows == nullptr) return;
  for (const Json& cells : ArrayFrom(*rows, "\"rows\"")) {
    if (ArrayFrom(cells, "a row").size() != entry.columns.size()) {
      Refuse("a row has " + std::to_string(cells.size()) + " values for " +
             std::to_string(entry.columns.size()) + " columns");
    }
    std::vector<Variant>& row = entry.rows.emplace_back();
    for (const Json& cell : cells) row.push_back(ValueFrom(cell));
  }
}

void ReadOutcome(Members& line, Entry& entry) {
  entry.outcome.result = ValueFrom(line.Take("result"));
  const Json& outputs = ArrayFrom(line.Take("outputs"), "\"outputs\"");
  if (outputs.size() != entry.parameters.size()) {
    Refuse("there are " + std::to_string(outputs.size()) + " outputs for " +
           std::to_string(entry.parameters.size()) + " parameters");
  }
  for (const Json& output : outputs) {
    if (ArrayFrom(output, "an output").size() > 1) Refuse("an output has several values");
    entry.outcome.outputs.push_back(output.empty() ? std::nullopt
                                                   : std::optional(ValueFrom(output[0])));
  }
}

DatabaseError DatabaseErrorFrom(const Json& json) {
  Members database(json, "\"database\"");
  DatabaseError error{Int32From(database.Take("number"), "a number"),
                      TextFrom(database.Take("source"), "a source"),
                      TextFrom(database.Take("originator"), "an originator"),
                      TextFrom(database.Take("message"), "a message"),
                      TextFrom(database.Take("detail"), "a detail")};
  database.RequireAllTaken();
  return error;
}

ConversationFailure FailureFrom(const Json& json) {
  Members members(json, "\"failure\"");
  ConversationFailure failure{Int32From(members.Take("number"), "a number"),
                              TextFrom(members.Take("source"), "a source"),
                              TextFrom(members.Take("description"), "a description"), std::nullopt};
  if (const Json* database = members.TakeIfThere("database")) {
    failure.database = DatabaseErrorFrom(*database);
  }
  members.RequireAllTaken();
  return failure;
}

void ReadAnswer(Members& line, Entry& entry) {
  using enum Entry::End;
  constexpr Entry::End kAll[] = {kOpen, kDone, kLeft, kFailed};
  entry.end = FromWord(line.Take("end"), "end", kAll, EndWord);
  const bool is_query = entry.operation == Entry::Operation::kQuery;
  if (is_query) ReadRows(line, entry);
  if (entry.end == kLeft && !is_query) Refuse("only a query can be left");
  if (entry.operation == Entry::Operation::kCall && entry.end == kDone) ReadOutcome(line, entry);
  if (entry.end == kFailed) entry.failure = FailureFrom(line.Take("failure"));
}

class RecordReader {
 public:
  void ReadLine(const std::string& text) {
    LineBuilder builder;
    Json::sax_parse(text, &builder);
    const Json json = builder.Take();
    Members line(json, "it");
    const auto id =
        WholeFrom(line.Take("id"), 1, std::numeric_limits<std::int64_t>::max(), "the id");
    ReadAnswer(line, EntryOf(id, json.contains("operation"), line));
    line.RequireAllTaken();
  }
  std::vector<Entry> Take() { return std::move(entries_); }

 private:
  Entry& EntryOf(std::int64_t id, bool is_first, Members& line) {
    const auto [place, is_new] = places_.try_emplace(id, entries_.size());
    if (is_first != is_new) {
      Refuse(is_first ? "its id has been used" : "the entry that it continues is missing");
    }
    if (!is_first) {
      Entry& entry = entries_[place->second];
      if (entry.end != Entry::End::kOpen) Refuse("the entry that it continues has ended");
      return entry;
    }
    Entry& entry = entries_.emplace_back();
    entry.id = id;
    ReadRequest(line, entry);
    return entry;
  }

  std::vector<Entry> entries_;
  std::unordered_map<std::int64_t, std::size_t> places_;
};

// What a program that ended left of its last line.
bool IsTornEntry(std::string_view rest) {
  const std::size_t common = std::min(rest.size(), kLineStart.size());
  return rest.substr(0, common) == kLineStart.substr(0, common);
}

}  // namespace

std::vector<ConversationEntry> ReadEntries(std::istream& in) {
  RecordReader reader;
  std::string line;
  for (std::int64_t number = 1; std::getline(in, line); ++number) {
    if (in.eof() && IsTornEntry(line)) break;
    try {
      if (in.eof()) Refuse("it is not complete");
      reader.ReadLine(line);
    } catch (const std::invalid_argument& reason) {
      throw RuntimeError(
          RuntimeErrorNumber::kInvalidFileFormat,
          "Line " + std::to_string(number) + " is no recorded entry: " + reason.what());
    }
  }
  if (in.bad()) {
    throw RuntimeError(RuntimeErrorNumber::kAccessFailure, "The record cannot be read");
  }
  return reader.Take();
}

bool StartsRecord(std::string_view line) noexcept {
  try {
    RecordReader().ReadLine(std::string(line));
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace sabrel
