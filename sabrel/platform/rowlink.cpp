#include "sabrel/platform/rowlink.h"

#include <utility>

namespace sabrel {

std::shared_ptr<Recordset> LinkedRowlink::MakeRecordset() {
  return RaisingRuntimeErrors([&] { return std::make_shared<Recordset>(link_); });
}

std::shared_ptr<ProcedureCall> LinkedRowlink::MakeProcedureCall() {
  return RaisingRuntimeErrors([&] { return std::make_shared<ProcedureCall>(link_); });
}

std::shared_ptr<RowSetWriter> LinkedRowlink::MakeRowSetWriter() {
  return RaisingRuntimeErrors([&] { return std::make_shared<RowSetWriter>(link_); });
}

std::int32_t LinkedRowlink::ConnectionErrorCode(std::int32_t number) const {
  return CarriedConnectionCode(number);
}

RuntimeError DatabaseFailure(const DatabaseError& error) {
  return {kCodeBase + kDatabaseErrorCode, error.source, error.message};
}

RuntimeError ConnectionFailed(ConnectionFailure code, std::string description) {
  return {kCodeBase + kConnectionErrorBase + static_cast<std::int32_t>(code), "Data Server",
          std::move(description)};
}

}  // namespace sabrel
