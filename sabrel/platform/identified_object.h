// An object that can say which one it is: what the error text shows as details.
#pragma once

#include <string>

#include "sabrel/platform/variant.h"

namespace sabrel {

class IdentifiedObject : public Object {
 public:
  [[nodiscard]] virtual std::string Identifier() const = 0;
  [[nodiscard]] virtual std::string ClassName() const = 0;
  [[nodiscard]] virtual std::string DataText() const = 0;
};

}  // namespace sabrel
