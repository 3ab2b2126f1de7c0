#include "sabrel/domain/object_initializers.h"

#include "sabrel/platform/module_state.h"
#include "sabrel/platform/runtime_error.h"

namespace sabrel {

void CDBObjectInitializers::Initialize() {
  RaisingRuntimeErrors([&] {
    for (const Entry entry : *this) entry->Initialize();
  });
}

namespace MSabrel {
namespace {

struct Initializers {
  std::shared_ptr<CDBObjectInitializers> registered = std::make_shared<CDBObjectInitializers>();
};

}  // namespace

std::shared_ptr<CDBObjectInitializers> DBObjectInitializers() {
  return ModuleState<Initializers>().registered;
}

void RegisterDBObjectInitializer(const std::shared_ptr<IDBObjectInitializer>& dboi) {
  if (!dboi) throw RuntimeError(RuntimeErrorNumber::kTypeMismatch);
  DBObjectInitializers()->Add(dboi);
}

}  // namespace MSabrel
}  // namespace sabrel
