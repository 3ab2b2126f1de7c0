// One named value as an XML fragment.
#pragma once

#include <string>
#include <string_view>

namespace sabrel {

/// `<PARAM Name='name' Value='value'/>`, with &, <, > and both quotes escaped in name and value.
[[nodiscard]] std::string NamedValueFragment(std::string_view name, std::string_view value);

}  // namespace sabrel
