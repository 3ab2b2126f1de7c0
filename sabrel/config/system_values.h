// Site-wide settings that the database keeps as named variables with values.
//
// `SystemValueExists` remembers every answer for the rest of the thread's use; nothing clears it.
// Names and values go into the statement unquoted: a quote in one makes a failing query and thus a
// remembered false.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/variant.h"
#include "sabrel/sql/answer_cache.h"

namespace sabrel {

/// One remembered answer: whether a system variable had a value, on a server.
class CSystemValue {
 public:
  [[nodiscard]] bool Exists() const noexcept { return exists_; }
  void Exists(bool value) noexcept { exists_ = value; }
  [[nodiscard]] const std::string& Name() const noexcept { return name_; }
  void Name(std::string_view value) { AssignText(name_, value); }
  [[nodiscard]] const std::string& Value() const noexcept { return value_; }
  void Value(std::string_view value) { AssignText(value_, value); }
  [[nodiscard]] const std::string& ServerName() const noexcept { return server_name_; }
  void ServerName(std::string_view value) { AssignText(server_name_, value); }
  [[nodiscard]] std::int32_t PortId() const noexcept { return port_id_; }
  void PortId(std::int32_t value) noexcept { port_id_ = value; }
  /// Seconds, as given with the question.
  [[nodiscard]] std::int32_t TimeOut() const noexcept { return timeout_s_; }
  void TimeOut(std::int32_t value) noexcept { timeout_s_ = value; }
  /// Kept as it was set; it does not follow later changes of the other settings.
  [[nodiscard]] const std::string& Key() const noexcept { return key_; }
  void Key(std::string_view value) { AssignText(key_, value); }

  [[nodiscard]] std::shared_ptr<CSystemValue> Clone() const {
    return RaisingRuntimeErrors([&] { return std::make_shared<CSystemValue>(*this); });
  }

 private:
  bool exists_ = false;
  std::string name_;
  std::string value_;
  std::string server_name_;
  std::int32_t port_id_ = 0;
  std::int32_t timeout_s_ = 0;
  std::string key_;
};

/// Remembered answers under keys `name.value[:server:port]`.
class CSystemValues : public AnswerCache<CSystemValue> {
 public:
  /// Copies of the entries with that name (exactly); with a server name only those of that server
  /// and port. Errors: 13 for a name that is no text
  [[nodiscard]] std::shared_ptr<CSystemValues> Values(const Variant& sName,
                                                      std::int32_t nPortId = 0,
                                                      std::string_view sServerName = {}) const;
  /// Appends `sv` under its own key unless that is present already. Errors: 91 for nothing
  void AddValue(const Entry& sv);
  [[nodiscard]] bool Exists(std::string_view sKey) const noexcept { return Item(sKey) != nullptr; }
  /// Asks the database, remembers and returns the answer; false when the query fails.
  /// Cost: one round trip. Errors: 457 when there is an entry under that key, after the query; 6 or
  /// 13 for a count that is no number
  Entry AddNew(std::string_view sName, std::string_view sValue, std::string_view sHostName = {},
               std::int32_t nPortNumber = 0, std::string_view sUserName = {},
               std::string_view sPassword = {}, std::int32_t nTimeOut = 0);
};

namespace MSabrel {

/// Whether the system variable `sName` has the value `sValue`. Cost: none once asked, without
/// allocation; else one round trip. Errors: 6 or 13 for a count that is no number
[[nodiscard]] bool SystemValueExists(std::string_view sName, std::string_view sValue,
                                     std::string_view sHostName = {}, std::int32_t nPortNumber = 0,
                                     std::string_view sUserName = {},
                                     std::string_view sPassword = {}, std::int32_t nTimeOut = 0);

/// "1" to "7"; "0" when the query fails. A negative stored day gives "0" or below and is not kept.
/// Cost: none once known, else one round trip
/// Errors: 3021 without such a variable, 94 for null, 6 or 13 for no weekday
[[nodiscard]] std::string SystemFirstDayOfWeek();

/// Reads the N-high-attempts setting anew; "False" when it cannot be read. Cost: one round trip.
/// Errors: 91 without a platform
void GetNHighAttemptsValue();
/// The same.
void LoadOtherInfo();
/// The setting as last read, "" before that.
[[nodiscard]] std::string NHighAttemptsEnabled();

/// Whether there is an e-mail table and a configured mail client; the client is looked for once.
/// Cost: none, or one round trip on first use. Errors: 91 without a platform
[[nodiscard]] bool EmailEnabled();

}  // namespace MSabrel
}  // namespace sabrel
