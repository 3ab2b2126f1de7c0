#include <cmath>
#include <nlohmann/json.hpp>

#include "adapters/shared/conversation.h"
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

// JSON has no word for these doubles.
Json DoubleToJson(double value) {
  if (std::isfinite(value)) return value;
  return Json{{"double", std::isnan(value) ? "nan" : value > 0 ? "inf" : "-inf"}};
}

// A whole number is a 32-bit integer, any other number a double, also 2.0; what JSON has no kind
// for is an object.
Json ValueToJson(const Variant& value) {
  switch (value.kind()) {
    case VariantKind::kInt32: return value.Get<std::int32_t>();
    case VariantKind::kDouble: return DoubleToJson(value.Get<double>());
    case VariantKind::kDecimal: return Json{{"decimal", value.Get<Decimal>().Text()}};
    case VariantKind::kDate: return Json{{"date", value.Get<Date>().Serial()}};
    case VariantKind::kString: return TextToJson(value.Get<std::string>());
    case VariantKind::kEmpty: return Json::object();
    default: return nullptr;
  }
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

}  // namespace

std::string EntryLine(const ConversationEntry& entry) {
  Json json = entry.continues ? Json{{"id", entry.id}} : RequestToJson(entry);
  AddAnswer(json, entry);
  return json.dump() + "\n";
}

}  // namespace sabrel
