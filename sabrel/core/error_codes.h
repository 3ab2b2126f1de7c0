// The component's own error codes and the kinds of database errors.
#pragma once

#include <cstdint>

namespace sabrel {

/// Codes of the component's own failures; a raised one carries `kCodeBase + code` as its number.
enum ESabrelErrorCode : std::int32_t {
  sabProductInstallationError = 1,
  sabConnectionProfileError = 2,
  sabLoginCancelledError = 3,
  sabMachineIdError = 4,
  sabAutoLoginError = 5,
  sabNoDataError = 6,
  sabNoSystemOptions = 7,
  sabEARemoteUserError = 8,
  sabEADataAdminUserError = 9,
  sabDSMonitorError = 10,
  sabOutputServicePortError = 11,
  sabProductInfoError = 12,
};

/// What a database error's native number means to a caller.
enum EDBErrorType : std::int32_t {
  dbeNone = 0,
  dbeUnknown = 1,
  dbeUniqueConstraintViolated = 2,
  dbeIntegrityConstraintViolated_ParentKeyNotFound = 3,
  dbeIntegrityConstraintViolated_ChildRecordFound = 4,
};

}  // namespace sabrel
