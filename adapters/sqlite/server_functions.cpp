#include "adapters/sqlite/server_functions.h"

#include "adapters/sqlite/failure.h"
#include "adapters/sqlite/functions.h"
#include "adapters/sqlite/server.h"

namespace sabrel::sqlite {
namespace {

Server& ServerOf(void* context) { return *static_cast<Server*>(context); }

Value NextValue(Arguments a, void* server) {
  return IntegerValue(ServerOf(server).NextValue(a[0].text));
}

Value CurrentValue(Arguments a, void* server) {
  return IntegerValue(ServerOf(server).CurrentValue(a[0].text));
}

/// sabrel_call('PKG.F', arguments...): a stored function's result.
Value CallFunction(Arguments a, void* server) {
  Routines& routines = ServerOf(server).Stored();
  const std::string& name = a[0].text;
  const auto routine = routines.Find(name);
  if (!routine || !routine->is_function) {
    throw ServerFailure(904, "invalid identifier: " + name);
  }
  if (routine->arguments.size() != a.size() - 1) {
    throw ServerFailure(6553,
                        "PLS-306: wrong number or types of arguments in call to '" + name + "'");
  }
  if (routine->HasOutArguments()) {
    throw ServerFailure(6572, "function " + name + " has out arguments");
  }
  return routines.Run(*routine, {a.begin() + 1, a.end()}).result;
}

constexpr SqlFunction kFunctions[] = {
    {"SABREL_NEXTVAL", 1, 1, false, NextValue},
    {"SABREL_CURRVAL", 1, 1, false, CurrentValue},
    {"SABREL_CALL", 1, -1, false, CallFunction},
};

}  // namespace

void RegisterServerFunctions(Server& server) {
  for (const SqlFunction& function : kFunctions) Register(server.Engine(), function, &server);
}

}  // namespace sabrel::sqlite
