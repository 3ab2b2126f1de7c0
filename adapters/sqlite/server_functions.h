// The SQL functions that need the server: sequences, stored functions, the user.
#pragma once

namespace sabrel::sqlite {

class Server;

void RegisterServerFunctions(Server& server);

}  // namespace sabrel::sqlite
