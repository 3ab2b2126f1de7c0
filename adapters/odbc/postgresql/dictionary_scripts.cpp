#include "adapters/odbc/postgresql/dictionary_scripts.h"

#include <string>
#include <utility>

#include "adapters/shared/sql_script.h"

namespace sabrel::odbc {

std::vector<std::string_view> DictionaryStatements() {
  static const std::vector<std::string> kept = [] {
    std::vector<std::string> statements;
    for (const DictionaryScript& script : DictionaryScripts()) {
      for (std::string& text : SplitScript(script.text)) statements.push_back(std::move(text));
    }
    return statements;
  }();
  return {kept.begin(), kept.end()};
}

}  // namespace sabrel::odbc
