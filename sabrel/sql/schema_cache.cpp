#include "sabrel/sql/schema_cache.h"

#include "sabrel/core/query_execution.h"
#include "sabrel/platform/utf8.h"
#include "sabrel/sql/literals.h"

namespace sabrel {

void internal::MakeKey(std::string& key, std::string_view table, std::string_view field,
                       std::string_view server, std::int32_t port) {
  key.assign(table);
  if (!field.empty()) key.append(1, '.').append(field);
  AppendServer(key, server, port);
}

CTablesExist::Entry CTablesExist::Add(std::string_view TableName, bool Exists,
                                      std::string_view FieldName, std::string_view ServerName,
                                      std::int32_t PortId, std::int32_t TimeOut) {
  return RaisingRuntimeErrors([&] {
    auto entry = std::make_shared<CTableExists>();
    entry->TableName(TableName);
    entry->Exists(Exists);
    entry->FieldName(FieldName);
    entry->ServerName(ServerName);
    entry->PortId(PortId);
    entry->TimeOut(TimeOut);
    std::string key;
    internal::MakeKey(key, TableName, FieldName, ServerName, PortId);
    entries_.Add(entry, key);
    return entry;
  });
}

std::int32_t CColumnLengthCache::ColumnLength(std::string_view sTable, std::string_view sColumn) {
  return RaisingRuntimeErrors([&] {
    key_.clear();
    AppendLowerCase(key_, sTable);
    const std::size_t table_end = key_.size();
    key_ += ':';
    AppendLowerCase(key_, sColumn);
    const auto known = lengths_.find(std::string_view(key_));
    return known != lengths_.end() ? known->second : Ask(key_, table_end);
  });
}

// The key is copied: the query may run the host's code, and that may ask for another length.
std::int32_t CColumnLengthCache::Ask(std::string key, std::size_t table_end) {
  const std::string_view names = key;
  const std::int32_t length = MSabrel::ExecuteFunctionReturningLong(
      "FS_GetColumnLength", MSabrel::DBStr(names.substr(0, table_end)).Value() + "," +
                                MSabrel::DBStr(names.substr(table_end + 1)));
  if (length > 0) lengths_.insert_or_assign(std::move(key), length);
  return length;
}

}  // namespace sabrel
