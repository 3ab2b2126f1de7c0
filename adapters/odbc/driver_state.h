// The states that drivers and the driver manager raise themselves, whatever server is behind them.
#pragma once

#include <optional>
#include <string_view>

#include "adapters/odbc/engine.h"

namespace sabrel::odbc {

/// A state, or the class that starts it, and what it means.
struct StateRow {
  std::string_view state;
  Meaning meaning;
};

inline constexpr ConnectionFailure kSevered = ConnectionFailure::kRefusedOrSevered;

// Most specific first.
inline constexpr StateRow kDriverStates[] = {
    {"07006", {932, {}}},   // restricted data type
    {"07009", {1007, {}}},  // no such column of the result
    {"07", {1008, {}}},     // fewer parameters bound than the statement has
    {"08", {0, kSevered}},
    {"HYT01", {0, ConnectionFailure::kConnectTimeOut}},
    {"HYT", {0, ConnectionFailure::kReceiveTimeOut}},
    {"HY001", {4030, {}}},
    {"HY008", {1013, {}}},
    {"HY013", {4030, {}}},
    {"HYC00", {3001, {}}},
    {"IM001", {3001, {}}},  // the driver lacks the function
    {"IM", {0, ConnectionFailure::kHostUnknown}},
    {"01000", {0, ConnectionFailure::kHostUnknown}},
};

/// The driver is not installed: unixODBC raises 01000 where its library cannot be opened.
[[nodiscard]] inline bool IsOfDriverManager(std::string_view state) {
  return (state.starts_with("IM") && state != "IM001") || state == "01000";
}

/// The first of `rows` that `state` is, or belongs to.
template <class Rows>
[[nodiscard]] std::optional<Meaning> FindState(const Rows& rows, std::string_view state) {
  for (const StateRow& row : rows) {
    if (state.starts_with(row.state)) return row.meaning;
  }
  return std::nullopt;
}

/// Oracle's number for a failure that nothing describes.
inline constexpr std::int32_t kUndescribed = 600;

}  // namespace sabrel::odbc
