#include "adapters/sqlite/failure.h"

#include "adapters/shared/oracle_prefix.h"

namespace sabrel::sqlite {

ServerFailure::ServerFailure(std::int32_t native_number, const std::string& message,
                             std::string detail)
    : error_{native_number, "Embedded Data Server", "", OraclePrefix(native_number) + message,
             std::move(detail)} {}

}  // namespace sabrel::sqlite
