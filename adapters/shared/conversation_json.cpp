#include <istream>
#include <nlohmann/json.hpp>
#include <ostream>

#include "adapters/shared/conversation.h"
#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/utf8.h"

namespace sabrel {
namespace {

using Json = nlohmann::ordered_json;
using Entry = ConversationEntry;

// Text that is not UTF-8 cannot stand in JSON; a number per byte keeps it.
Json TextToJson(std::string_view text) {
  if (IsValidUtf8(text)) return text;
  Json bytes = Json::array();
  for (const char byte : text) bytes.push_back(static_cast<unsigned char>(byte));
  return Json{{"bytes", bytes}};
}

std::string TextFromJson(const Json& json) {
  if (json.is_string()) return json.get<std::string>();
  std::string text;
  for (const Json& byte : json.at("bytes")) text += static_cast<char>(byte.get<unsigned char>());
  return text;
}

// A whole number is a 32-bit integer, any other number a double, also 2.0; what JSON has no kind
// for is an object.
Json ValueToJson(const Variant& value) {
  switch (value.kind()) {
    case VariantKind::kInt32: return value.Get<std::int32_t>();
    case VariantKind::kDouble: return value.Get<double>();
    case VariantKind::kDecimal: return Json{{"decimal", value.Get<Decimal>().Text()}};
    case VariantKind::kDate: return Json{{"date", value.Get<Date>().Serial()}};
    case VariantKind::kString: return TextToJson(value.Get<std::string>());
    case VariantKind::kEmpty: return Json::object();
    default: return nullptr;
  }
}

Variant ValueFromJson(const Json& json) {
  if (json.is_null()) return Variant(Null{});
  if (json.is_number_integer()) return Variant(json.get<std::int32_t>());
  if (json.is_number_float()) return Variant(json.get<double>());
  if (json.is_object() && json.empty()) return {};
  if (json.contains("decimal")) {
    return Variant(Decimal::Parse(json["decimal"].get<std::string>()));
  }
  if (json.contains("date")) return Variant(Date(json["date"].get<double>()));
  return Variant(TextFromJson(json));
}

std::string_view EndWord(Entry::End end) {
  switch (end) {
    case Entry::End::kOpen: return "open";
    case Entry::End::kDone: return "done";
    case Entry::End::kLeft: return "left";
    case Entry::End::kFailed: return "failed";
  }
  return "";
}

Entry::End EndFromWord(std::string_view word) {
  for (const auto end : {Entry::End::kDone, Entry::End::kLeft, Entry::End::kFailed}) {
    if (word == EndWord(end)) return end;
  }
  return Entry::End::kOpen;
}

Entry::Operation OperationFromWord(std::string_view word) {
  using enum Entry::Operation;
  for (const auto operation : {kQuery, kRequest, kCall, kWrite}) {
    if (word == OperationWord(operation)) return operation;
  }
  throw std::invalid_argument("unknown operation");
}

Json RequestToJson(const Entry& entry) {
  Json json{{"id", entry.id},
            {"operation", OperationWord(entry.operation)},
            {"statement", TextToJson(entry.statement)},
            {"host", TextToJson(entry.address.host)},
            {"port", entry.address.port},
            {"user", TextToJson(entry.address.user)},
            {"timeout", entry.address.timeout_s}};
  for (const RoutineParameter& parameter : entry.parameters) {
    json["parameters"].push_back(Json{{"value", TextToJson(parameter.value)},
                                      {"type", TextToJson(parameter.type_word)},
                                      {"name", TextToJson(parameter.name)}});
  }
  if (entry.operation == Entry::Operation::kWrite) {
    json["sent_columns"] = Json::array();
    json["sent_rows"] = Json::array();
    for (const RowSet::Column& column : entry.row_set.columns) {
      json["sent_columns"].push_back(
          Json{{"name", TextToJson(column.name)}, {"type", TextToJson(column.type_word)}});
    }
    for (const std::string_view row : entry.row_set.rows) {
      json["sent_rows"].push_back(TextToJson(row));
    }
  }
  return json;
}

void AddAnswer(Json& json, const Entry& entry) {
  for (const std::string& column : entry.columns) json["columns"].push_back(TextToJson(column));
  for (const std::vector<Variant>& row : entry.rows) {
    Json cells = Json::array();
    for (const Variant& value : row) cells.push_back(ValueToJson(value));
    json["rows"].push_back(std::move(cells));
  }
  if (entry.operation == Entry::Operation::kCall && entry.end == Entry::End::kDone) {
    json["result"] = ValueToJson(entry.outcome.result);
    json["outputs"] = Json::array();
    // An array of none or one: null is a value that an output can have.
    for (const std::optional<Variant>& output : entry.outcome.outputs) {
      json["outputs"].push_back(output ? Json::array({ValueToJson(*output)}) : Json::array());
    }
  }
  json["end"] = EndWord(entry.end);
  if (!entry.failure) return;
  Json failure{{"number", entry.failure->number},
               {"source", TextToJson(entry.failure->source)},
               {"description", TextToJson(entry.failure->description)}};
  if (const auto& database = entry.failure->database) {
    failure["database"] = Json{{"number", database->native_number},
                               {"source", TextToJson(database->source)},
                               {"originator", TextToJson(database->originator)},
                               {"message", TextToJson(database->message)},
                               {"detail", TextToJson(database->detail)}};
  }
  json["failure"] = std::move(failure);
}

void ReadRequest(const Json& json, Entry& entry) {
  entry.operation = OperationFromWord(json.at("operation").get<std::string>());
  entry.statement = TextFromJson(json.at("statement"));
  entry.address.host = TextFromJson(json.at("host"));
  entry.address.port = json.at("port").get<std::int32_t>();
  entry.address.user = TextFromJson(json.at("user"));
  entry.address.timeout_s = json.at("timeout").get<std::int32_t>();
  for (const Json& parameter : json.value("parameters", Json::array())) {
    entry.parameters.push_back({TextFromJson(parameter.at("value")),
                                TextFromJson(parameter.at("type")),
                                TextFromJson(parameter.at("name"))});
  }
  if (entry.operation == Entry::Operation::kWrite) entry.row_set.table = entry.statement;
  for (const Json& column : json.value("sent_columns", Json::array())) {
    entry.row_set.columns.push_back(
        {TextFromJson(column.at("name")), TextFromJson(column.at("type"))});
  }
  for (const Json& row : json.value("sent_rows", Json::array())) {
    entry.row_set.rows.Add(TextFromJson(row));
  }
  for (const Json& column : json.value("columns", Json::array())) {
    entry.columns.push_back(TextFromJson(column));
  }
}

void ReadAnswer(const Json& json, Entry& entry) {
  for (const Json& cells : json.value("rows", Json::array())) {
    std::vector<Variant> row;
    for (const Json& cell : cells) row.push_back(ValueFromJson(cell));
    entry.rows.push_back(std::move(row));
  }
  if (json.contains("result")) entry.outcome.result = ValueFromJson(json["result"]);
  for (const Json& output : json.value("outputs", Json::array())) {
    entry.outcome.outputs.push_back(output.empty() ? std::nullopt
                                                   : std::optional(ValueFromJson(output.at(0))));
  }
  entry.end = EndFromWord(json.at("end").get<std::string>());
  if (!json.contains("failure")) return;
  const Json& failure = json["failure"];
  entry.failure = ConversationFailure{failure.at("number").get<std::int32_t>(),
                                      TextFromJson(failure.at("source")),
                                      TextFromJson(failure.at("description")), std::nullopt};
  if (!failure.contains("database")) return;
  const Json& database = failure["database"];
  entry.failure->database =
      DatabaseError{database.at("number").get<std::int32_t>(), TextFromJson(database.at("source")),
                    TextFromJson(database.at("originator")), TextFromJson(database.at("message")),
                    TextFromJson(database.at("detail"))};
}

Entry& EntryOf(const Json& json, std::vector<Entry>& entries) {
  const auto id = json.at("id").get<std::int64_t>();
  if (!json.contains("operation")) {
    for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
      if (entry->id == id) return *entry;
    }
    throw std::invalid_argument("the first part is missing");
  }
  Entry& entry = entries.emplace_back();
  entry.id = id;
  ReadRequest(json, entry);
  return entry;
}

}  // namespace

void WriteEntry(std::ostream& out, const ConversationEntry& entry) {
  Json json = entry.continues ? Json{{"id", entry.id}} : RequestToJson(entry);
  AddAnswer(json, entry);
  out << json.dump() + "\n";
}

std::vector<ConversationEntry> ReadEntries(std::istream& in) {
  std::vector<Entry> entries;
  std::string line;
  for (std::int64_t number = 1; std::getline(in, line); ++number) {
    if (in.eof()) break;
    try {
      const Json json = Json::parse(line);
      ReadAnswer(json, EntryOf(json, entries));
    } catch (const std::exception& reason) {
      throw RuntimeError(RuntimeErrorNumber::kInvalidFileFormat,
                         "Line " + std::to_string(number) +
                             " is no recorded entry: " + std::string(reason.what()));
    }
  }
  return entries;
}

}  // namespace sabrel
