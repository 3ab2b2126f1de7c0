#include "adapters/odbc/oracle/oracle_errors.h"

#include <cstdlib>

#include "adapters/odbc/driver_state.h"

namespace sabrel::odbc {
namespace {

struct Row {
  std::int32_t number;
  ConnectionFailure code;
};

constexpr ConnectionFailure kLate = ConnectionFailure::kReceiveTimeOut;
constexpr ConnectionFailure kUnknown = ConnectionFailure::kHostUnknown;

// 1013 (cancelled) is not among them: whoever cancelled knows why.
constexpr Row kRows[] = {
    {22, kSevered},     // the session does not exist any more
    {28, kSevered},     // killed
    {31, kSevered},     // about to be killed; told to the killer too, which this component never is
    {45, kSevered},     // terminated without replay
    {378, kSevered},    // the instance cannot set up its buffers: nobody is served
    {602, kSevered},    // internal fault that ends the session
    {603, kSevered},    // session ended by a fatal error
    {609, kSevered},    // the server could not take the connection over
    {1012, kSevered},   // not logged on
    {1041, kSevered},   // the client's own handle of the session is gone
    {1043, kSevered},   // damaged client memory
    {1089, kSevered},   // shutting down
    {1092, kSevered},   // instance terminated
    {2396, kSevered},   // idle for too long
    {3113, kSevered},   // end of file on the connection
    {3114, kSevered},   // not connected
    {3135, kSevered},   // lost contact
    {12153, kSevered},  // not connected
    {12537, kSevered},  // closed
    {12541, kSevered},  // no listener: refused
    {12547, kSevered},  // lost contact
    {12570, kSevered},  // packet cannot be read
    {12583, kSevered},  // no reader
    {12170, ConnectionFailure::kConnectTimeOut},
    {3136, kLate},      // a limit on a call or on logging on has passed
    {3156, kLate},      // a limit on a call has passed
    {12161, kLate},     // the answer stopped coming in its middle
    {12154, kUnknown},  // an alias that nothing resolves
    {12543, kUnknown},  // no way to the host
    {12545, kUnknown},  // no such host
};

}  // namespace

Meaning OracleMeaningOf(const Diagnosis& diagnosis) {
  const std::int32_t number = std::abs(diagnosis.native_number);
  for (const Row& row : kRows) {
    if (row.number == number) return {0, row.code};
  }
  if (number != 0) return {number, {}};
  return FindState(kDriverStates, diagnosis.state).value_or(Meaning{kUndescribed, {}});
}

}  // namespace sabrel::odbc
