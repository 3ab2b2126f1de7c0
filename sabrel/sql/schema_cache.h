// Remembered answers about the schema: what exists, how wide columns are.
//
// For hosts that keep answers of their own. The caches behind DoesTableExist, DBColumnLength and
// the like are each thread's and stay inside; an instance that a host makes starts empty and never
// sees them, nor do they see it.
//
//   CTablesExist known;
//   known.Add("PM_EMAIL", true, "", "hostA", 5001, 60);
//   const bool exists = known.Item("pm_email:hosta:5001")->Exists();
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "sabrel/platform/runtime_error.h"
#include "sabrel/sql/answer_cache.h"

namespace sabrel {

/// One remembered answer. For a procedure the table is its package, the field its name.
class CTableExists {
 public:
  [[nodiscard]] const std::string& TableName() const noexcept { return table_name_; }
  void TableName(std::string_view value) { AssignText(table_name_, value); }
  [[nodiscard]] const std::string& FieldName() const noexcept { return field_name_; }
  void FieldName(std::string_view value) { AssignText(field_name_, value); }
  [[nodiscard]] const std::string& ServerName() const noexcept { return server_name_; }
  void ServerName(std::string_view value) { AssignText(server_name_, value); }
  [[nodiscard]] std::int32_t PortId() const noexcept { return port_id_; }
  void PortId(std::int32_t value) noexcept { port_id_ = value; }
  /// Seconds, as given with the question.
  [[nodiscard]] std::int32_t TimeOut() const noexcept { return timeout_s_; }
  void TimeOut(std::int32_t value) noexcept { timeout_s_ = value; }
  [[nodiscard]] bool Exists() const noexcept { return exists_; }
  void Exists(bool value) noexcept { exists_ = value; }

 private:
  std::string table_name_;
  std::string field_name_;
  std::string server_name_;
  std::int32_t port_id_ = 0;
  std::int32_t timeout_s_ = 0;
  bool exists_ = false;
};

/// Remembered answers under keys `table[.field][:server:port]`, the server part only where there is
/// a server. A procedure therefore shares the entry of a column with the same names.
class CTablesExist : public AnswerCache<CTableExists> {
 public:
  /// Errors: 457 when there is an entry under that key
  Entry Add(std::string_view TableName, bool Exists, std::string_view FieldName,
            std::string_view ServerName, std::int32_t PortId, std::int32_t TimeOut);
};

namespace internal {

/// Writes over `key` the key of an answer in a CTablesExist.
void MakeKey(std::string& key, std::string_view table, std::string_view field,
             std::string_view server, std::int32_t port);

}  // namespace internal

/// Lengths of columns by table and column, case ignored. A length is asked of the database until it
/// is known.
class CColumnLengthCache {
 public:
  /// 0 or less when the database does not know it either; that is not remembered.
  /// Cost: none once known, without allocation; else one round trip. Errors: 6 or
  /// 13 for no length
  [[nodiscard]] std::int32_t ColumnLength(std::string_view sTable, std::string_view sColumn);
  void Clear() noexcept { lengths_.clear(); }

 private:
  std::int32_t Ask(std::string key, std::size_t table_end);

  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view key) const noexcept {
      return std::hash<std::string_view>{}(key);
    }
  };
  std::unordered_map<std::string, std::int32_t, Hash, std::equal_to<>> lengths_;
  std::string key_;  // kept between calls, so that a hit allocates nothing
};

}  // namespace sabrel
