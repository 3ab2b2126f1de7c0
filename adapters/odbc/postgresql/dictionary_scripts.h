// What stands in for Oracle's dictionary, functions and operators in a PostgreSQL database: the
// scripts of dictionary/, embedded at build time.
#pragma once

#include <span>
#include <string_view>
#include <vector>

namespace sabrel::odbc {

struct DictionaryScript {
  std::string_view path;
  std::string_view text;
};

/// In the order in which they run. The table is generated.
[[nodiscard]] std::span<const DictionaryScript> DictionaryScripts();

/// Their statements, in PostgreSQL's language, to be sent one by one; running them again changes
/// nothing. The first ones make the extension and the schemas, so that the user needs the right to
/// create both; the last one begins the session as every session of the site begins.
/// Shape: views of texts that live as long as the program
[[nodiscard]] std::vector<std::string_view> DictionaryStatements();

}  // namespace sabrel::odbc
